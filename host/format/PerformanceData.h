// Readings in the form in which monitoring plugins hand them over: the performance data of the Monitoring Plugins
// Development Guidelines (https://www.monitoring-plugins.org/doc/guidelines.html).
#ifndef ZELSENSORS_FORMAT_PERFORMANCEDATA_H
#define ZELSENSORS_FORMAT_PERFORMANCEDATA_H

#include <array>
#include <string>

#include "health/Sensor.h"

namespace host {

// A name as a label, in quotes where it is more than one word of letters, digits, '_', '-' and '.'. What a label or its
// line may not contain (quotes, '=', '|', control characters) becomes \xNN, as do bytes that are not valid UTF-8. It is
// the same in every locale.
std::string performanceLabel(const std::string& name);

// The thresholds of one state of a service, in the sensor's units.
struct PerformanceLimits {
    Number low;
    Number high;
};

// The readings that are no reason to alert, both ends included: "3.0:5.5", "3.0:" and "~:5.5"; empty without limits,
// and for limits in the wrong order, which no range can express.
std::string performanceRange(const Sensor& sensor, const PerformanceLimits& limits);

// 'label'=value[UOM];warn;crit;min;max without the semicolons at the end. The value is exact, and U where there is none
// or where it is out of a decimal number's reach (see LARGEST_SHIFT). Seconds, per cent and bytes have their unit; for
// others the guidelines have none.
std::string performanceData(const Sensor& sensor, const PerformanceLimits& warning, const PerformanceLimits& critical);

}  // namespace host

#endif
