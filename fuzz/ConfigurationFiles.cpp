#include "ConfigurationFiles.h"

#include <sys/types.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>

namespace {

std::optional<std::string> s_logFile;
std::optional<std::string> s_sensorFile;
unsigned s_open = 0;
unsigned s_openings = 0;

struct Reader {
    const std::string& contents;
    std::size_t position = 0;
};

ssize_t readMore(void* cookie, char* buffer, std::size_t room) {
    auto* reader = static_cast<Reader*>(cookie);
    const std::size_t count = std::min(room, reader->contents.size() - reader->position);
    std::memcpy(buffer, reader->contents.data() + reader->position, count);
    reader->position += count;
    return static_cast<ssize_t>(count);
}

int closeReader(void* cookie) {
    delete static_cast<Reader*>(cookie);
    --s_open;
    return 0;
}

std::FILE* openContents(const std::optional<std::string>& contents) {
    if (!contents) {
        errno = ENOENT;
        return nullptr;
    }
    cookie_io_functions_t functions{};
    functions.read = readMore;
    functions.close = closeReader;
    ++s_open;
    ++s_openings;
    return fopencookie(new Reader{*contents}, "r", functions);
}

}  // namespace

namespace configuration {

void setLogFile(std::optional<std::string> contents) {
    s_logFile = std::move(contents);
}

void setSensorFile(std::optional<std::string> contents) {
    s_sensorFile = std::move(contents);
}

unsigned openStreams() {
    return s_open;
}

unsigned openings() {
    return s_openings;
}

}  // namespace configuration

// The linker sends the code under test here (--wrap). The names are its own.
extern "C" {
std::FILE* __real_fopen(const char* path, const char* mode);
std::FILE* __wrap_fopen(const char* path, const char* mode);

std::FILE* __wrap_fopen(const char* path, const char* mode) {
    if (std::strcmp(path, "/etc/tarn/log.conf") == 0) return openContents(s_logFile);
    if (std::strcmp(path, "/etc/tarn/sensor.conf") == 0) return openContents(s_sensorFile);
    return __real_fopen(path, mode);
}
}
