// CIM's unit codes as people write units. Pure functions, thread-safe.
#ifndef ZELSENSORS_HEALTH_UNITS_H
#define ZELSENSORS_HEALTH_UNITS_H

#include <cstdint>
#include <string>

namespace host {

// The unit of a CIM_NumericSensor for people, such as "°C" or "V/s", from the value lists of its BaseUnits and
// RateUnits. Empty for the codes that name no unit (0 Unknown, 1 Other); "unit 99" for a code that the list does not
// have.
std::string unitText(std::int64_t baseUnits, std::int64_t rateUnits);

}  // namespace host

#endif
