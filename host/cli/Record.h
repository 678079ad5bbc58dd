// The command record: what a terminal answers, as a scenario file.
#ifndef ZELSENSORS_CLI_RECORD_H
#define ZELSENSORS_CLI_RECORD_H

#include <chrono>
#include <functional>
#include <optional>
#include <string>

#include "broker/Model.h"
#include "cli/Options.h"
#include "source/Source.h"
#include "text/Output.h"

namespace host {

struct RecordOutcome {
    // Why no round gave a sensor's name. It is in the file where it can be played; otherwise there is no file.
    std::optional<broker::Status> failure;
};

// Throws UsageError where the file is there already and is not to be replaced, and OutputError where it cannot be
// written.
void refuseUnwritable(const RecordOptions& options);

// Asks until the time is over or a signal ends it, and writes the file. `progress` gets a line that goes, `report`
// sentences fit for a terminal. Throws OutputError where the file cannot be written, and what the source throws; what
// was recorded before is in the file then.
RecordOutcome record(const Options& options, Source& source, const std::string& heading, Output& progress,
                     const std::function<void(const std::string&)>& report);

}  // namespace host

#endif
