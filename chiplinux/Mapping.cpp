#include "Mapping.h"

#include <climits>
#include <cmath>

namespace {

// CIM_Sensor.SensorType, CIM_NumericSensor.BaseUnits and UnitModifier.
struct Row {
    unsigned short sensorType;
    unsigned short baseUnits;
    int unitModifier;
    const char* otherType;
};

Row rowOf(Quantity quantity) {
    switch (quantity) {
        case Quantity::Temperature:
            return {2, 2, -3, ""};
        case Quantity::Voltage:
            return {3, 5, -3, ""};
        case Quantity::Current:
            return {4, 6, -3, ""};
        case Quantity::Fan:
            return {5, 19, 0, ""};
        case Quantity::Humidity:
            return {9, 65, -3, ""};
        case Quantity::Power:
            break;
    }
    return {1, 7, -3, "Power"};  // CIM's own type for power, 13, has no word in the provider's captions
}

int scaled(Quantity quantity, double value) {
    const double number = std::round(rowOf(quantity).unitModifier == 0 ? value : value * 1000);
    // INT_MIN itself is the mark.
    return number > INT_MIN && number <= INT_MAX ? static_cast<int>(number) : NOT_AVAILABLE;
}

int scaled(Quantity quantity, const std::optional<double>& value) {
    return value ? scaled(quantity, *value) : NOT_AVAILABLE;
}

// Absolute zero and what no chip survives, in degrees Celsius; what no fan reaches, in revolutions per minute.
constexpr double COLDEST = -273;
constexpr double HOTTEST = 1000;
constexpr double FASTEST = 100000;

enum class Side { Lower, Upper };

bool canBe(Quantity quantity, Side side, double limit) {
    if (quantity == Quantity::Temperature)
        return limit > COLDEST && limit < HOTTEST && (side == Side::Lower || limit > 0);
    if (quantity == Quantity::Fan) return limit > 0 && limit <= FASTEST;
    return true;
}

// A lower limit that is not under the upper one: neither was set, often both are 0.
void dropCrossed(std::optional<double>& lower, std::optional<double>& upper) {
    if (!lower || !upper || *lower < *upper) return;
    lower.reset();
    upper.reset();
}

Limits believable(Quantity quantity, Limits limits) {
    dropCrossed(limits.minimum, limits.maximum);
    dropCrossed(limits.lowerCritical, limits.critical);
    for (std::optional<double>* lower : {&limits.minimum, &limits.lowerCritical})
        if (*lower && !canBe(quantity, Side::Lower, **lower)) lower->reset();
    for (std::optional<double>* upper : {&limits.maximum, &limits.critical, &limits.emergency})
        if (*upper && !canBe(quantity, Side::Upper, **upper)) upper->reset();
    return limits;
}

std::optional<double> distance(const std::optional<double>& limit, const std::optional<double>& end) {
    if (!limit || !end || !(*end <= *limit)) return std::nullopt;
    return *limit - *end;
}

std::optional<double> hysteresisOf(const Limits& limits) {
    const std::optional<double> atMaximum = distance(limits.maximum, limits.maximumHysteresis);
    return atMaximum ? atMaximum : distance(limits.critical, limits.criticalHysteresis);
}

}  // namespace

int scaledReading(Quantity quantity, double value) {
    return quantity == Quantity::Fan && value < 0 ? NOT_AVAILABLE : scaled(quantity, value);
}

CSensorInformation describe(Quantity quantity, const Limits& limits, const std::string& name) {
    const Row row = rowOf(quantity);
    const Limits believed = believable(quantity, limits);
    CSensorInformation information{};
    information.name = name;
    information.sensorType = row.sensorType;
    information.otherSensorTypeDescription = row.otherType;
    information.baseUnits = row.baseUnits;
    information.unitModifier = row.unitModifier;
    information.isLinear = true;
    information.accuracy = NOT_AVAILABLE;
    information.resolution = NOT_AVAILABLE;
    information.maxReadable = NOT_AVAILABLE;
    information.minReadable = NOT_AVAILABLE;
    information.nominalReading = NOT_AVAILABLE;
    information.hysteresis = scaled(quantity, hysteresisOf(believed));
    information.lowerThresholdNonCritical = scaled(quantity, believed.minimum);
    information.lowerThresholdCritical = scaled(quantity, believed.lowerCritical);
    information.lowerThresholdFatal = NOT_AVAILABLE;
    information.upperThresholdNonCritical = scaled(quantity, believed.maximum);
    information.upperThresholdCritical = scaled(quantity, believed.critical);
    information.upperThresholdFatal = scaled(quantity, believed.emergency);
    return information;
}
