#include "health/EventLines.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <regex>
#include <utility>
#include <vector>

#include "broker/Names.h"

namespace host {
namespace {

std::string written(const std::tm& parts) {
    std::array<char, 64> text{};
    return std::string(text.data(), std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M:%S", &parts));
}

int matchedNumber(const std::ssub_match& digits) {
    return digits.matched ? std::stoi(digits) : 0;
}

// Six groups: year to second. Nothing for a day or an hour that there is not.
std::optional<std::string> dateOf(const std::smatch& found) {
    std::tm parts{};
    parts.tm_year = matchedNumber(found[1]) - 1900;
    parts.tm_mon = matchedNumber(found[2]) - 1;
    parts.tm_mday = matchedNumber(found[3]);
    parts.tm_hour = matchedNumber(found[4]);
    parts.tm_min = matchedNumber(found[5]);
    parts.tm_sec = matchedNumber(found[6]);
    const std::tm asRead = parts;
    timegm(&parts);
    const bool isWhole = parts.tm_mon == asRead.tm_mon && parts.tm_mday == asRead.tm_mday &&
                         parts.tm_hour == asRead.tm_hour && parts.tm_min == asRead.tm_min &&
                         parts.tm_sec == asRead.tm_sec;
    return isWhole ? std::optional<std::string>(written(parts)) : std::nullopt;
}

bool hasText(const std::string& line, const std::string& text) {
    const auto isSame = [](char left, char right) { return broker::lowered(left) == broker::lowered(right); };
    return std::search(line.begin(), line.end(), text.begin(), text.end(), isSame) != line.end() || text.empty();
}

bool isWanted(const std::string& line, const LineFilter& filter) {
    if (!hasText(line, filter.match)) return false;
    if (!filter.since) return true;
    const std::optional<std::string> date = dateIn(line);
    return !date || *date >= *filter.since;
}

}  // namespace

std::optional<std::string> dateIn(const std::string& line) {
    static const std::regex form(
        "(?:^|[^0-9])([0-9]{4})-([0-9]{2})-([0-9]{2})[ T]([0-9]{2}):([0-9]{2})(?::([0-9]{2}))?(?![0-9])");
    std::smatch found;
    return std::regex_search(line, found, form) ? dateOf(found) : std::nullopt;
}

bool hasOwnNumber(const std::string& line) {
    const std::size_t end = line.find_first_not_of("0123456789");
    return end != 0 && end != std::string::npos && line[end] == ' ';
}

std::optional<std::string> momentIn(const std::string& word, std::time_t now) {
    static const std::regex date("([0-9]{4})-([0-9]{2})-([0-9]{2})(?:[ T]([0-9]{2}):([0-9]{2})(?::([0-9]{2}))?)?");
    static const std::regex duration("([0-9]{1,7})([smhdw])");
    std::smatch found;
    if (std::regex_match(word, found, date)) return dateOf(found);
    if (!std::regex_match(word, found, duration)) return std::nullopt;
    const std::string letters = "smhdw";
    constexpr std::array<std::time_t, 5> seconds{1, 60, 3600, 86400, 604800};
    const std::time_t then = now - std::stol(found[1]) * seconds.at(letters.find(found.str(2)));
    std::tm parts{};
    localtime_r(&then, &parts);
    return written(parts);
}

std::vector<std::string> wantedLines(std::vector<std::string> lines, const LineFilter& filter) {
    const auto isUnwanted = [&filter](const std::string& line) { return !isWanted(line, filter); };
    lines.erase(std::remove_if(lines.begin(), lines.end(), isUnwanted), lines.end());
    const std::size_t surplus = lines.size() - std::min(lines.size(), filter.last.value_or(lines.size()));
    lines.erase(lines.begin(), lines.begin() + static_cast<std::ptrdiff_t>(surplus));
    return lines;
}

Answer withLines(Answer answer, const LineFilter& filter) {
    for (broker::Instance& instance : answer.reply.instances) {
        for (broker::NamedValue& property : instance.properties) {
            if (property.name != "LogLines") continue;
            std::vector<broker::Value>& lines = property.value.elements;
            LineChoice choice{{}, lines.size()};
            for (std::size_t i = 0; i < lines.size(); ++i) {
                if (isWanted(lines[i].text, filter)) choice.places.push_back(i + 1);
            }
            const std::size_t count = choice.places.size();
            const std::size_t surplus = count - std::min(count, filter.last.value_or(count));
            choice.places.erase(choice.places.begin(), choice.places.begin() + static_cast<std::ptrdiff_t>(surplus));
            std::vector<broker::Value> chosen;
            for (const std::size_t place : choice.places) chosen.push_back(std::move(lines[place - 1]));
            lines = std::move(chosen);
            answer.lines = std::move(choice);
        }
    }
    return answer;
}

}  // namespace host
