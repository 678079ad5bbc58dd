#include "mof/MofNumber.h"

#include <algorithm>
#include <charconv>
#include <string>
#include <system_error>

namespace mof {

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

namespace {

std::optional<Literal> integerIn(std::string_view digits, int base, bool isNegative) {
    Literal literal;
    literal.kind = Literal::Kind::Integer;
    literal.isNegative = isNegative;
    const char* end = digits.data() + digits.size();
    const auto [stop, error] = std::from_chars(digits.data(), end, literal.magnitude, base);
    if (error != std::errc() || stop != end) return std::nullopt;
    return literal;
}

// Digits, a point with digits behind it, and perhaps an exponent.
std::optional<Literal> realIn(std::string_view digits, bool isNegative) {
    const std::size_t point = digits.find('.');
    if (point + 1 >= digits.size() || !isDigit(digits[point + 1])) return std::nullopt;
    if (!std::all_of(digits.begin(), digits.begin() + static_cast<std::ptrdiff_t>(point), isDigit)) return std::nullopt;
    const std::string text = '0' + std::string(digits);
    Literal literal;
    literal.kind = Literal::Kind::Real;
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, literal.real);
    if (error != std::errc() || stop != end) return std::nullopt;
    if (isNegative) literal.real = -literal.real;
    return literal;
}

}  // namespace

std::optional<Literal> numberIn(std::string_view text) {
    const bool hasSign = !text.empty() && (text[0] == '-' || text[0] == '+');
    const bool isNegative = hasSign && text[0] == '-';
    if (hasSign) text.remove_prefix(1);
    if (text.find('.') != std::string_view::npos) return realIn(text, isNegative);
    if (text.empty() || !isDigit(text[0])) return std::nullopt;
    const bool hasMore = text.size() > 1;
    if (hasMore && text[0] == '0' && (text[1] == 'x' || text[1] == 'X')) {
        return integerIn(text.substr(2), 16, isNegative);
    }
    if (hasMore && (text.back() == 'b' || text.back() == 'B')) {
        return integerIn(text.substr(0, text.size() - 1), 2, isNegative);
    }
    return integerIn(text, hasMore && text[0] == '0' ? 8 : 10, isNegative);
}

}  // namespace mof
