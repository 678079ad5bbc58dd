#include "format/PerformanceData.h"

#include <algorithm>
#include <limits>
#include <string_view>

#include "health/Decimal.h"
#include "text/Utf8.h"

namespace host {
namespace {

bool isInWord(char c) {
    const bool isLetter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
    return isLetter || (c >= '0' && c <= '9') || c == '_' || c == '-' || c == '.';
}

bool isDecimal(const Sensor& sensor) {
    return sensor.modifier >= -LARGEST_SHIFT && sensor.modifier <= LARGEST_SHIFT;
}

std::string decimal(const Sensor& sensor, Number number) {
    return number && isDecimal(sensor) ? sensor.scaled(number) : "";
}

std::string unitOf(const Sensor& sensor) {
    if (sensor.unit == "s" || sensor.unit == "%") return sensor.unit;
    return sensor.unit == "bytes" ? "B" : "";
}

// The last reading that is not past the limit; readings are whole numbers of the sensor's units.
Number lastInside(const Sensor& sensor, Number limit, bool isHigh) {
    if (!limit || !sensor.countsThresholdItself()) return limit;
    const std::int64_t end =
        isHigh ? std::numeric_limits<std::int64_t>::min() : std::numeric_limits<std::int64_t>::max();
    return *limit == end ? std::nullopt : Number(isHigh ? *limit - 1 : *limit + 1);
}

}  // namespace

std::string performanceLabel(const std::string& name) {
    std::string text = name.empty() ? "(no name)" : printable(name);
    if (std::all_of(text.begin(), text.end(), isInWord)) return text;
    std::string label = "'";
    for (const char c : text) {
        const bool isForbidden = c == '\'' || c == '"' || c == '=' || c == '|';
        label += isForbidden ? escaped(std::string_view(&c, 1)) : std::string(1, c);
    }
    return label + '\'';
}

std::string performanceRange(const Sensor& sensor, const PerformanceLimits& limits) {
    const Number low = lastInside(sensor, limits.low, false);
    const Number high = lastInside(sensor, limits.high, true);
    if ((!low && !high) || (low && high && *low > *high) || !isDecimal(sensor)) return "";
    return (low ? decimal(sensor, low) : "~") + ':' + decimal(sensor, high);
}

std::string performanceData(const Sensor& sensor, const PerformanceLimits& warning, const PerformanceLimits& critical) {
    const std::string value = decimal(sensor, sensor.reading);
    std::string text = performanceLabel(sensor.name) + '=' + (value.empty() ? "U" : value + unitOf(sensor)) + ';' +
                       performanceRange(sensor, warning) + ';' + performanceRange(sensor, critical) + ';' +
                       decimal(sensor, sensor.minReadable) + ';' + decimal(sensor, sensor.maxReadable);
    text.erase(text.find_last_not_of(';') + 1);
    return text;
}

}  // namespace host
