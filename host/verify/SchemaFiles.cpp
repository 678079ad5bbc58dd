#include "verify/SchemaFiles.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <utility>

#include "mof/MofReader.h"
#include "verify/SchemaError.h"

namespace host {
namespace {

// Several times what all classes of the published CIM schema take; it ends the reading of an endless file.
constexpr std::size_t LARGEST_FILE = std::size_t{16} << 20;

std::string contentsOf(const std::string& file) {
    std::ifstream stream(file, std::ios::binary);
    std::string contents;
    std::array<char, 4096> block{};
    while (stream.read(block.data(), block.size()) || stream.gcount() > 0) {
        contents.append(block.data(), static_cast<std::size_t>(stream.gcount()));
        if (contents.size() > LARGEST_FILE) throw SchemaError("the schema file " + file + " is larger than 16 MiB");
    }
    if (!stream.eof()) throw SchemaError("the schema file " + file + " cannot be read (" + std::strerror(errno) + ")");
    return contents;
}

}  // namespace

mof::Schema readSchema(const std::vector<std::string>& files) {
    mof::Schema schema;
    for (const std::string& file : files) schema = mof::readMof(contentsOf(file), file, std::move(schema));
    return schema;
}

}  // namespace host
