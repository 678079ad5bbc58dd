#include "LogRecord.h"

#include <pthread.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <ctime>
#include <utility>

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
    std::array<char, 256> seconds{};
    std::strftime(seconds.data(), seconds.size(), "%d/%m/%Y %H:%M:%S.", &local);
    out += seconds.data();
    std::array<char, 32> milliseconds{};
    std::snprintf(milliseconds.data(), milliseconds.size(), "%03hu", m_time.millitm);
    out += milliseconds.data();
}

void LogRecord::GetPidString(std::string& out) {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "P[%08x]", static_cast<unsigned>(m_pid));
    out += text.data();
}

void LogRecord::GetTidString(std::string& out) {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "T[%08x]", m_tid);
    out += text.data();
}

void LogRecord::GetLevelString(std::string& out) {
    // All of one width, so that the messages stand in a column.
    static constexpr std::array<const char*, 5> names{"Off  ", "Error", "Info ", "Debug", "Trace"};
    const auto level = static_cast<unsigned>(m_level);
    if (level < names.size()) out += names[level];
}
