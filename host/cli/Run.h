// One run of the program, from the options to the exit code.
#ifndef ZELSENSORS_CLI_RUN_H
#define ZELSENSORS_CLI_RUN_H

#include "cli/Locations.h"
#include "cli/Options.h"

namespace host {

// Does what the options ask: our output goes to standard output, complaints and the provider's error status to standard
// error, and the provider's own lines where the options say; those of a start that fails come to standard error
// unasked. Gives the exit code. Not to be run by two threads at a time: it changes descriptors and environment of the
// process.
int run(const Options& options, const InstallTree& tree);

}  // namespace host

#endif
