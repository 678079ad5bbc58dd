// The keys of a JSON document, and those that its description lists.
#ifndef ZELSENSORS_TESTS_HOST_JSONKEYS_H
#define ZELSENSORS_TESTS_HOST_JSONKEYS_H

#include <nlohmann/json.hpp>
#include <set>
#include <string>

// Every key, in its place: "sensors[].limits.upperFatal". Of an array its first element counts.
std::set<std::string> keysIn(const nlohmann::json& document);

// The first cells, in back quotes, of the rows of the section's table.
std::set<std::string> documentedKeys(const std::string& file, const std::string& section);

#endif
