// The sensors asked at an interval, and shown.
#ifndef ZELSENSORS_CLI_WATCH_H
#define ZELSENSORS_CLI_WATCH_H

#include <optional>
#include <string>

#include "broker/Model.h"
#include "cli/Options.h"
#include "source/Answer.h"
#include "source/Source.h"
#include "text/Output.h"

namespace host {

// Asks and shows, again and again, until the rounds are done, somebody presses q, or SIGINT, SIGTERM or SIGHUP comes
// (it ends after the request that is running). A sensor that a failed round does not name stays, without a reading.
// `note` is shown above the sensors. Gives the number of rounds in which anything failed, and the last such status.
// Throws what the source throws, and OutputError; the terminal is as it was then too.
struct WatchOutcome {
    unsigned rounds = 0;
    unsigned failedRounds = 0;
    broker::Status lastFailure;
};
WatchOutcome watch(const Options& options, Source& source, const std::string& note,
                   const std::optional<AnsweringChip>& chip, Output& output);

}  // namespace host

#endif
