// All sensors of a terminal, asked in rounds.
#ifndef ZELSENSORS_HEALTH_SENSORROUNDS_H
#define ZELSENSORS_HEALTH_SENSORROUNDS_H

#include <string>
#include <vector>

#include "broker/Model.h"
#include "health/Sensor.h"
#include "source/Source.h"

namespace host {

struct Round {
    std::vector<Sensor> sensors;  // in the provider's order; also those without a reading
    broker::Status status;        // other than 0: the names could not be had, or not all of them
};

class SensorRounds {
  public:
    // Asks the source for the sensor class in the namespace; the source must outlive this object.
    SensorRounds(Source& source, const std::string& nameSpace);

    // Asks once. A sensor that fails costs itself alone. After status 16 the source is restarted, once in a round at
    // most, and asked again. Throws what the source throws.
    Round next();

  private:
    Source& m_source;
    broker::ObjectPath m_classPath;
};

}  // namespace host

#endif
