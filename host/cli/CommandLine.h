// From the program's arguments to what they ask for.
#ifndef ZELSENSORS_CLI_COMMANDLINE_H
#define ZELSENSORS_CLI_COMMANDLINE_H

#include <optional>
#include <ostream>

#include "cli/Options.h"

namespace host {

// Reads the command line into `options`. Where the program is to end at once (help, version, wrong usage), gives its
// exit code, having written help to `output` or the complaint to `errors`; `options` is not to be used then.
std::optional<int> readCommandLine(int count, const char* const* arguments, Options& options, std::ostream& output,
                                   std::ostream& errors);

}  // namespace host

#endif
