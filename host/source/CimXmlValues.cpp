#include "source/CimXmlValues.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <string>
#include <system_error>
#include <vector>

#include "broker/Names.h"
#include "text/Blanks.h"
#include "text/Utf8.h"

namespace host {
namespace {

using broker::Value;

struct NamedType {
    std::string name;
    CMPIType type;
};

// Those that DSP0201 knows. Each property of each answer is looked up here.
const std::vector<NamedType>& namedTypes() {
    static const std::vector<NamedType> types = [] {
        std::vector<NamedType> all;
        for (const CMPIType type :
             {CMPI_boolean, CMPI_char16, CMPI_real32, CMPI_real64, CMPI_uint8, CMPI_uint16, CMPI_uint32, CMPI_uint64,
              CMPI_sint8, CMPI_sint16, CMPI_sint32, CMPI_sint64, CMPI_string, CMPI_dateTime}) {
            all.push_back({broker::nameOfType(type), type});
        }
        return all;
    }();
    return types;
}

constexpr std::size_t DATE_LENGTH = 25;

unsigned bitsOf(CMPIType type) {
    switch (type) {
        case CMPI_uint8:
        case CMPI_sint8:
            return 8;
        case CMPI_uint16:
        case CMPI_sint16:
            return 16;
        case CMPI_uint32:
        case CMPI_sint32:
            return 32;
        default:
            return 64;
    }
}

// All of the text, decimal or after 0x.
std::optional<std::uint64_t> magnitudeIn(std::string_view text) {
    const bool isHex = text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X');
    if (isHex) text.remove_prefix(2);
    std::uint64_t number = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), number, isHex ? 16 : 10);
    if (result.ec != std::errc() || result.ptr != text.data() + text.size()) return std::nullopt;
    return number;
}

bool takeSign(std::string_view& text) {
    const bool isNegative = !text.empty() && text.front() == '-';
    if (isNegative || (!text.empty() && text.front() == '+')) text.remove_prefix(1);
    return isNegative;
}

std::optional<Value> unsignedIn(std::string_view text, CMPIType type) {
    const bool isNegative = takeSign(text);
    const std::optional<std::uint64_t> number = magnitudeIn(text);
    const unsigned bits = bitsOf(type);
    if (!number || (isNegative && *number != 0) || (bits < 64 && *number >> bits != 0)) return std::nullopt;
    return Value::ofUnsigned(*number, type);
}

std::optional<Value> signedIn(std::string_view text, CMPIType type) {
    const bool isNegative = takeSign(text);
    const std::optional<std::uint64_t> number = magnitudeIn(text);
    const std::uint64_t most = (std::uint64_t{1} << (bitsOf(type) - 1)) - (isNegative ? 0 : 1);
    if (!number || *number > most) return std::nullopt;
    // Two's complement, which also holds the number without a positive counterpart.
    return Value::ofSigned(static_cast<std::int64_t>(isNegative ? 0 - *number : *number), type);
}

std::optional<Value> realIn(std::string_view text, CMPIType type) {
    if (!text.empty() && text.front() == '+') text.remove_prefix(1);
    double number = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
    if (result.ec != std::errc() || result.ptr != text.data() + text.size()) return std::nullopt;
    return Value::ofReal(number, type);
}

std::optional<Value> booleanIn(std::string_view text) {
    if (broker::sameName(text, "TRUE")) return Value::ofBoolean(true);
    if (broker::sameName(text, "FALSE")) return Value::ofBoolean(false);
    return std::nullopt;
}

std::optional<Value> characterIn(std::string_view text) {
    const Character first = firstCharacter(text);
    if (!first.isUtf8 || first.length != text.size() || first.codePoint > 0xffff) return std::nullopt;
    return Value::ofUnsigned(first.codePoint, CMPI_char16);
}

}  // namespace

std::optional<CMPIType> cimTypeNamed(std::string_view name) {
    const std::vector<NamedType>& types = namedTypes();
    const auto found = std::find_if(types.begin(), types.end(),
                                    [name](const NamedType& each) { return broker::sameName(each.name, name); });
    if (found == types.end()) return std::nullopt;
    return found->type;
}

std::optional<Value> cimValueIn(const std::string& text, CMPIType type) {
    if (type == CMPI_string) return Value::ofText(text);
    if (type == CMPI_char16) return characterIn(text);
    const std::string_view word = withoutBlanks(text);
    if (type == CMPI_boolean) return booleanIn(word);
    if (type == CMPI_real32 || type == CMPI_real64) return realIn(word, type);
    if (type == CMPI_dateTime) {
        if (word.size() != DATE_LENGTH) return std::nullopt;
        return Value::ofText(std::string(word), type);
    }
    return Value::null(type).isSigned() ? signedIn(word, type) : unsignedIn(word, type);
}

std::optional<Value> cimNumberIn(const std::string& text) {
    for (const CMPIType type : {CMPI_uint64, CMPI_sint64, CMPI_real64}) {
        if (std::optional<Value> value = cimValueIn(text, type)) return value;
    }
    return std::nullopt;
}

}  // namespace host
