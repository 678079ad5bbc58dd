// The model's sensors as people read them.
#ifndef ZELSENSORS_FORMAT_SENSORSTABLE_H
#define ZELSENSORS_FORMAT_SENSORSTABLE_H

#include <cstddef>
#include <string>
#include <vector>

#include "health/Sensor.h"
#include "text/Charset.h"

namespace host {

struct TableLayout {
    Charset charset = Charset::Utf8;
    std::size_t columns = 0;  // to fit in; 0: as wide as it gets
    bool hasHeader = true;
    bool isColoured = false;
};

// A line for each sensor with reading, state and limits; then a line for each without a reading, which says why. What
// is too wide gets narrower in steps: names are cut; the limits go, the lower ones first; a sensor takes several lines.
// Nothing else is cut, whatever the width.
std::string sensorsTable(const std::vector<Sensor>& sensors, const TableLayout& layout);

// "85 / 95 / 105", non-critical, critical and fatal; "-" for one that is missing, and for all three.
std::string lowerLimits(const Sensor& sensor);
std::string upperLimits(const Sensor& sensor);

}  // namespace host

#endif
