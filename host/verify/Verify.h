// Asks a provider for everything that a schema declares, and compares the answers with it.
#ifndef ZELSENSORS_VERIFY_VERIFY_H
#define ZELSENSORS_VERIFY_VERIFY_H

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "broker/Model.h"
#include "mof/Schema.h"
#include "source/Source.h"
#include "verify/Conformance.h"

namespace host {

struct Problem {
    std::string request;  // "names", "instances" or "get"
    std::string path;     // of what was returned or asked for; fit for a terminal
    std::string text;     // what is wrong, likewise
    std::string cause;    // the likely one, of what came from a manager; else empty
};

struct ClassReport {
    std::string className;
    std::size_t names = 0;      // as many as were returned
    std::size_t instances = 0;  // in the enumeration
    std::size_t singles = 0;    // asked for one by one
    std::vector<Problem> problems;
};

struct Verification {
    std::string nameSpace;
    std::vector<ClassReport> classes;
    std::optional<broker::Status> firstFailure;  // the first status other than 0

    bool conforms() const;  // no problem anywhere
};

// Asks for the names, the instances, and each single instance of every class that is not abstract. Throws SchemaError
// where the schema has no such class.
Verification verify(const mof::Schema& schema, const std::string& nameSpace, Source& source, Via via = Via::Provider);

}  // namespace host

#endif
