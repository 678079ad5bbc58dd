// What a file holds.
#ifndef ZELSENSORS_TESTS_FILECONTENTS_H
#define ZELSENSORS_TESTS_FILECONTENTS_H

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

// From where the stream stands; of a file that cannot be read, nothing.
inline std::string contentsOf(const std::ifstream& file) {
    std::ostringstream contents;
    if (file) contents << file.rdbuf();
    return contents.str();
}

inline std::string contentsOf(const std::filesystem::path& path) {
    return contentsOf(std::ifstream(path, std::ios::binary));
}

#endif
