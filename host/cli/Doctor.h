// `zelhost doctor`: why there are no sensors, or the wrong ones.
#ifndef ZELSENSORS_CLI_DOCTOR_H
#define ZELSENSORS_CLI_DOCTOR_H

#include <vector>

#include "cli/Locations.h"
#include "cli/Options.h"
#include "cli/ProviderOutput.h"
#include "source/Finding.h"

namespace host {

// All that was found: the provider's settings and log, the chip libraries that there are, what the provider answers
// with the chosen one, and what that library tells of the machine. What cannot be loaded is a finding, too. `output`
// has the provider's own lines. Throws UsageError for options that ask for what cannot be.
std::vector<Finding> examine(const Options& options, const InstallTree& tree, ProviderOutput& output);

}  // namespace host

#endif
