#include "health/SensorNames.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <optional>

#include "broker/Names.h"
#include "text/Utf8.h"

namespace host {
namespace {

using broker::lowered;

constexpr std::size_t HANDLE_DIGITS = 8;
constexpr int HEXADECIMAL = 16;

std::optional<std::uint32_t> handleIn(std::string_view digits) {
    std::uint32_t handle = 0;
    const char* end = digits.data() + digits.size();
    const auto result = std::from_chars(digits.data(), end, handle, HEXADECIMAL);
    if (result.ec != std::errc() || result.ptr != end) return std::nullopt;
    return handle;
}

// The digits between the brackets at a name's end; empty where there are none.
std::string_view handleDigitsOf(std::string_view name) {
    if (name.size() < HANDLE_DIGITS + 2 || name.back() != ')') return {};
    const std::string_view digits = name.substr(name.size() - HANDLE_DIGITS - 1, HANDLE_DIGITS);
    const bool isHandle = name[name.size() - HANDLE_DIGITS - 2] == '(' && handleIn(digits).has_value();
    return isHandle ? digits : std::string_view{};
}

// The handle that a word gives; none where it is no handle.
std::optional<std::uint32_t> handleMeantBy(std::string_view word) {
    const bool isNumber = word.size() > 2 && word.substr(0, 2) == "0x";
    if (isNumber) return handleIn(word.substr(2));
    return word.size() == HANDLE_DIGITS ? handleIn(word) : std::nullopt;
}

std::size_t firstLength(std::string_view text) {
    return firstCharacter(text).length;
}

// Whether the pattern fits all of the text: on a mismatch the last * takes one character more.
bool fits(std::string_view pattern, std::string_view text) {
    std::optional<std::string_view> afterStar;
    std::string_view textAtStar;
    while (!text.empty()) {
        if (!pattern.empty() && pattern.front() == '*') {
            pattern.remove_prefix(1);
            afterStar = pattern;
            textAtStar = text;
        } else if (!pattern.empty() && pattern.front() == '?') {
            pattern.remove_prefix(1);
            text.remove_prefix(firstLength(text));
        } else if (!pattern.empty() && pattern.front() == text.front()) {
            pattern.remove_prefix(1);
            text.remove_prefix(1);
        } else if (afterStar) {
            textAtStar.remove_prefix(firstLength(textAtStar));
            text = textAtStar;
            pattern = *afterStar;
        } else {
            return false;
        }
    }
    return pattern.find_first_not_of('*') == std::string_view::npos;
}

template <typename Rule>
std::vector<std::size_t> placesWhere(const std::vector<std::string>& names, const Rule& rule) {
    std::vector<std::size_t> places;
    for (std::size_t i = 0; i < names.size(); ++i) {
        if (rule(names[i])) places.push_back(i);
    }
    return places;
}

}  // namespace

std::vector<std::string> namesIn(const std::vector<broker::ObjectPath>& paths) {
    std::vector<std::string> names;
    names.reserve(paths.size());
    for (const broker::ObjectPath& path : paths) {
        const broker::Value* name = path.findKey("Name");
        names.push_back(name == nullptr ? "" : name->text);
    }
    return names;
}

std::string labelOf(const std::string& name) {
    return handleDigitsOf(name).empty() ? name : name.substr(0, name.size() - HANDLE_DIGITS - 2);
}

NameMatch namesMeantBy(const std::string& word, const std::vector<std::string>& names) {
    std::vector<std::size_t> places = placesWhere(names, [&](const std::string& name) { return name == word; });
    if (!places.empty()) return {places};
    const std::string meant = lowered(word);
    if (meant.find_first_of("*?") != std::string::npos) {
        return {placesWhere(names, [&](const std::string& name) {
            return fits(meant, lowered(name)) || fits(meant, lowered(labelOf(name)));
        })};
    }
    const std::optional<std::uint32_t> handle = handleMeantBy(meant);
    places = placesWhere(names, [&](const std::string& name) {
        if (lowered(name) == meant || lowered(labelOf(name)) == meant) return true;
        const std::string_view digits = handleDigitsOf(name);
        return handle && !digits.empty() && handleIn(digits) == handle;
    });
    if (!places.empty()) return {places};
    places = placesWhere(names, [&](const std::string& name) { return lowered(name).rfind(meant, 0) == 0; });
    return {places, places.size() > 1};
}

}  // namespace host
