#include "Property.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>

namespace {

// Unprintable characters as hexadecimal numbers, and long texts shortened.
std::string shown(const std::string& text) {
    constexpr std::size_t most = 2000;
    std::string result = "\"";
    for (const char c : text.substr(0, most)) {
        const auto code = static_cast<unsigned char>(c);
        char escaped[8];
        std::snprintf(escaped, sizeof escaped, code < 0x20 || code >= 0x7f || c == '\\' ? "\\x%02x" : "%c", code);
        result += escaped;
    }
    return result + '"' + (text.size() > most ? " and more, of " + std::to_string(text.size()) + " bytes" : "");
}

}  // namespace

void fail(const std::string& what) {
    const std::string line = "PROPERTY VIOLATED: " + what + "\n";
    // Past the streams, which may be captured.
    if (write(STDERR_FILENO, line.data(), line.size()) < 0) std::abort();
    std::abort();
}

void requireSame(const std::string& actual, const std::string& expected, const char* what) {
    if (actual != expected)
        fail(std::string(what) + "\n  is:        " + shown(actual) + "\n  should be: " + shown(expected));
}

void requireSame(long long actual, long long expected, const char* what) {
    if (actual != expected) {
        fail(std::string(what) + " is " + std::to_string(actual) + ", should be " + std::to_string(expected));
    }
}
