// What binutils say about a library.
#ifndef ZELSENSORS_TESTS_SYMBOLS_H
#define ZELSENSORS_TESTS_SYMBOLS_H

#include <stdio.h>

#include <memory>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>

// The command's standard output. Throws where the command cannot be run, or fails.
inline std::string outputOf(const std::string& command) {
    std::FILE* pipe = popen(("LC_ALL=C " + command).c_str(), "r");
    if (pipe == nullptr) throw std::runtime_error("cannot run " + command);
    std::string output;
    char buffer[4096];
    while (const std::size_t size = std::fread(buffer, 1, sizeof buffer, pipe)) output.append(buffer, size);
    if (pclose(pipe) != 0) throw std::runtime_error(command + " failed");
    return output;
}

// The first words of nm's portable lines.
inline std::set<std::string> symbolsOf(const std::string& nm) {
    std::set<std::string> symbols;
    std::istringstream lines(outputOf(nm));
    for (std::string line; std::getline(lines, line);) symbols.insert(line.substr(0, line.find_first_of(" @")));
    return symbols;
}

inline std::set<std::string> exportedSymbols(const std::string& library) {
    return symbolsOf("nm --dynamic --defined-only --format=posix " + library);
}

inline std::set<std::string> undefinedSymbols(const std::string& library) {
    return symbolsOf("nm --dynamic --undefined-only --format=posix " + library);
}

inline std::set<std::string> definedSymbols(const std::string& archive) {
    return symbolsOf("nm --defined-only --extern-only --format=posix " + archive);
}

// The texts in brackets of the dynamic section's entries with this tag, such as "NEEDED".
inline std::set<std::string> dynamicEntries(const std::string& library, const std::string& tag) {
    std::set<std::string> entries;
    std::istringstream lines(outputOf("readelf --dynamic --wide " + library));
    for (std::string line; std::getline(lines, line);) {
        if (line.find('(' + tag + ')') == std::string::npos) continue;
        const std::size_t begin = line.find('[') + 1;
        entries.insert(line.substr(begin, line.find(']') - begin));
    }
    return entries;
}

#endif
