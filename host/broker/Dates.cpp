#include "broker/Dates.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <ctime>

namespace broker {
namespace {

constexpr std::size_t LENGTH = 25;
constexpr std::size_t POINT_AT = 14;
constexpr std::size_t SIGN_AT = 21;
constexpr std::int64_t MICROSECONDS_PER_SECOND = 1000000;
constexpr std::int64_t SECONDS_PER_DAY = 86400;
constexpr std::int64_t MAX_DAYS = 99999999;
constexpr int MAX_YEAR = 9999;

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

bool hasDateForm(std::string_view text) {
    if (text.size() != LENGTH || text[POINT_AT] != '.') return false;
    if (text[SIGN_AT] != '+' && text[SIGN_AT] != '-' && text[SIGN_AT] != ':') return false;
    for (std::size_t at = 0; at < LENGTH; ++at) {
        if (at != POINT_AT && at != SIGN_AT && !isDigit(text[at])) return false;
    }
    return true;
}

int number(std::string_view text, std::size_t at, std::size_t length) {
    int value = 0;
    for (const char c : text.substr(at, length)) value = value * 10 + (c - '0');
    return value;
}

// The seconds of the civil date in UTC; without a value when there is no such date.
std::optional<std::int64_t> secondsOfDate(std::string_view text) {
    std::tm date{};
    date.tm_year = number(text, 0, 4) - 1900;
    date.tm_mon = number(text, 4, 2) - 1;
    date.tm_mday = number(text, 6, 2);
    const std::tm asked = date;
    const std::time_t seconds = timegm(&date);  // carries days that the month lacks into the next
    if (date.tm_year != asked.tm_year || date.tm_mon != asked.tm_mon || date.tm_mday != asked.tm_mday) {
        return std::nullopt;
    }
    return seconds;
}

}  // namespace

std::optional<Date> parseDate(std::string_view text) {
    if (!hasDateForm(text)) return std::nullopt;
    const int hours = number(text, 8, 2);
    const int minutes = number(text, 10, 2);
    const int seconds = number(text, 12, 2);
    if (hours > 23 || minutes > 59 || seconds > 59) return std::nullopt;
    Date date;
    date.isInterval = text[SIGN_AT] == ':';
    const int offset = number(text, SIGN_AT + 1, 3);
    std::int64_t total = hours * 3600LL + minutes * 60LL + seconds;
    if (date.isInterval) {
        if (offset != 0) return std::nullopt;
        total += number(text, 0, 8) * SECONDS_PER_DAY;
    } else {
        const auto day = secondsOfDate(text);
        if (!day) return std::nullopt;
        total += *day - (text[SIGN_AT] == '-' ? -offset : offset) * 60LL;
    }
    date.microseconds = total * MICROSECONDS_PER_SECOND + number(text, POINT_AT + 1, 6);
    return date;
}

std::optional<std::string> formatDate(std::uint64_t microseconds, bool isInterval) {
    const auto fraction = static_cast<int>(microseconds % MICROSECONDS_PER_SECOND);
    const auto seconds = static_cast<std::int64_t>(microseconds / MICROSECONDS_PER_SECOND);
    std::array<char, 64> text{};
    if (isInterval) {
        const std::int64_t days = seconds / SECONDS_PER_DAY;
        if (days > MAX_DAYS) return std::nullopt;
        const auto rest = static_cast<int>(seconds % SECONDS_PER_DAY);
        std::snprintf(text.data(), text.size(), "%08d%02d%02d%02d.%06d:000", static_cast<int>(days), rest / 3600,
                      rest / 60 % 60, rest % 60, fraction);
        return text.data();
    }
    std::tm date{};
    const std::time_t time = seconds;
    if (gmtime_r(&time, &date) == nullptr || date.tm_year + 1900 > MAX_YEAR) return std::nullopt;
    std::snprintf(text.data(), text.size(), "%04d%02d%02d%02d%02d%02d.%06d+000", date.tm_year + 1900, date.tm_mon + 1,
                  date.tm_mday, date.tm_hour, date.tm_min, date.tm_sec, fraction);
    return text.data();
}

}  // namespace broker
