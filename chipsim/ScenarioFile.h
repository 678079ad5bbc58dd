// Reads a scenario from a TOML file. docs/scenario-format.md describes the format.
#ifndef ZELSENSORS_CHIPSIM_SCENARIOFILE_H
#define ZELSENSORS_CHIPSIM_SCENARIOFILE_H

#include <string>
#include <string_view>
#include <vector>

#include "Scenario.h"
#include "ScenarioError.h"

// A number of a sensor that a chip need not report.
struct NumberKey {
    std::string_view key;  // in the file
    int CSensorInformation::*member;
};
std::vector<NumberKey> optionalNumbers();

// As the file has them.
std::string_view wordOf(Model model);
std::string_view wordOf(Operation operation);

// The scenario of that file. Throws ScenarioError.
Scenario readScenario(const std::string& path);

// The scenario that the environment variable ZELCHIP_SCENARIO names, or the built-in one where it is unset or empty.
// Throws ScenarioError.
Scenario loadScenario();

#endif
