// What is different between two scenarios: of two terminals, or of one at two times.
#ifndef ZELSENSORS_FORMAT_DIFFERENCES_H
#define ZELSENSORS_FORMAT_DIFFERENCES_H

#include <string>
#include <vector>

#include "chipsim/ScenarioContents.h"
#include "text/Charset.h"

namespace host {

struct Difference {
    std::string sensor;  // its name as the provider gives it, with the handle; empty: none. Bytes as they came
    std::string what;    // "sensor", "readings", a key of the scenario's format, "fault", or "line" of the event log
    std::string before;  // in the sensor's units; empty: there was none. Bytes as they came
    std::string after;
};

// Sensors are the same where their handles are. In the order of the first, then of what the second has besides.
std::vector<Difference> differencesBetween(const ScenarioContents& before, const ScenarioContents& after);

// A table, or a sentence where nothing is different; and what docs/json.md says of `diff`.
std::string differencesText(const std::vector<Difference>& differences, Charset charset);
std::string differencesJson(const std::vector<Difference>& differences);

}  // namespace host

#endif
