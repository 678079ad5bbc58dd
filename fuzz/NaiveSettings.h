// A second reading of the rules for the configuration files, as plain as it gets, to hold the real one against.
#ifndef ZELSENSORS_FUZZ_NAIVESETTINGS_H
#define ZELSENSORS_FUZZ_NAIVESETTINGS_H

#include <cstdio>
#include <string>
#include <utility>
#include <vector>

// All settings of a file, keys and values, in its order.
inline std::vector<std::pair<std::string, std::string>> naiveSettings(const std::string& file) {
    std::vector<std::pair<std::string, std::string>> settings;
    std::string line;
    for (std::size_t i = 0; i < file.size(); ++i) {
        line += file[i];
        if (file[i] != '\n' && i + 1 < file.size()) continue;
        std::string cut;
        for (std::size_t k = 0; k < line.size() && line[k] != '\0'; ++k) cut += line[k];
        line.clear();
        std::size_t equals = 0;
        while (equals < cut.size() && cut[equals] != '=') ++equals;
        if (equals == 0 || equals == cut.size()) continue;
        std::string value;
        for (std::size_t k = equals + 1; k + 1 < cut.size(); ++k) value += cut[k];
        settings.emplace_back(std::string(cut.c_str(), equals), value);
    }
    return settings;
}

// The number that scanf's "%lu" finds in a value.
inline bool naiveNumber(const std::string& value, unsigned long& number) {
    return std::sscanf(value.c_str(), "%lu", &number) == 1;
}

#endif
