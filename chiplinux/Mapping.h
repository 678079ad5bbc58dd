// How a measurement of the kernel's hardware monitoring becomes a sensor of the chip interface. Pure: asks no system.
//
// libsensors gives degrees Celsius, volts, amperes, watts, revolutions per minute and per cent. The codes of types and
// units are those of CIM_Sensor.
#ifndef ZELSENSORS_CHIPLINUX_MAPPING_H
#define ZELSENSORS_CHIPLINUX_MAPPING_H

#include <optional>
#include <string>

#include "chip.h"

enum class Quantity { Temperature, Voltage, Current, Fan, Humidity, Power };

// What the driver says beside the reading, in libsensors's units; empty where there is no such attribute or it cannot
// be read. The hysteresis values are absolute: where an alarm ends.
struct Limits {
    std::optional<double> minimum;
    std::optional<double> maximum;
    std::optional<double> lowerCritical;
    std::optional<double> critical;
    std::optional<double> emergency;
    std::optional<double> maximumHysteresis;
    std::optional<double> criticalHysteresis;
};

// In units of the sensor's modifier, rounded to the nearest. NOT_AVAILABLE for what no reading can be: not a number,
// beyond 32 bits, or a fan's count below 0, which is a driver's way to say that it has none.
int scaledReading(Quantity quantity, double value);

// The sensor's description. Limits that cannot be true are not available: drivers pass on what stands in a chip that
// nobody has set up.
CSensorInformation describe(Quantity quantity, const Limits& limits, const std::string& name);

#endif
