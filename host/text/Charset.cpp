#include "text/Charset.h"

#include <langinfo.h>
#include <strings.h>

#include <algorithm>
#include <array>
#include <clocale>
#include <cstdlib>

#include "text/Utf8.h"

namespace host {
namespace {

bool isUtf8Name(std::string_view codeset) {
    const std::string name(codeset.substr(0, codeset.find('@')));
    return strcasecmp(name.c_str(), "UTF-8") == 0 || strcasecmp(name.c_str(), "UTF8") == 0;
}

// The first of the variables that is set and not empty, as the C library reads them.
std::string_view nameOfLocale() {
    for (const char* variable : {"LC_ALL", "LC_CTYPE", "LANG"}) {
        const char* value = std::getenv(variable);
        if (value != nullptr && *value != '\0') return value;
    }
    return "C";
}

struct Substitute {
    char32_t codePoint;
    const char* text;
};

// The signs that our own texts use: those of the units and of powers of ten.
constexpr std::array SUBSTITUTES{
    Substitute{U'\u00b0', "deg"}, Substitute{U'\u00b3', "3"}, Substitute{U'\u00b5', "u"},
    Substitute{U'\u00b7', "."},   Substitute{U'\u00d7', "x"}, Substitute{U'\u03a9', "ohm"},
};

std::string asciiOf(const Character& character, std::string_view bytes) {
    const auto* found = std::find_if(SUBSTITUTES.begin(), SUBSTITUTES.end(), [&character](const Substitute& each) {
        return each.codePoint == character.codePoint;
    });
    return character.isUtf8 && found != SUBSTITUTES.end() ? found->text : escaped(bytes);
}

}  // namespace

Charset charsetOfEnvironment() {
    const locale_t locale = newlocale(LC_CTYPE_MASK, "", nullptr);
    if (locale != nullptr) {
        const bool isUtf8 = isUtf8Name(nl_langinfo_l(CODESET, locale));
        freelocale(locale);
        return isUtf8 ? Charset::Utf8 : Charset::Ascii;
    }
    const std::string_view name = nameOfLocale();
    const std::size_t dot = name.find('.');
    const bool isUtf8 = dot != std::string_view::npos && isUtf8Name(name.substr(dot + 1));
    return isUtf8 ? Charset::Utf8 : Charset::Ascii;
}

std::string shownIn(Charset charset, std::string_view text) {
    if (charset == Charset::Utf8) return std::string(text);
    std::string result;
    while (!text.empty()) {
        const Character next = firstCharacter(text);
        const std::string_view bytes = text.substr(0, next.length);
        const bool isAscii = next.isUtf8 && next.codePoint < 0x80;
        result += isAscii ? std::string(bytes) : asciiOf(next, bytes);
        text.remove_prefix(next.length);
    }
    return result;
}

}  // namespace host
