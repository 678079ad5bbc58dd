// The provider's two configuration files and its log, as whoever looks for a mistake wants to know them.
#ifndef ZELSENSORS_CLI_PROVIDERSETTINGS_H
#define ZELSENSORS_CLI_PROVIDERSETTINGS_H

#include <vector>

#include "source/Finding.h"

namespace host {

// Of /etc/tarn/log.conf and /etc/tarn/sensor.conf: whether each is read, and every line that does not do what its
// author may expect, since the provider passes over mistakes silently.
std::vector<Finding> settingsFindings();

// Where the log goes, and whether it can be written by this user.
Finding logFinding();

}  // namespace host

#endif
