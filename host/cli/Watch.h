#ifndef ZELSENSORS_CLI_WATCH_H
#define ZELSENSORS_CLI_WATCH_H

#include <functional>
#include <string>
#include <vector>

#include "health/SensorView.h"
#include "source/Answer.h"
#include "text/Output.h"

namespace host {

// A line of a round, and how grave what it shows is.
struct WatchLine {
    std::string text;
    Severity severity = Severity::Normal;
};

// A round as people read it, in that charset: the head (which time and status), then a line for each sensor.
std::vector<WatchLine> watchLines(const Answer& answer, const std::string& head, Charset charset);

// The lines as they are drawn over the last round's on a terminal of that size (0: not known): each cut to the width,
// and as many as there is room for, the last saying how many are missing.
std::string drawn(const std::vector<WatchLine>& lines, Output::Size size, bool inColour);

// Asks and shows, again and again, until the rounds are done or SIGINT, SIGTERM or SIGHUP comes (it ends after the
// request that is running). Gives the number of rounds that failed, and the last such status.
struct WatchOutcome {
    unsigned rounds = 0;
    unsigned failedRounds = 0;
    broker::Status lastFailure;
};
WatchOutcome watch(const Options& options, const std::string& note, const std::function<broker::Reply()>& ask,
                   Output& output);

}  // namespace host

#endif
