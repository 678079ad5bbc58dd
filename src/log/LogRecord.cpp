#include "LogRecord.h"

#include <pthread.h>
#include <unistd.h>

#include <array>
#include <ctime>
#include <utility>

namespace {

// Appends the number's low digits, so many of them, in lower case. By hand, since strftime and printf would take longer
// than all else in the making of a line.
template <unsigned base>
void appendDigits(std::string& out, unsigned number, std::size_t digits) {
    std::array<char, 8> text{};
    for (std::size_t i = digits; i > 0; --i) {
        text[i - 1] = "0123456789abcdef"[number % base];
        number /= base;
    }
    out.append(text.data(), digits);
}

void appendTwoDigits(std::string& out, int number, char end) {
    appendDigits<10>(out, static_cast<unsigned>(number), 2);
    out += end;
}

// For instance T[f7d3c740].
void appendId(std::string& out, char kind, std::uint32_t id) {
    out += kind;
    out += '[';
    appendDigits<16>(out, id, 8);
    out += ']';
}

}  // namespace

LogRecord::LogRecord(LOG_LEVEL level, std::string& message) : m_level(level), m_message(message) {
    // The C library calls ftime outdated for its precision; whole milliseconds are all that the line shows.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
    ftime(&m_time);
#pragma GCC diagnostic pop
    m_pid = getpid();
    m_tid = static_cast<std::uint32_t>(pthread_self());
}

LogRecord::~LogRecord() = default;

void LogRecord::GetLogLine(std::string& line) {
    std::string text;
    text.reserve(128);
    GetTimeString(text);
    text += '\t';
    GetPidString(text);
    text += ' ';
    GetTidString(text);
    text += '\t';
    GetLevelString(text);
    text += '\t';
    text += m_message;
    text += '\n';
    line = std::move(text);
}

void LogRecord::GetTimeString(std::string& out) {
    struct tm local {};
    localtime_r(&m_time.time, &local);
    appendTwoDigits(out, local.tm_mday, '/');
    appendTwoDigits(out, local.tm_mon + 1, '/');
    out += std::to_string(local.tm_year + 1900);
    out += ' ';
    appendTwoDigits(out, local.tm_hour, ':');
    appendTwoDigits(out, local.tm_min, ':');
    appendTwoDigits(out, local.tm_sec, '.');
    appendDigits<10>(out, m_time.millitm, 3);
}

void LogRecord::GetPidString(std::string& out) {
    appendId(out, 'P', static_cast<std::uint32_t>(m_pid));
}

void LogRecord::GetTidString(std::string& out) {
    appendId(out, 'T', m_tid);
}

void LogRecord::GetLevelString(std::string& out) {
    // All of one width, so that the messages stand in a column.
    static constexpr std::array<const char*, 5> names{"Off  ", "Error", "Info ", "Debug", "Trace"};
    const auto level = static_cast<unsigned>(m_level);
    if (level < names.size()) out += names[level];
}
