#ifndef ZELSENSORS_CLI_SCENARIOCOMMANDS_H
#define ZELSENSORS_CLI_SCENARIOCOMMANDS_H

#include "cli/Locations.h"
#include "cli/Options.h"
#include "text/Output.h"

namespace host {

// What `zelhost scenario` asks for, in options.scenario...: the list of the supplied scenarios, or the mistakes of
// scenario files. Needs neither a provider nor a chip library. Gives the exit code. Throws UsageError and OutputError.
int runScenarioCommand(const Options& options, const InstallTree& tree, Output& output);

// `diff`: shows what is different between the two files, and gives the exit code, 1 where anything is. Throws Mistakes
// for files that cannot be played.
int showDifferences(const Options& options, Output& output);

}  // namespace host

#endif
