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
    std::optional<broker::Status>
        failure;  // of a start that never succeeded; it is in the recording, if that was written
    bool isWritten = false;
};

// Throws UsageError where the file is there already and is not to be replaced.
void refuseExisting(const RecordOptions& options);

// Asks until the time is over or a signal ends it, and writes the file. `progress` gets a line that goes, `report`
// sentences for people. Throws OutputError where the file cannot be written, and what the source throws.
RecordOutcome record(const Options& options, Source& source, const std::string& heading, Output& progress,
                     const std::function<void(const std::string&)>& report);

}  // namespace host

#endif
