// Requests repeated at an interval, and shown.
#ifndef ZELSENSORS_CLI_WATCH_H
#define ZELSENSORS_CLI_WATCH_H

#include <functional>
#include <string>

#include "broker/Model.h"
#include "cli/Options.h"
#include "source/Answer.h"
#include "text/Output.h"

namespace host {

// Asks and shows, again and again, until the rounds are done or SIGINT, SIGTERM or SIGHUP comes (it ends after the
// request that is running). Gives the number of rounds that failed, and the last such status.
struct WatchOutcome {
    unsigned rounds = 0;
    unsigned failedRounds = 0;
    broker::Status lastFailure;
};
WatchOutcome watch(const Options& options, const AnsweringChip& chip, const std::function<broker::Reply()>& ask,
                   Output& output);

}  // namespace host

#endif
