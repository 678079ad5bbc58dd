#ifndef ZELSENSORS_CLI_PRIVATELOG_H
#define ZELSENSORS_CLI_PRIVATELOG_H

#include <string>
#include <vector>

namespace host {

// Gives the process a log directory of its own, in memory: what a simulated terminal's provider logs does not get
// between the lines of the real one's. It is a private mount namespace, and a private user namespace as well where the
// process may not make the first. False where the system does not allow that, or where the directory hides one of the
// files that are `needed`; everything is as it was then. Not after the first thread.
bool enterPrivateLog(const std::vector<std::string>& needed);

}  // namespace host

#endif
