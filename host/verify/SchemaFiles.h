// The MOF files that answers are compared with.
#ifndef ZELSENSORS_VERIFY_SCHEMAFILES_H
#define ZELSENSORS_VERIFY_SCHEMAFILES_H

#include <string>
#include <vector>

#include "mof/Schema.h"

namespace host {

// What the MOF files declare, read in that order. Throws SchemaError for a file that cannot be read or is larger than
// 16 MiB, and mof::MofError for one whose text is wrong.
mof::Schema readSchema(const std::vector<std::string>& files);

}  // namespace host

#endif
