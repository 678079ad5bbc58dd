#include "log.h"

#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cwchar>
#include <memory>
#include <mutex>
#include <new>
#include <string>
#include <utility>

#include "LogHandler.h"
#include "LogRecord.h"

namespace {

constexpr std::size_t textSize = 4096;  // of a formatted text, with its end mark: bytes, or wide characters

// The one sink, null until the first call. It stays to the end of the process, since the host's other threads and its
// exit handlers may log to the last. Only when the library is unloaded before that is it deleted.
std::atomic<LogHandler*> s_logHandler{nullptr};
std::mutex s_creation;

// Apart from the calls' own code, as is all that a filtered message does not need: that leaves those calls short.
[[gnu::noinline]] LogHandler& createLogHandler() {
    const std::lock_guard<std::mutex> lock(s_creation);
    LogHandler* handler = s_logHandler.load(std::memory_order_relaxed);
    if (handler == nullptr) {
        std::puts("Logger created");
        handler = new FileLogHandler;
        s_logHandler.store(handler, std::memory_order_release);
    }
    return *handler;
}

LogHandler& logHandler() {
    LogHandler* handler = s_logHandler.load(std::memory_order_acquire);
    return handler != nullptr ? *handler : createLogHandler();
}

// Unloading and the end of the process are told apart by the order in which the library's clean-up is run. dlclose runs
// its termination functions first and the destructors of its static objects after them; exit runs the destructors
// first, as it does with all exit handlers, and the termination functions when it finalises the libraries.
bool s_unloading = false;

[[gnu::destructor]] void noticeTermination() {
    s_unloading = true;
}

class SinkOwner {
  public:
    ~SinkOwner() {
        if (s_unloading) delete s_logHandler.exchange(nullptr);
    }
};

const SinkOwner s_sinkOwner;

using Buffer = std::unique_ptr<char[]>;

void hand(LogHandler& handler, LOG_LEVEL level, std::string text) {
    LogRecord record(level, text);
    handler.Log(record);
}

[[gnu::noinline]] void hand(LogHandler& handler, LOG_LEVEL level, const char* text) {
    hand(handler, level, std::string(text));
}

// Null, for a text that could not be made, is dropped.
[[gnu::noinline]] void hand(LogHandler& handler, LOG_LEVEL level, Buffer buffer) {
    if (buffer == nullptr) return;
    std::string text(buffer.get());
    buffer.reset();
    hand(handler, level, std::move(text));
}

// Zero-filled, so that what formatting leaves there is terminated in any case. Null when there is no memory.
template <class Character>
std::unique_ptr<Character[]> takeBuffer() noexcept {
    return std::unique_ptr<Character[]>(new (std::nothrow) Character[textSize]());
}

// Converts as much as fits, with room left for an end mark; false when the locale lacks a character.
bool narrow(const wchar_t* wide, char* buffer) {
    std::size_t length = std::wcstombs(buffer, wide, textSize);
    if (length == textSize) length = std::wcstombs(buffer, wide, textSize - 1);
    if (length == static_cast<std::size_t>(-1)) return false;
    buffer[length] = '\0';
    return true;
}

[[gnu::format(printf, 1, 0)]] Buffer formatted(const char* format, va_list arguments) noexcept {
    Buffer buffer = takeBuffer<char>();
    if (buffer != nullptr) std::vsnprintf(buffer.get(), textSize, format, arguments);
    return buffer;
}

Buffer formatted(const wchar_t* format, va_list arguments) noexcept {
    const std::unique_ptr<wchar_t[]> wide = takeBuffer<wchar_t>();
    Buffer buffer = takeBuffer<char>();
    if (wide == nullptr || buffer == nullptr) return nullptr;
    errno = 0;
    // It fails for want of room too, having filled the buffer; only what cannot be made at all is dropped.
    if (std::vswprintf(wide.get(), textSize, format, arguments) < 0 && errno == EILSEQ) return nullptr;
    wide[textSize - 1] = L'\0';
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
    hand(handler, level, std::move(text));
}

void WLog(LOG_LEVEL level, const wchar_t* format, ...) {
    LogHandler& handler = logHandler();
    if (level > handler.GetLevel() || format == nullptr) return;
    va_list arguments;
    va_start(arguments, format);
    Buffer text = formatted(format, arguments);
    va_end(arguments);
    hand(handler, level, std::move(text));
}

void LogQuick(LOG_LEVEL level, const char* message) {
    LogHandler& handler = logHandler();
    if (level > handler.GetLevel() || message == nullptr) return;
    hand(handler, level, message);
}
