#ifndef ZELSENSORS_CLI_PASSWORD_H
#define ZELSENSORS_CLI_PASSWORD_H

#include <string>

namespace host {

// The variable of the environment that may hold the password.
constexpr const char* PASSWORD_VARIABLE = "ZELHOST_PASSWORD";

// The password of `user` at `server`: the first line of `file` where one is named, else that of the environment, else
// what is typed at the process's terminal, which shows nothing of it. Throws UsageError: no terminal, nothing typed,
// the entry given up, or a file that others than its owner, who must be us, can read or write. No message holds the
// password.
std::string passwordOf(const std::string& user, const std::string& server, const std::string& file);

}  // namespace host

#endif
