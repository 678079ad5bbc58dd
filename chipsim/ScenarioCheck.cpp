#include "ScenarioCheck.h"

#include "ScenarioFile.h"

std::vector<std::string> mistakesOfScenario(const std::string& path) {
    try {
        readScenario(path);
    } catch (const ScenarioError& error) {
        return linesOf(error);
    }
    return {};
}
