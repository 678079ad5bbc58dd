// The command log --follow: lines of the event log as they come, each once.
#ifndef ZELSENSORS_CLI_FOLLOW_H
#define ZELSENSORS_CLI_FOLLOW_H

#include <chrono>
#include <optional>

#include "cli/SeenLines.h"
#include "cli/Trouble.h"
#include "health/LogFollower.h"
#include "text/Output.h"

namespace host {

struct FollowTiming {
    std::chrono::nanoseconds interval;
    unsigned looks;  // 0: until a signal asks for the end
};

struct FollowOutcome {
    std::optional<broker::Status> failure;  // the last one of the provider, where the looks were counted
    bool isSaved = true;                    // false: the listener knows why the state is an old one
};

// Looks at once and then at each multiple of the interval. New lines go to the output, fit for a terminal, one on a
// line whatever it contains; then the state, where there is one, is replaced: whoever is killed in between shows those
// lines again at the next start, and loses none. The state is written before the first look too, so that one that
// cannot be is found before a line has gone out. Later it is tried again at each look, and at the last one. What lasts
// is reported when it begins, changes and ends.
//
// Throws OutputError for the output, and for the state before the first look; and what the follower throws. A request
// or an output that does not return within seconds after the signal is left: the process ends with status 0.
FollowOutcome followLog(LogFollower& follower, const std::optional<SeenLines>& state, const FollowTiming& timing,
                        Output& output, const TroubleListener& listener);

}  // namespace host

#endif
