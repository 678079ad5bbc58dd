// CIM's date form, 25 characters: "yyyymmddhhmmss.mmmmmm+ooo" for a time, whose offset from UTC is in minutes, and
// "ddddddddhhmmss.mmmmmm:000" for an interval. Forms with asterisks are not taken.
#ifndef ZELSENSORS_BROKER_DATES_H
#define ZELSENSORS_BROKER_DATES_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace broker {

struct Date {
    bool isInterval = false;
    std::int64_t microseconds = 0;  // the interval's length, or since 1970-01-01 UTC
};

std::optional<Date> parseDate(std::string_view text);
// In UTC. Without a value where the form has no room for the date: years after 9999, more than 99999999 days.
std::optional<std::string> formatDate(std::uint64_t microseconds, bool isInterval);

}  // namespace broker

#endif
