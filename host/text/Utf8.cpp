#include "text/Utf8.h"

#include <algorithm>
#include <cstdint>

namespace host {
namespace {

unsigned byteAt(std::string_view text, std::size_t index) {
    return static_cast<unsigned char>(text[index]);
}

// What the first byte of a sequence says.
struct Lead {
    std::size_t length;
    char32_t bits;
    char32_t smallest;  // code point that needs this length
};

Lead leadOf(unsigned byte) {
    if (byte < 0x80) return {1, byte, 0};
    if (byte >= 0xc0 && byte < 0xe0) return {2, byte & 0x1f, 0x80};
    if (byte >= 0xe0 && byte < 0xf0) return {3, byte & 0x0f, 0x800};
    if (byte >= 0xf0 && byte < 0xf8) return {4, byte & 0x07, 0x10000};
    return {0, 0, 0};
}

}  // namespace

Character firstCharacter(std::string_view text) {
    if (text.empty()) return {};
    const Character none{byteAt(text, 0), 1, false};
    const Lead lead = leadOf(byteAt(text, 0));
    if (lead.length == 0 || lead.length > text.size()) return none;
    char32_t codePoint = lead.bits;
    for (std::size_t i = 1; i < lead.length; ++i) {
        const unsigned byte = byteAt(text, i);
        if ((byte & 0xc0) != 0x80) return none;
        codePoint = (codePoint << 6) | (byte & 0x3f);
    }
    const bool isSurrogate = codePoint >= 0xd800 && codePoint < 0xe000;
    if (codePoint < lead.smallest || codePoint > 0x10ffff || isSurrogate) return none;
    return {codePoint, lead.length, true};
}

bool isControl(char32_t codePoint) {
    return codePoint < 0x20 || (codePoint >= 0x7f && codePoint < 0xa0);
}

std::string utf8Of(char32_t codePoint) {
    const auto byteOf = [](char32_t bits) { return static_cast<char>(static_cast<unsigned char>(bits)); };
    const auto tailOf = [&](unsigned shift) { return byteOf(0x80 | ((codePoint >> shift) & 0x3f)); };
    if (codePoint < 0x80) return {byteOf(codePoint)};
    if (codePoint < 0x800) return {byteOf(0xc0 | (codePoint >> 6)), tailOf(0)};
    if (codePoint < 0x10000) return {byteOf(0xe0 | (codePoint >> 12)), tailOf(6), tailOf(0)};
    return {byteOf(0xf0 | (codePoint >> 18)), tailOf(12), tailOf(6), tailOf(0)};
}

bool isFitForXml(std::string_view text) {
    const auto isPlain = [](char c) { return c >= ' ' && c <= '~'; };
    while (!text.empty()) {
        // Nearly all texts end here.
        const auto* const other = std::find_if_not(text.begin(), text.end(), isPlain);
        text.remove_prefix(static_cast<std::size_t>(other - text.begin()));
        if (text.empty()) return true;
        const Character next = firstCharacter(text);
        const char32_t code = next.codePoint;
        const bool isPermittedControl = code == U'\t' || code == U'\n' || code == U'\r';
        const bool isOutsideXml = (code < 0x20 && !isPermittedControl) || code == 0xfffe || code == 0xffff;
        if (!next.isUtf8 || isOutsideXml) return false;
        text.remove_prefix(next.length);
    }
    return true;
}

std::string escaped(std::string_view bytes) {
    static constexpr char digits[] = "0123456789abcdef";
    std::string result;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        const unsigned byte = byteAt(bytes, i);
        result += "\\x";
        result += digits[byte >> 4];
        result += digits[byte & 0x0f];
    }
    return result;
}

std::string printable(std::string_view text) {
    std::string result;
    while (!text.empty()) {
        const Character next = firstCharacter(text);
        const std::string_view bytes = text.substr(0, next.length);
        if (!next.isUtf8 || isControl(next.codePoint)) {
            result += escaped(bytes);
        } else {
            result += bytes;
        }
        text.remove_prefix(next.length);
    }
    return result;
}

std::size_t columnsOf(std::string_view text) {
    std::size_t columns = 0;
    for (; !text.empty(); ++columns) text.remove_prefix(firstCharacter(text).length);
    return columns;
}

std::string cutToColumns(std::string_view text, std::size_t columns) {
    std::size_t end = 0;
    for (; columns > 0 && end < text.size(); --columns) end += firstCharacter(text.substr(end)).length;
    return std::string(text.substr(0, end));
}

}  // namespace host
