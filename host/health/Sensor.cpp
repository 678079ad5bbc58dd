#include "health/Sensor.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <limits>
#include <utility>

#include "health/Decimal.h"
#include "health/Units.h"

namespace host {
namespace {

using broker::Instance;
using broker::Value;

constexpr std::int64_t TEMPERATURE = 2;
constexpr std::int64_t SWITCH = 7;
constexpr std::int64_t LOCK = 8;
constexpr std::int64_t PRESENCE = 11;
constexpr std::int64_t INTRUSION = 16;

// In the order of CIM_Sensor.SensorType.
constexpr std::array KINDS{"unknown",          "other",    "temperature", "voltage", "current",  "fan",      "counter",
                           "switch",           "lock",     "humidity",    "smoke",   "presence", "air-flow", "power",
                           "power-production", "pressure", "intrusion"};

// What the chip library puts where a number is not available: the bit pattern 0x80000000, with sign or without.
constexpr std::int64_t NOT_AVAILABLE = -2147483648LL;
constexpr std::int64_t NOT_AVAILABLE_UNSIGNED = 2147483648LL;

bool isNotAvailable(std::int64_t number) {
    return number == NOT_AVAILABLE || number == NOT_AVAILABLE_UNSIGNED;
}

// The provider publishes a drive's temperature as an unsigned number of 16 bits, see docs/drives.md.
constexpr std::int64_t LARGEST_DRIVE_READING = 32767;
constexpr std::int64_t DRIVE_WRAP = 65536;
constexpr std::int64_t ZERO_KELVIN = -273;  // in °C; as a drive's reading 65263, as its threshold: none is set

Number numberOf(const Instance& instance, const char* property) {
    const Value* value = instance.findProperty(property);
    return value == nullptr ? std::nullopt : numberIn(*value);
}

void dropNotAvailable(Number& number) {
    if (number && isNotAvailable(*number)) number = std::nullopt;
}

std::string textOf(const Instance& instance, const char* property) {
    const Value* value = instance.findProperty(property);
    return value == nullptr || value->isNull ? "" : value->text;
}

std::string nameOf(const Instance& instance) {
    const Value* name = instance.findProperty("Name");
    if (name == nullptr || name->isNull) name = instance.path.findKey("Name");
    return name == nullptr ? "" : name->text;
}

// The number of the drive, from 1, whose sensor has the name; 0 where it is no such name.
int driveNumberIn(const std::string& name) {
    constexpr int drives = 10;
    if (name.rfind("SSD", 0) != 0) return 0;
    for (int number = 1; number <= drives; ++number) {
        std::array<char, 9> hexadecimal{};
        std::snprintf(hexadecimal.data(), hexadecimal.size(), "%08x", static_cast<unsigned>(number));
        if (name == "SSD" + std::to_string(number) + " Temperature(" + hexadecimal.data() + ")") return number;
    }
    return 0;
}

// A chip's sensor could bear a drive's name; its DeviceID is the handle in eight digits and its type is not unknown.
bool isDriveSensor(const Instance& instance, const std::string& name) {
    const int number = driveNumberIn(name);
    return number != 0 && textOf(instance, "DeviceID") == std::to_string(number) &&
           numberOf(instance, "SensorType") == 0;
}

struct NamedNumber {
    const char* property;
    Number Sensor::*number;
};
constexpr std::array NUMBERS{
    NamedNumber{"LowerThresholdNonCritical", &Sensor::lowerNonCritical},
    NamedNumber{"LowerThresholdCritical", &Sensor::lowerCritical},
    NamedNumber{"LowerThresholdFatal", &Sensor::lowerFatal},
    NamedNumber{"UpperThresholdNonCritical", &Sensor::upperNonCritical},
    NamedNumber{"UpperThresholdCritical", &Sensor::upperCritical},
    NamedNumber{"UpperThresholdFatal", &Sensor::upperFatal},
    NamedNumber{"MinReadable", &Sensor::minReadable},
    NamedNumber{"MaxReadable", &Sensor::maxReadable},
};

// A drive has critical thresholds alone; the other numbers are 0 because they must be something.
void keepDriveLimits(Sensor& sensor) {
    sensor.lowerNonCritical = sensor.lowerFatal = sensor.upperNonCritical = sensor.upperFatal = std::nullopt;
    sensor.minReadable = sensor.maxReadable = std::nullopt;
    if (sensor.lowerCritical == ZERO_KELVIN) sensor.lowerCritical = std::nullopt;
    if (sensor.upperCritical == ZERO_KELVIN) sensor.upperCritical = std::nullopt;
}

void interpretDrive(Sensor& sensor) {
    sensor.isDrive = true;
    sensor.type = TEMPERATURE;
    sensor.unit = "°C";
    keepDriveLimits(sensor);
    if (!sensor.reading) return;
    if (*sensor.reading == 0) sensor.reason = "the provider gave 0, as it does where a drive cannot be read";
    if (*sensor.reading == ZERO_KELVIN + DRIVE_WRAP) sensor.reason = "the drive gave 0 K: it has no reading";
    if (*sensor.reading > LARGEST_DRIVE_READING) *sensor.reading -= DRIVE_WRAP;
    if (!sensor.reason.empty()) sensor.reading = std::nullopt;
}

bool isPast(const Sensor& sensor, Number threshold, bool isHigh) {
    if (!threshold) return false;
    if (*sensor.reading == *threshold) return sensor.countsThresholdItself();
    return isHigh == (*sensor.reading > *threshold);
}

Severity severityOn(bool isHigh, const Sensor& sensor) {
    if (isPast(sensor, isHigh ? sensor.upperFatal : sensor.lowerFatal, isHigh)) return Severity::Fatal;
    if (isPast(sensor, isHigh ? sensor.upperCritical : sensor.lowerCritical, isHigh)) return Severity::Critical;
    if (isPast(sensor, isHigh ? sensor.upperNonCritical : sensor.lowerNonCritical, isHigh)) {
        return Severity::NonCritical;
    }
    return Severity::Normal;
}

SensorState stateOf(const Sensor& sensor) {
    if (!sensor.reading) return {};
    const Severity high = severityOn(true, sensor);
    const Severity low = severityOn(false, sensor);
    return high >= low ? SensorState{high, true} : SensorState{low, false};
}

Number lowestLimit(const Sensor& sensor) {
    Number lowest;
    for (const Number& limit : {sensor.lowerNonCritical, sensor.lowerCritical, sensor.lowerFatal}) {
        if (limit && (!lowest || *limit < *lowest)) lowest = limit;
    }
    return lowest ? lowest : sensor.minReadable;
}

Number highestLimit(const Sensor& sensor) {
    Number highest;
    for (const Number& limit : {sensor.upperNonCritical, sensor.upperCritical, sensor.upperFatal}) {
        if (limit && (!highest || *limit > *highest)) highest = limit;
    }
    return highest ? highest : sensor.maxReadable;
}

// The cells of a bar whose ends are two different numbers. A picture: floating point is exact enough for it.
class Cells {
  public:
    Cells(std::int64_t low, std::int64_t high, std::size_t count)
        : m_low(static_cast<double>(low)), m_span(static_cast<double>(high) - m_low), m_cells(count, '-') {}

    void mark(Number number, char sign) {
        if (!number) return;
        const double share = std::clamp((static_cast<double>(*number) - m_low) / m_span, 0.0, 1.0);
        m_cells[static_cast<std::size_t>(std::lround(share * static_cast<double>(m_cells.size() - 1)))] = sign;
    }
    const std::string& text() const { return m_cells; }

  private:
    double m_low;
    double m_span;
    std::string m_cells;
};

}  // namespace

Number numberIn(const Value& value) {
    if (value.isNull) return std::nullopt;
    if (value.isSigned()) return value.signedNumber;
    constexpr auto largest = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
    if (!value.isUnsigned() || value.unsignedNumber > largest) return std::nullopt;
    return static_cast<std::int64_t>(value.unsignedNumber);
}

Sensor Sensor::asGiven(const Instance& instance) {
    Sensor sensor;
    sensor.name = nameOf(instance);
    sensor.type = numberOf(instance, "SensorType").value_or(0);
    sensor.modifier = numberOf(instance, "UnitModifier").value_or(0);
    sensor.unit = unitText(numberOf(instance, "BaseUnits").value_or(0), numberOf(instance, "RateUnits").value_or(0));
    sensor.rawReading = sensor.reading = numberOf(instance, "CurrentReading");
    for (const auto& [property, number] : NUMBERS) sensor.*number = numberOf(instance, property);
    return sensor;
}

Sensor Sensor::of(const Instance& instance) {
    Sensor sensor = asGiven(instance);
    for (const auto& [property, number] : NUMBERS) dropNotAvailable(sensor.*number);
    if (!sensor.rawReading) {
        sensor.reason = "the provider gave no reading";
    } else if (isNotAvailable(*sensor.rawReading)) {
        sensor.reading = std::nullopt;
        sensor.reason = "the chip has no reading";
    }
    if (isDriveSensor(instance, sensor.name)) interpretDrive(sensor);
    sensor.state = stateOf(sensor);
    return sensor;
}

Sensor Sensor::withoutReading(std::string name, std::string reason) {
    Sensor sensor;
    sensor.name = std::move(name);
    sensor.reason = std::move(reason);
    return sensor;
}

std::string Sensor::kind() const {
    const bool isNamed = type >= 0 && type < static_cast<std::int64_t>(KINDS.size());
    return isNamed ? KINDS.at(static_cast<std::size_t>(type)) : "type-" + std::to_string(type);
}

std::string Sensor::stateWord() const {
    return reading ? state.word() : "no reading";
}

int Sensor::gravity() const {
    if (!reading) return 2;
    switch (state.severity) {
        case Severity::Normal:
            return 0;
        case Severity::NonCritical:
            return 1;
        case Severity::Critical:
            return 3;
        case Severity::Fatal:
            return 4;
    }
    return 0;
}

// The threshold stands at the state that is to be noticed: an open cover reads 1 and has the limit 1.
bool Sensor::countsThresholdItself() const {
    return type == SWITCH || type == LOCK || type == PRESENCE || type == INTRUSION;
}

std::string Sensor::scaled(Number number) const {
    return number ? scaledDecimal(*number, modifier) : "-";
}

std::string Sensor::withUnit(Number number) const {
    return unit.empty() || !number ? scaled(number) : scaled(number) + ' ' + unit;
}

std::vector<const char*> sensorKinds() {
    return {KINDS.begin(), KINDS.end()};
}

bool isSensor(const Instance& instance) {
    return numberOf(instance, "CurrentReading").has_value();
}

bool isNameOfDriveSensor(const std::string& name) {
    return driveNumberIn(name) != 0;
}

std::string SensorState::word() const {
    const char* side = isHigh ? "high" : "low";
    switch (severity) {
        case Severity::Normal:
            return "ok";
        case Severity::NonCritical:
            return side;
        case Severity::Critical:
            return std::string("critical ") + side;
        case Severity::Fatal:
            return std::string("fatal ") + side;
    }
    return "";
}

std::string limitsBar(const Sensor& sensor, std::size_t cells) {
    const Number low = lowestLimit(sensor);
    const Number high = highestLimit(sensor);
    if (!sensor.reading || !low || !high || *low >= *high) return "";
    Cells bar(*low, *high, cells);
    bar.mark(sensor.lowerNonCritical, ':');
    bar.mark(sensor.upperNonCritical, ':');
    for (const Number& limit : {sensor.lowerCritical, sensor.lowerFatal, sensor.upperCritical, sensor.upperFatal}) {
        bar.mark(limit, '!');
    }
    bar.mark(sensor.reading, *sensor.reading < *low ? '<' : *sensor.reading > *high ? '>' : '|');
    return '[' + bar.text() + ']';
}

}  // namespace host
