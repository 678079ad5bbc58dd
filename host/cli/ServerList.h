#ifndef ZELSENSORS_CLI_SERVERLIST_H
#define ZELSENSORS_CLI_SERVERLIST_H

#include <functional>
#include <string>
#include <vector>

namespace host {

// The servers that a file names, "-" being standard input: one address in a line, in the form that serverUrl() takes.
// Blanks around it, empty lines and what follows a '#' mean nothing. An address that stands there again is left out,
// and `warn` gets a sentence, since a terminal that is asked twice within a second may hide a failure. Throws
// UsageError where the file cannot be read or names no server, and Mistakes: one for each line that is no address.
std::vector<std::string> serversIn(const std::string& file, const std::function<void(const std::string&)>& warn);

// The list's name, for sentences.
std::string nameOfServerList(const std::string& file);

}  // namespace host

#endif
