// What the provider makes of the chips that the guest's `fill` sets up, of its thermal zone, power meter and drive.
#ifndef ZELSENSORS_TESTS_SENSORS_H
#define ZELSENSORS_TESTS_SENSORS_H

#include <string>
#include <vector>

#include "Guest.h"
#include "SensorProperties.h"

// All properties of each sensor, in the provider's order. Names are for ever: those here must never change.
std::vector<SensorValues> expectedSensors();

// "Name: reading" of each.
Strings expectedReadings();

// The machine with one drive, the tables for ACPI and these bytes of a firmware's event log: the structure that
// describes it, and what lies in memory at LOG_ADDRESS.
constexpr unsigned LOG_ADDRESS = 0x10010000;
Machine machineWithChips(const std::string& group, const std::string& logStructure, const std::string& logArea);

#endif
