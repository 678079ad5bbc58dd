#include "source/Http.h"

#include <algorithm>
#include <cctype>
#include <cstring>
#include <string_view>

namespace host {
namespace {

bool isSameWord(std::string_view left, std::string_view right) {
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](unsigned char l, unsigned char r) { return std::tolower(l) == std::tolower(r); });
}

}  // namespace

std::string HttpAnswer::header(const std::string& name) const {
    const auto found = std::find_if(headers.rbegin(), headers.rend(),
                                    [&name](const Header& each) { return isSameWord(each.name, name); });
    return found == headers.rend() ? "" : found->value;
}

std::string percentEncoded(const std::string& text) {
    static constexpr char digits[] = "0123456789ABCDEF";
    std::string result;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x80 && (std::isalnum(byte) != 0 || std::strchr("-._~", c) != nullptr) && byte != 0) {
            result += c;
        } else {
            result += {'%', digits[byte >> 4], digits[byte & 0x0f]};
        }
    }
    return result;
}

std::string percentDecoded(const std::string& text) {
    const auto digitOf = [](char c) {
        if (c >= '0' && c <= '9') return c - '0';
        if (c >= 'a' && c <= 'f') return c - 'a' + 10;
        if (c >= 'A' && c <= 'F') return c - 'A' + 10;
        return -1;
    };
    std::string result;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const bool isCode = text[at] == '%' && at + 2 < text.size();
        const int high = isCode ? digitOf(text[at + 1]) : -1;
        const int low = isCode ? digitOf(text[at + 2]) : -1;
        if (high < 0 || low < 0) {
            result += text[at];
        } else {
            result += static_cast<char>(high * 16 + low);
            at += 2;
        }
    }
    return result;
}

}  // namespace host
