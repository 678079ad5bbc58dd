#include "ScenarioCheck.h"

#include <sstream>

#include "ScenarioFile.h"

std::vector<std::string> mistakesOfScenario(const std::string& path) {
    std::vector<std::string> mistakes;
    try {
        readScenario(path);
    } catch (const ScenarioError& error) {
        std::istringstream lines(error.what());
        for (std::string line; std::getline(lines, line);) mistakes.push_back(line);
    }
    return mistakes;
}
