// Scenarios with known readings for the tests of the program.
#ifndef ZELSENSORS_TESTS_HOST_SCENARIOS_H
#define ZELSENSORS_TESTS_HOST_SCENARIOS_H

// CPU(00000001) at 42.00 °C, and Bad\x1b[2J(0000001a) past its critical threshold.
constexpr const char* TWO_SENSORS = R"(
model = "none"

[[sensor]]
handle = 0x1
name = "CPU"
sensor-type = "temperature"
base-units = "degrees-c"
unit-modifier = -2
upper-threshold-non-critical = 8000
min-readable = 0
max-readable = 10000
reading = 4200

[[sensor]]
handle = 0x1a
name = "Bad\u001b[2J"
sensor-type = "voltage"
base-units = "volts"
unit-modifier = -3
lower-threshold-critical = 3000
reading = 2999

[event-log]
lines = ["first \u0007line", ""]
)";

// The start takes so long that a request right after it reads every sensor again; the second sensor then fails.
constexpr const char* FAILING_SENSOR = R"(
model = "none"

[[sensor]]
handle = 1
name = "Good"
sensor-type = "counter"
reading = 7

[[sensor]]
handle = 2
name = "Failing"
sensor-type = "counter"
reading = 8

[[sensor]]
handle = 3
name = "Slow"
sensor-type = "counter"
reading = 9

[[fault]]
operation = "read"
handle = 2
from-call = 2
status = 0x00010005

[[fault]]
operation = "read"
handle = 3
from-call = 1
calls = 1
delay-ms = 1500
)";

#endif
