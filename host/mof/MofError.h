// The one exception of reading MOF.
#ifndef ZELSENSORS_MOF_MOFERROR_H
#define ZELSENSORS_MOF_MOFERROR_H

#include <stdexcept>
#include <string>

namespace mof {

// The text cannot be read; what() is "file:line: what is wrong", in one line fit for a terminal.
class MofError : public std::runtime_error {
  public:
    MofError(const std::string& file, unsigned line, const std::string& what);
};

}  // namespace mof

#endif
