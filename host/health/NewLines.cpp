#include "health/NewLines.h"

#include <algorithm>

namespace host {
namespace {

using Lines = std::vector<std::string>;

std::size_t commonBeginning(const Lines& before, const Lines& now) {
    const std::size_t most = std::min(before.size(), now.size());
    const auto middle = before.begin() + static_cast<std::ptrdiff_t>(most);
    return static_cast<std::size_t>(std::mismatch(before.begin(), middle, now.begin()).first - before.begin());
}

// For each beginning of the lines the length of the longest shorter beginning that also ends it: the search for an
// overlap falls back to it, and so takes each line once (Knuth, Morris and Pratt).
std::vector<std::size_t> fallbacksOf(const Lines& lines) {
    std::vector<std::size_t> fallbacks(lines.size(), 0);
    std::size_t length = 0;
    for (std::size_t i = 1; i < lines.size(); ++i) {
        while (length > 0 && lines[i] != lines[length]) length = fallbacks[length - 1];
        if (lines[i] == lines[length]) ++length;
        fallbacks[i] = length;
    }
    return fallbacks;
}

// How many lines at the end of `before` begin `now`.
std::size_t overlap(const Lines& before, const Lines& now) {
    if (now.empty()) return 0;
    const std::vector<std::size_t> fallbacks = fallbacksOf(now);
    std::size_t length = 0;
    for (const std::string& line : before) {
        if (length == now.size()) length = fallbacks[length - 1];
        while (length > 0 && line != now[length]) length = fallbacks[length - 1];
        if (line == now[length]) ++length;
    }
    return length;
}

}  // namespace

std::size_t firstNewLine(const std::vector<std::string>& before, const std::vector<std::string>& now) {
    const std::size_t common = commonBeginning(before, now);
    if (common == before.size()) return common;
    const std::size_t overlapping = overlap(before, now);
    return overlapping > 0 ? overlapping : common;
}

}  // namespace host
