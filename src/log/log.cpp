#include "log.h"

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cwchar>
#include <memory>
#include <new>
#include <string>
#include <utility>

#include "LogRecord.h"
#include "LogSink.h"

namespace {

constexpr std::size_t TEXT_SIZE = 4096;  // of a formatted text, with its end mark: bytes, or wide characters

using Buffer = std::unique_ptr<char[]>;

// Kept out of the calls' own code, as everything is that a filtered message does not need: that leaves those calls
// short.
void writeRecord(LogHandler& handler, LOG_LEVEL level, std::string text) {
    LogRecord record(level, text);
    handler.Log(record);
}

[[gnu::noinline]] void writeText(LogHandler& handler, LOG_LEVEL level, const char* text) {
    writeRecord(handler, level, std::string(text));
}

// Null, for a text that could not be made, is dropped.
[[gnu::noinline]] void writeFormatted(LogHandler& handler, LOG_LEVEL level, Buffer buffer) {
    if (buffer == nullptr) return;
    std::string text(buffer.get());
    buffer.reset();
    writeRecord(handler, level, std::move(text));
}

// Zero-filled, so that what formatting leaves there is terminated in any case. Null when there is no memory.
template <typename Character>
std::unique_ptr<Character[]> takeBuffer() noexcept {
    return std::unique_ptr<Character[]>(new (std::nothrow) Character[TEXT_SIZE]());
}

// Converts as much as fits, with room left for an end mark; false when the locale lacks a character.
bool narrow(const wchar_t* wide, char* buffer) {
    std::size_t length = std::wcstombs(buffer, wide, TEXT_SIZE);
    if (length == TEXT_SIZE) length = std::wcstombs(buffer, wide, TEXT_SIZE - 1);
    if (length == static_cast<std::size_t>(-1)) return false;
    buffer[length] = '\0';
    return true;
}

[[gnu::format(printf, 1, 0)]] Buffer formatted(const char* format, va_list arguments) noexcept {
    Buffer buffer = takeBuffer<char>();
    if (buffer != nullptr) std::vsnprintf(buffer.get(), TEXT_SIZE, format, arguments);
    return buffer;
}

Buffer formatted(const wchar_t* format, va_list arguments) noexcept {
    const std::unique_ptr<wchar_t[]> wide = takeBuffer<wchar_t>();
    Buffer buffer = takeBuffer<char>();
    if (wide == nullptr || buffer == nullptr) return nullptr;
    errno = 0;
    // It fails for want of room too, having filled the buffer; only what cannot be made at all is dropped.
    if (std::vswprintf(wide.get(), TEXT_SIZE, format, arguments) < 0 && errno == EILSEQ) return nullptr;
    wide[TEXT_SIZE - 1] = L'\0';
    if (!narrow(wide.get(), buffer.get())) return nullptr;
    return buffer;
}

}  // namespace

void Log(LOG_LEVEL level, const char* format, ...) {
    LogHandler& handler = logHandler();
    if (level > handler.GetLevel() || format == nullptr) return;
    va_list arguments;
    va_start(arguments, format);
    Buffer text = formatted(format, arguments);
    va_end(arguments);
    writeFormatted(handler, level, std::move(text));
}

void WLog(LOG_LEVEL level, const wchar_t* format, ...) {
    LogHandler& handler = logHandler();
    if (level > handler.GetLevel() || format == nullptr) return;
    va_list arguments;
    va_start(arguments, format);
    Buffer text = formatted(format, arguments);
    va_end(arguments);
    writeFormatted(handler, level, std::move(text));
}

void LogQuick(LOG_LEVEL level, const char* message) {
    LogHandler& handler = logHandler();
    if (level > handler.GetLevel() || message == nullptr) return;
    writeText(handler, level, message);
}
