// What a numeric sensor's instance means: its reading and limits, and how they stand to each other. Everything that
// shows sensors or decides about them takes it from here.
#ifndef ZELSENSORS_HEALTH_SENSOR_H
#define ZELSENSORS_HEALTH_SENSOR_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "broker/Model.h"

namespace host {

using Number = std::optional<std::int64_t>;

// The integer that a value holds; none for null, for other types and beyond 64 bits with sign.
Number numberIn(const broker::Value& value);

// From the least to the gravest.
enum class Severity { Normal, NonCritical, Critical, Fatal };

// The gravest threshold that a reading is past.
struct SensorState {
    Severity severity = Severity::Normal;
    bool isHigh = false;  // of the two sides, where severity is not Normal

    std::string word() const;  // "ok", "high", "low", "critical high", ..., "fatal low"
};

// Numbers are in units of 10^modifier `unit`.
struct Sensor {
    std::string name;       // the key, as the provider gave it
    std::int64_t type = 0;  // CIM's SensorType; that of a drive's sensor is 2, temperature
    bool isDrive = false;
    std::int64_t modifier = 0;
    std::string unit;

    Number reading;                         // none: there is no reading, see `reason`
    Number rawReading;                      // CurrentReading as the provider gave it; none where it gave no such number
    std::string reason;                     // why there is no reading; empty where there is one; fit for a terminal
    std::optional<broker::Status> failure;  // why the provider gave none, where the request for it failed
    SensorState state;                      // Normal where there is no reading
    Number lowerNonCritical, lowerCritical, lowerFatal;
    Number upperNonCritical, upperCritical, upperFatal;
    Number minReadable, maxReadable;

    // Of any instance; one that is no sensor gives one without a reading.
    static Sensor of(const broker::Instance& instance);
    // The numbers alone as the provider gave them, nothing interpreted: for raw answers. The state is Normal.
    static Sensor asGiven(const broker::Instance& instance);
    // One that could not be asked.
    static Sensor withoutReading(std::string name, std::string reason);

    // "temperature", "fan", "switch" and so on; "type-17" for a type that CIM does not name.
    std::string kind() const;
    // The state's word, or "no reading".
    std::string stateWord() const;
    // From 0, all well, to the worst: what cannot be read may be worse than what deserves attention only.
    int gravity() const;
    bool isProblem() const { return !reading || state.severity != Severity::Normal; }

    // Whether a reading that equals a threshold is past it: so it is with what has two states.
    bool countsThresholdItself() const;

    // A number in the sensor's units, such as "42.00"; "-" for none.
    std::string scaled(Number number) const;
    // As scaled(), with the unit: "42.00 °C".
    std::string withUnit(Number number) const;
};

// The words of Sensor::kind() for the types that CIM names.
std::vector<const char*> sensorKinds();

// Whether the instance has a CurrentReading that is a number, as sensors have.
bool isSensor(const broker::Instance& instance);

// Whether the provider gives this name to a drive's sensor: "SSD1 Temperature(00000001)" to
// "SSD10 Temperature(0000000a)". Such sensors are to be asked one by one: in an enumeration the provider asks the chip
// for them.
bool isNameOfDriveSensor(const std::string& name);

// Where the reading lies between its limits, as "[!---:----|-----:--!]": the ends are the outermost thresholds of
// either side, or the readable range where a side has none; ':' stands at a non-critical threshold, '!' at a critical
// or fatal one, '|' at the reading, or '<' and '>' at an end that the reading is beyond. `cells` (2 at least) lie
// between the brackets. Empty where there is no reading, where a side has no limit, or where the limits are in the
// wrong order.
std::string limitsBar(const Sensor& sensor, std::size_t cells);

}  // namespace host

#endif
