// `check`: one look at a terminal, for a monitoring system.
#ifndef ZELSENSORS_CLI_CHECK_H
#define ZELSENSORS_CLI_CHECK_H

#include <string>

#include "cli/Options.h"
#include "format/PluginFormat.h"
#include "source/Source.h"

namespace host {

// Asks for the sensors that are not ignored, and for the event log where that is wanted. `note` says where the readings
// come from. Throws UsageError for a word that may mean several sensors, and
// what the source throws.
PluginFindings findingsOf(const CheckOptions& options, const std::string& nameSpace, Source& source,
                          const std::string& note);

// The first status other than 0 that is in the findings.
std::optional<broker::Status> firstFailure(const PluginFindings& findings);

// A simulated terminal, asked for by name: only then its readings are an answer.
bool isSimulationWanted(const Options& options);

}  // namespace host

#endif
