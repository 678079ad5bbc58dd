#include "mof/MofError.h"

#include "text/Utf8.h"

namespace mof {

MofError::MofError(const std::string& file, unsigned line, const std::string& what)
    : std::runtime_error(host::printable(file) + ':' + std::to_string(line) + ": " + what) {}

}  // namespace mof
