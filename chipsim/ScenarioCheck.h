// For those who are not the simulated chip library: whether a scenario could be played.
#ifndef ZELSENSORS_CHIPSIM_SCENARIOCHECK_H
#define ZELSENSORS_CHIPSIM_SCENARIOCHECK_H

#include <string>
#include <vector>

// All mistakes of a scenario file, each a line "file:line: what is wrong, expected what", in the order of its lines; or
// why it cannot be read. Empty for a good file.
std::vector<std::string> mistakesOfScenario(const std::string& path);

#endif
