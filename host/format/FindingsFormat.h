// What was found about missing and wrong sensors, as people and programs read it. Pure functions.
#ifndef ZELSENSORS_FORMAT_FINDINGSFORMAT_H
#define ZELSENSORS_FORMAT_FINDINGSFORMAT_H

#include <string>
#include <vector>

#include "source/Finding.h"
#include "text/Charset.h"

namespace host {

bool isAnythingToDo(const std::vector<Finding>& findings);

// A table, and what to do, each thing once.
std::string findingsText(const std::vector<Finding>& findings, Charset charset);

// What docs/json.md says of `doctor`.
std::string findingsJson(const std::vector<Finding>& findings);

}  // namespace host

#endif
