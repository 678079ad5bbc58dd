// A numeric sensor's instance, read for people: what it measures, and how that stands to its limits.
#ifndef ZELSENSORS_HEALTH_SENSORVIEW_H
#define ZELSENSORS_HEALTH_SENSORVIEW_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "broker/Model.h"

namespace host {

using Number = std::optional<std::int64_t>;

// The integer that a value holds; none for null, for other types and beyond 64 bits with sign.
Number numberIn(const broker::Value& value);

struct SensorView {
    std::string name;          // as the provider gave it
    std::int64_t reading = 0;  // this and the limits in units of 10^modifier `unit`
    std::int64_t modifier = 0;
    std::string unit;
    Number lowerNonCritical, lowerCritical, lowerFatal;
    Number upperNonCritical, upperCritical, upperFatal;
    Number minReadable, maxReadable;

    // None where the instance has no CurrentReading that is a number.
    static std::optional<SensorView> of(const broker::Instance& instance);

    // A number in the sensor's units, such as "42.00"; "-" for none.
    std::string scaled(Number number) const;
    // As scaled(), with the unit: "42.00 °C".
    std::string withUnit(std::int64_t number) const;
};

enum class Severity { Normal, NonCritical, Critical, Fatal };

// The gravest threshold that the reading is past. A reading that equals a threshold is not past it.
struct SensorState {
    Severity severity = Severity::Normal;
    bool isHigh = false;  // of the two sides, where severity is not Normal

    std::string word() const;  // "ok", "high", "low", "critical high", ..., "fatal low"
};
SensorState stateOf(const SensorView& sensor);

// Where the reading lies between its limits, as "[!---:----|-----:--!]": the ends are the outermost thresholds of
// either side, or the readable range where a side has none; ':' stands at a non-critical threshold, '!' at a critical
// or fatal one, '|' at the reading, or '<' and '>' at an end that the reading is beyond. `cells` (2 at least) lie
// between the brackets. Empty where a side has no limit, or where the limits are in the wrong order.
std::string limitsBar(const SensorView& sensor, std::size_t cells);

}  // namespace host

#endif
