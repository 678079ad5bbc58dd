#include "mof/MofReader.h"

#include <utility>

#include "mof/MofParser.h"
#include "text/Utf8.h"

namespace mof {

MofError::MofError(const std::string& file, unsigned line, const std::string& what)
    : std::runtime_error(host::printable(file) + ':' + std::to_string(line) + ": " + what) {}

Schema readMof(std::string_view text, const std::string& file, Schema before) {
    Schema schema = std::move(before);
    Parser(text, file, schema).parse();
    return schema;
}

}  // namespace mof
