// A recording as a scenario of the simulated chip library; docs/scenario-format.md has the format.
#ifndef ZELSENSORS_FORMAT_SCENARIOTEXT_H
#define ZELSENSORS_FORMAT_SCENARIOTEXT_H

#include <string>
#include <vector>

#include "health/Recording.h"

namespace host {

struct ScenarioChoice {
    std::string heading;      // a comment's first line; fit for a terminal
    bool isRedacted = false;  // no name and no text of the event log: numbered words in their place
};

struct ScenarioText {
    std::string text;                 // TOML
    std::vector<std::string> losses;  // what it does not hold, in sentences fit for a terminal
};

// Whether a terminal whose names were refused so in every round can be played: its provider did not start (status 16),
// or it has no sensors, of which the provider makes status 1.
bool isPlayable(const broker::Status& start);

// Of a recording whose start is playable.
ScenarioText scenarioText(const Recording& recording, const ScenarioChoice& choice);

}  // namespace host

#endif
