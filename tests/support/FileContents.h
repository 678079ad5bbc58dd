// What a file holds.
#ifndef ZELSENSORS_TESTS_FILECONTENTS_H
#define ZELSENSORS_TESTS_FILECONTENTS_H

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

// From where the stream stands; of a file that cannot be read, nothing.
inline std::string contentsOf(std::ifstream file) {
    return {std::istreambuf_iterator<char>(file), {}};
}

inline std::string contentsOf(const std::filesystem::path& path) {
    return contentsOf(std::ifstream(path, std::ios::binary));
}

#endif
