#include "AsciiToml.h"

#include <algorithm>
#include <cstdio>

namespace {

bool isAscii(char c) {
    return static_cast<unsigned char>(c) < 0x80;
}

struct Character {
    char32_t code;
    std::string_view bytes;
};

// The first character of a text that does not begin with ASCII. No bytes: it is not UTF-8.
Character firstOf(std::string_view text) {
    struct Length {
        unsigned char mask, lead;
        std::size_t bytes;
        char32_t lowest;
    };
    constexpr Length lengths[] = {{0xE0, 0xC0, 2, 0x80}, {0xF0, 0xE0, 3, 0x800}, {0xF8, 0xF0, 4, 0x10000}};
    const auto lead = static_cast<unsigned char>(text[0]);
    for (const Length& length : lengths) {
        if ((lead & length.mask) != length.lead || text.size() < length.bytes) continue;
        char32_t code = lead & static_cast<unsigned char>(~length.mask);
        for (const char c : text.substr(1, length.bytes - 1)) {
            const auto byte = static_cast<unsigned char>(c);
            if ((byte & 0xC0) != 0x80) return {};
            code = code << 6 | (byte & 0x3FU);
        }
        const bool isSurrogate = code >= 0xD800 && code <= 0xDFFF;
        if (code < length.lowest || code > 0x10FFFF || isSurrogate) return {};
        return {code, text.substr(0, length.bytes)};
    }
    return {};
}

std::string hexadecimal(const char* prefix, int digits, unsigned number) {
    char text[16];
    std::snprintf(text, sizeof text, "%s%0*X", prefix, digits, number);
    return text;
}

// As messages show it; a control character by its number alone.
std::string inWords(const Character& character) {
    const std::string number = hexadecimal("U+", 4, character.code);
    return character.code < 0xA0 ? number : "'" + std::string(character.bytes) + "' (" + number + ")";
}

class Writer {
  public:
    explicit Writer(std::string_view toml) : m_toml(toml) {}

    std::string write() {
        constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
        if (m_toml.substr(0, byteOrderMark.size()) == byteOrderMark) m_at = byteOrderMark.size();
        while (m_at < m_toml.size()) {
            const char c = m_toml[m_at];
            if (c == '#') {
                writeComment();
            } else if (c == '"' || c == '\'') {
                writeText();
            } else if (isAscii(c)) {
                copy();
            } else {
                refuse(inWords(character()) + " stands outside of texts and comments");
            }
        }
        return std::move(m_ascii);
    }

  private:
    [[noreturn]] void refuse(const std::string& what) const {
        const auto end = m_toml.begin() + static_cast<std::ptrdiff_t>(m_at);
        throw NotToml(1 + static_cast<std::uint64_t>(std::count(m_toml.begin(), end, '\n')), what);
    }

    Character character() const {
        const Character character = firstOf(m_toml.substr(m_at));
        if (character.bytes.empty()) {
            refuse("the byte " + hexadecimal("0x", 2, static_cast<unsigned char>(m_toml[m_at])) +
                   " is not valid UTF-8");
        }
        return character;
    }

    void copy() { m_ascii += m_toml[m_at++]; }

    void writeComment() {
        while (m_at < m_toml.size() && m_toml[m_at] != '\n') {
            if (isAscii(m_toml[m_at])) {
                copy();
                continue;
            }
            m_at += character().bytes.size();
            m_ascii += '?';
        }
    }

    // Where the text that begins here ends. That one in simple quotes may not go over lines is left to the parser.
    std::size_t endOfText(std::string_view quotes) const {
        std::size_t at = m_at + quotes.size();
        while (at < m_toml.size()) {
            if (m_toml.compare(at, quotes.size(), quotes) == 0) {
                at += quotes.size();
                // A text of several lines may end in up to two quotes of its own.
                const std::size_t last = quotes.size() == 1 ? at : std::min(at + 2, m_toml.size());
                while (at < last && m_toml[at] == quotes[0]) ++at;
                return at;
            }
            at += quotes[0] == '"' && m_toml[at] == '\\' ? 2 : 1;
        }
        return m_toml.size();
    }

    void writeText() {
        const bool isLong = m_toml.compare(m_at, 3, std::string(3, m_toml[m_at])) == 0;
        const std::string_view quotes = m_toml.substr(m_at, isLong ? 3 : 1);
        const std::size_t end = endOfText(quotes);
        const std::string_view text = m_toml.substr(m_at, end - m_at);
        if (std::all_of(text.begin(), text.end(), isAscii)) {
            m_ascii += text;
            m_at = end;
        } else {
            writeWithEscapes(quotes, end);
        }
    }

    // In single quotes nothing is an escape, so such a text changes to double ones.
    void writeWithEscapes(std::string_view quotes, std::size_t end) {
        const std::string doubleQuotes(quotes.size(), '"');
        const bool isClosed =
            end - m_at >= 2 * quotes.size() && m_toml.compare(end - quotes.size(), quotes.size(), quotes) == 0;
        m_ascii += doubleQuotes;
        m_at += quotes.size();
        writeContents(quotes[0] == '\'', isClosed ? end - quotes.size() : end);
        if (isClosed) m_ascii += doubleQuotes;
        m_at = end;
    }

    void writeContents(bool isLiteral, std::size_t end) {
        bool followsBackslash = false;
        while (m_at < end) {
            const char c = m_toml[m_at];
            if (!isAscii(c)) {
                if (followsBackslash) refuse("a backslash stands before " + inWords(character()));
                writeEscape();
            } else {
                if (isLiteral && (c == '"' || c == '\\')) m_ascii += '\\';
                copy();
            }
            followsBackslash = !isLiteral && c == '\\' && !followsBackslash;
        }
    }

    void writeEscape() {
        const Character whole = character();
        m_ascii += whole.code > 0xFFFF ? hexadecimal("\\U", 8, whole.code) : hexadecimal("\\u", 4, whole.code);
        m_at += whole.bytes.size();
    }

    std::string_view m_toml;
    std::size_t m_at = 0;
    std::string m_ascii;
};

}  // namespace

std::string asciiToml(std::string_view text) {
    return Writer(text).write();
}
