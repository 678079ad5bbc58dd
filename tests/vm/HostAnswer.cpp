#include "HostAnswer.h"

nlohmann::json answerIn(const std::vector<std::string>& lines) {
    std::string text;
    for (const std::string& line : lines) text += line;
    return nlohmann::json::parse(text, nullptr, false);
}

std::vector<std::string> valuesIn(const nlohmann::json& properties) {
    std::vector<std::string> values;
    for (const auto& [name, value] : properties.items())
        values.push_back(name + "=" + (value.is_string() ? "'" + value.get<std::string>() + "'" : value.dump()));
    return values;
}

std::vector<std::string> withoutTypes(std::vector<std::string> properties) {
    for (std::string& property : properties) {
        const std::size_t type = property.find('=') + 1;
        property.erase(type, property.find(' ') + 1 - type);
    }
    return properties;
}
