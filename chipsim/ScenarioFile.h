// Reads a scenario from a TOML file. docs/scenario-format.md describes the format.
#ifndef ZELSENSORS_CHIPSIM_SCENARIOFILE_H
#define ZELSENSORS_CHIPSIM_SCENARIOFILE_H

#include <stdexcept>
#include <string>

#include "Scenario.h"

// Why a scenario cannot be used: one line of text, "file:line: what is wrong, expected what".
class ScenarioError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// The text of the scenario that is used when none is named.
extern const char* const BUILTIN_SCENARIO;

// The scenario that the environment variable ZELCHIP_SCENARIO names, or the built-in one where it is unset or empty.
// Throws ScenarioError.
Scenario loadScenario();

#endif
