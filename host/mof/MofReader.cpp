#include "mof/MofReader.h"

#include <utility>

#include "mof/MofParser.h"

namespace mof {

Schema readMof(std::string_view text, const std::string& file, Schema before) {
    Schema schema = std::move(before);
    Parser(text, file, schema).parse();
    return schema;
}

}  // namespace mof
