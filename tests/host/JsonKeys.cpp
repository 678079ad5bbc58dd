#include "JsonKeys.h"

#include <fstream>

namespace {

void collectKeys(const nlohmann::json& value, const std::string& place, std::set<std::string>& keys) {
    if (value.is_array() && !value.empty()) collectKeys(value[0], place + "[]", keys);
    if (!value.is_object()) return;
    for (const auto& [key, member] : value.items()) {
        const std::string path = place.empty() ? key : place + '.' + key;
        keys.insert(path);
        collectKeys(member, path, keys);
    }
}

}  // namespace

std::set<std::string> keysIn(const nlohmann::json& document) {
    std::set<std::string> keys;
    collectKeys(document, "", keys);
    return keys;
}

std::set<std::string> documentedKeys(const std::string& file, const std::string& section) {
    std::ifstream stream(file);
    std::set<std::string> keys;
    bool isInside = false;
    for (std::string line; std::getline(stream, line);) {
        if (line.rfind("## ", 0) == 0) isInside = line == "## " + section;
        if (isInside && line.rfind("| `", 0) == 0) keys.insert(line.substr(3, line.find('`', 3) - 3));
    }
    return keys;
}
