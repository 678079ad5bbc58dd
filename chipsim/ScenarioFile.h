// Reads a scenario from a TOML file. docs/scenario-format.md describes the format.
#ifndef ZELSENSORS_CHIPSIM_SCENARIOFILE_H
#define ZELSENSORS_CHIPSIM_SCENARIOFILE_H

#include <string>

#include "Scenario.h"
#include "ScenarioError.h"

// The scenario of that file. Throws ScenarioError.
Scenario readScenario(const std::string& path);

// The scenario that the environment variable ZELCHIP_SCENARIO names, or the built-in one where it is unset or empty.
// Throws ScenarioError.
Scenario loadScenario();

#endif
