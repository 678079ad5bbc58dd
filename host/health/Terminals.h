// The health of many terminals.
#ifndef ZELSENSORS_HEALTH_TERMINALS_H
#define ZELSENSORS_HEALTH_TERMINALS_H

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "health/SensorRounds.h"
#include "source/Servers.h"

namespace host {

struct Terminal {
    std::string url;
    bool isAnswered = false;  // each request had a usable answer, be it an error
    std::string failure;      // why not all sensors could be asked, a sentence; empty where they could
    Round round;              // empty where isAnswered is false

    // The gravest; of several the first. Null where there is none, or all are well.
    const Sensor* worst() const;
    // As Sensor::gravity(), of the worst; that of a sensor without a reading also where there is no sensor at all.
    int gravity() const;
    bool isProblem() const { return gravity() > 0; }
};

// Looks at the sensors of all servers, at as many at a time as may be. One that waits, for an answer or for its next
// reading, keeps no other waiting as long as there are places. In the order of the servers. `progress` gets the number
// of those that are done.
std::vector<Terminal> visitTerminals(Servers& servers, const std::string& nameSpace,
                                     const std::function<void(std::size_t)>& progress);

}  // namespace host

#endif
