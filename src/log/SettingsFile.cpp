#include "SettingsFile.h"

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <optional>

namespace {

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

struct Freer {
    void operator()(char* buffer) const { std::free(buffer); }
};

// The next line with its newline, up to its first NUL byte; nothing at the end of the file or on a read error.
std::optional<std::string> readLine(std::FILE* file) {
    char* buffer = nullptr;
    std::size_t capacity = 0;
    const ssize_t length = getline(&buffer, &capacity, file);
    const std::unique_ptr<char, Freer> owner(buffer);
    if (length < 0) return std::nullopt;
    return std::string(buffer);
}

}  // namespace

void readSettings(const char* path,
                  const std::function<void(const std::string& key, const std::string& value)>& setting) {
    const std::unique_ptr<std::FILE, FileCloser> file(std::fopen(path, "r"));
    if (file == nullptr) return;
    while (const std::optional<std::string> line = readLine(file.get())) {
        const std::size_t equals = line->find('=');
        if (equals == std::string::npos || equals == 0) continue;
        std::string value = line->substr(equals + 1);
        if (!value.empty()) value.pop_back();
        setting(line->substr(0, equals), value);
    }
}

bool scanUnsigned(const std::string& value, unsigned long& number) {
    char* end = nullptr;
    const unsigned long scanned = std::strtoul(value.c_str(), &end, 10);
    if (end == value.c_str()) return false;
    number = scanned;
    return true;
}
