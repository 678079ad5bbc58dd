// The exception for MOF files that are of no use.
#ifndef ZELSENSORS_VERIFY_SCHEMAERROR_H
#define ZELSENSORS_VERIFY_SCHEMAERROR_H

#include <stdexcept>

namespace host {

// The schema cannot be read, or has nothing to compare with.
class SchemaError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

}  // namespace host

#endif
