#include "PluginOutput.h"

#include <limits>
#include <regex>
#include <sstream>
#include <stdexcept>

#include "text/Utf8.h"

namespace {

constexpr const char* NUMBER = "-?[0-9]+(?:\\.[0-9]+)?";

[[noreturn]] void refuse(const std::string& what, const std::string& text) {
    throw std::runtime_error(what + ": " + text);
}

bool isMatch(const std::string& text, const std::string& pattern) {
    return std::regex_match(text, std::regex(pattern));
}

struct Range {
    double low, high;
    bool isInside;
};

Range rangeIn(const std::string& text) {
    std::smatch parts;
    const std::string number(NUMBER);
    if (!std::regex_match(text, parts, std::regex("(@?)(?:(~|" + number + "):)?(" + number + ")?")) || text.empty()) {
        refuse("no range", text);
    }
    Range range{0, std::numeric_limits<double>::infinity(), parts[1] == "@"};
    if (parts[2] == "~") {
        range.low = -range.high;
    } else if (parts[2].matched) {
        range.low = std::stod(parts[2]);
    }
    if (parts[3].matched) range.high = std::stod(parts[3]);
    if (range.low > range.high) refuse("a range's start is after its end", text);
    return range;
}

// One label=value;... from the place on, which is moved behind it.
PerformanceValue valueAt(const std::string& text, std::size_t& place) {
    PerformanceValue result;
    std::size_t equals = 0;
    if (text[place] == '\'') {
        const std::size_t quote = text.find('\'', place + 1);
        if (quote == std::string::npos || text[quote + 1] != '=') refuse("the label's quote is not closed", text);
        result.label = text.substr(place + 1, quote - place - 1);
        equals = quote + 1;
    } else {
        equals = text.find('=', place);
        if (equals == std::string::npos) refuse("no value", text.substr(place));
        result.label = text.substr(place, equals - place);
        if (result.label.find(' ') != std::string::npos) refuse("a label with blanks needs quotes", result.label);
    }
    if (result.label.empty() || result.label.find_first_of("='|") != std::string::npos) refuse("label", result.label);
    const std::size_t end = std::min(text.find(' ', equals), text.size());
    std::smatch parts;
    const std::string rest = text.substr(equals + 1, end - equals - 1);
    const std::string field = "(?:;([^;]*))?";
    const std::string pattern =
        "(U|" + std::string(NUMBER) + ")(s|us|ms|%|B|KB|MB|TB|c)?" + field + field + field + field;
    if (!std::regex_match(rest, parts, std::regex(pattern))) refuse("no performance data", rest);
    result.value = parts[1];
    result.unit = parts[2];
    result.warning = parts[3];
    result.critical = parts[4];
    result.least = parts[5];
    result.most = parts[6];
    if (result.value == "U" && !result.unit.empty()) refuse("U has no unit", rest);
    if (!result.warning.empty()) rangeIn(result.warning);
    if (!result.critical.empty()) rangeIn(result.critical);
    for (const std::string& limit : {result.least, result.most}) {
        if (!limit.empty() && !isMatch(limit, NUMBER)) refuse("no number", rest);
    }
    place = end;
    return result;
}

}  // namespace

bool alerts(const std::string& range, double value) {
    if (range.empty()) return false;
    const Range parsed = rangeIn(range);
    const bool isWithin = value >= parsed.low && value <= parsed.high;
    return parsed.isInside == isWithin;
}

PluginOutput readPluginOutput(const std::string& output) {
    if (output.empty() || output.back() != '\n') refuse("the last line has no end", output);
    PluginOutput result;
    std::istringstream lines(output);
    std::string first;
    std::getline(lines, first);
    for (std::string line; std::getline(lines, line);) {
        if (line.find('|') != std::string::npos) refuse("performance data outside of the first line", line);
        result.details.push_back(line);
    }
    if (host::printable(output.substr(0, first.size())) != first) refuse("control characters or no UTF-8", first);
    const std::size_t bar = first.find('|');
    result.text = first.substr(0, bar == 0 || bar == std::string::npos ? bar : bar - 1);
    if (!isMatch(result.text, "SENSORS (OK|WARNING|CRITICAL|UNKNOWN): .+")) refuse("no status", result.text);
    if (bar == std::string::npos) return result;
    if (first.substr(bar - 1, 3) != " | ") refuse("no blanks around the bar", first);
    const std::string data = first.substr(bar + 2);
    if (data.find('|') != std::string::npos) refuse("a second bar", data);
    for (std::size_t place = 0; place < data.size(); ++place) {
        PerformanceValue value = valueAt(data, place);
        if (!result.dataOf.emplace(value.label, value).second) refuse("a label comes twice", value.label);
        result.data.push_back(std::move(value));
    }
    return result;
}
