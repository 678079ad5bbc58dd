// `sensors --servers`: the health of many terminals.
#ifndef ZELSENSORS_CLI_SENSORSOFSERVERS_H
#define ZELSENSORS_CLI_SENSORSOFSERVERS_H

#include <cstddef>
#include <functional>
#include <string>

#include "cli/Options.h"
#include "text/Output.h"

namespace host {

struct ServersOutcome {
    std::size_t servers = 0;
    std::size_t failed = 0;      // not all of their sensors could be asked
    std::size_t unanswered = 0;  // of these: without any usable answer
};

// Asks the servers of the list, and writes what the options want to see. `warn` gets sentences for people, and `errors`
// a line that counts on, where it is a terminal; the line goes before anything else is written. Throws UsageError, and
// ServerError where libcurl does not start.
ServersOutcome showSensorsOfServers(const Options& options, Output& output, Output& errors,
                                    const std::function<void(const std::string&)>& warn);

}  // namespace host

#endif
