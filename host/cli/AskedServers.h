// How servers are to be asked: what the options say, and the password.
#ifndef ZELSENSORS_CLI_ASKEDSERVERS_H
#define ZELSENSORS_CLI_ASKEDSERVERS_H

#include <functional>
#include <string>
#include <vector>

#include "cli/Options.h"
#include "source/Http.h"

namespace host {

// Who is to be asked: one server at least.
struct AskedServers {
    std::vector<std::string> urls;
    std::string name;  // for sentences: the URL, or "the servers in FILE"; fit for a terminal
};

// With the URL of the first. `warn` gets sentences on what somebody gives up who does not want encryption, or not to
// know with whom. Asks for the password where one is needed. Throws UsageError where there is none, and for options on
// certificates where none of the servers has one.
ServerAccess accessTo(const AskedServers& servers, const ServerOptions& options,
                      const std::function<void(const std::string&)>& warn);

}  // namespace host

#endif
