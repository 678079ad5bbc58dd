// The one exception of reading a scenario.
#ifndef ZELSENSORS_CHIPSIM_SCENARIOERROR_H
#define ZELSENSORS_CHIPSIM_SCENARIOERROR_H

#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

// Why a scenario cannot be used: a line of text, "file:line: what is wrong, expected what", for each mistake, in the
// order of the file's lines, without a newline at the end.
class ScenarioError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// What it says, line by line.
inline std::vector<std::string> linesOf(const ScenarioError& error) {
    std::istringstream text(error.what());
    std::vector<std::string> lines;
    for (std::string line; std::getline(text, line);) lines.push_back(line);
    return lines;
}

#endif
