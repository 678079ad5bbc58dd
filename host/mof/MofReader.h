// Reads MOF, the text form of CIM declarations.
#ifndef ZELSENSORS_MOF_MOFREADER_H
#define ZELSENSORS_MOF_MOFREADER_H

#include <string>
#include <string_view>

#include "mof/MofError.h"
#include "mof/Schema.h"

namespace mof {

// The declarations of a MOF text, added to those that were read before it. `file` only names the text in errors. Read
// are qualifier and class declarations (CIM 2 syntax); pragmas are skipped. Refused are #pragma include, instance
// declarations, and names with characters other than ASCII letters, digits and underscores. Checked are duplicates,
// superclasses (which must be declared before), values against their types and, once any qualifier has been declared,
// the qualifiers' declarations, values and scopes. Takes any bytes; the depth of calls does not depend on them. Throws
// MofError.
Schema readMof(std::string_view text, const std::string& file, Schema before = {});

}  // namespace mof

#endif
