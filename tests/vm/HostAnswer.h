// What zelhost wrote as JSON, for comparison with the properties in SensorProperties.h.
#ifndef ZELSENSORS_TESTS_HOSTANSWER_H
#define ZELSENSORS_TESTS_HOSTANSWER_H

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

// Discarded (see nlohmann's parse) where the lines are no JSON.
nlohmann::json answerIn(const std::vector<std::string>& lines);

// "Name=value" for each property.
std::vector<std::string> valuesIn(const nlohmann::json& properties);

// The same of descriptions as sensorProperties() gives them.
std::vector<std::string> withoutTypes(std::vector<std::string> properties);

#endif
