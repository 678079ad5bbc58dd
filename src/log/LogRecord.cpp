#include "LogRecord.h"

#include <pthread.h>
#include <unistd.h>

#include <array>
#include <ctime>
#include <utility>

namespace {

// Appends the number's low digits, so many of them, in lower case. By hand, since strftime and printf would take longer
// than everything else that goes into a line; they still format the values that have more digits.
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

// As strftime's "%d/%m/%Y %H:%M:%S."
void appendTime(std::string& out, const struct tm& local) {
    const long year = 1900L + local.tm_year;
    if (year < 1000 || year > 9999) {
        std::array<char, 256> text{};
        std::strftime(text.data(), text.size(), "%d/%m/%Y %H:%M:%S.", &local);
        out += text.data();
        return;
    }
    appendTwoDigits(out, local.tm_mday, '/');
    appendTwoDigits(out, local.tm_mon + 1, '/');
    appendDigits<10>(out, static_cast<unsigned>(year), 4);
    out += ' ';
    appendTwoDigits(out, local.tm_hour, ':');
    appendTwoDigits(out, local.tm_min, ':');
    appendTwoDigits(out, local.tm_sec, '.');
}

// As printf's "%03hu".
void appendMilliseconds(std::string& out, unsigned short milliseconds) {
    if (milliseconds > 999) {
        out += std::to_string(milliseconds);
    } else {
        appendDigits<10>(out, milliseconds, 3);
    }
}

// As printf's "T[%08x]", for instance T[f7d3c740].
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
    appendTime(out, local);
    appendMilliseconds(out, m_time.millitm);
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
