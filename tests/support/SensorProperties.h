// The properties of the sensors' class, as describe() in CimText.h shows them.
#ifndef ZELSENSORS_TESTS_SENSORPROPERTIES_H
#define ZELSENSORS_TESTS_SENSORPROPERTIES_H

#include <cstdio>
#include <map>
#include <string>
#include <utility>
#include <vector>

using SensorValues = std::map<std::string, std::string>;  // by the properties' names, texts without quotes

// In their order, each with its type and its value. Those without a value are left out, except the three that are the
// same for all sensors.
inline std::vector<std::string> sensorProperties(SensorValues values) {
    static const std::vector<std::pair<std::string, std::string>> types = {
        {"Accuracy", "sint32"},
        {"BaseUnits", "uint16"},
        {"Caption", "chars"},
        {"CreationClassName", "chars"},
        {"CurrentReading", "sint32"},
        {"Description", "chars"},
        {"DeviceID", "chars"},
        {"Hysteresis", "uint32"},
        {"IsLinear", "boolean"},
        {"LowerThresholdCritical", "sint32"},
        {"LowerThresholdFatal", "sint32"},
        {"LowerThresholdNonCritical", "sint32"},
        {"MaxReadable", "sint32"},
        {"MinReadable", "sint32"},
        {"Name", "chars"},
        {"NominalReading", "sint32"},
        {"OtherSensorTypeDescription", "chars"},
        {"RateUnits", "uint16"},
        {"Resolution", "uint32"},
        {"SensorType", "uint16"},
        {"SystemCreationClassName", "chars"},
        {"SystemName", "chars"},
        {"UnitModifier", "sint32"},
        {"UpperThresholdCritical", "sint32"},
        {"UpperThresholdFatal", "sint32"},
        {"UpperThresholdNonCritical", "sint32"},
    };
    values.insert({{"CreationClassName", "TQS_NumericSensor"},
                   {"SystemCreationClassName", "Computer System"},
                   {"SystemName", "Quorvel POS Sensor Drivers and System Event Log"}});
    std::vector<std::string> properties;
    for (const auto& [name, type] : types) {
        const auto value = values.find(name);
        if (value == values.end()) continue;
        const std::string quote = type == "chars" ? "'" : "";
        properties.push_back(name + "=" + type + " " + quote + value->second + quote);
    }
    return properties;
}

// All values of the sensor of a drive, the first of which has the number 1.
inline SensorValues driveSensorValues(unsigned number, int reading, int lowerThreshold, int upperThreshold) {
    char name[64];
    std::snprintf(name, sizeof name, "SSD%u Temperature(%08x)", number, number);
    SensorValues values = {{"Caption", "Temperature "},
                           {"CurrentReading", std::to_string(reading)},
                           {"Description", std::string(name) + ": Temperature sensor"},
                           {"DeviceID", std::to_string(number)},
                           {"IsLinear", "false"},
                           {"LowerThresholdCritical", std::to_string(lowerThreshold)},
                           {"Name", name},
                           {"OtherSensorTypeDescription", ""},
                           {"UpperThresholdCritical", std::to_string(upperThreshold)}};
    for (const char* zero : {"Accuracy", "BaseUnits", "Hysteresis", "LowerThresholdFatal", "LowerThresholdNonCritical",
                             "MaxReadable", "MinReadable", "NominalReading", "RateUnits", "Resolution", "SensorType",
                             "UnitModifier", "UpperThresholdFatal", "UpperThresholdNonCritical"})
        values[zero] = "0";
    return values;
}

#endif
