// Exact decimal text of a scaled reading. Pure functions, thread-safe.
#ifndef ZELSENSORS_HEALTH_DECIMAL_H
#define ZELSENSORS_HEALTH_DECIMAL_H

#include <cstdint>
#include <string>

namespace host {

// The farthest that a point is moved; no real unit needs more.
constexpr std::int64_t LARGEST_SHIFT = 18;

// value × 10^modifier, exactly, by moving the decimal point: all digits of the value are kept ("42.00" for 4200 and
// -2). A modifier beyond ±LARGEST_SHIFT is written out: "5×10^25".
std::string scaledDecimal(std::int64_t value, std::int64_t modifier);

}  // namespace host

#endif
