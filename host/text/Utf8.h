// Text of unknown origin, read as UTF-8.
#ifndef ZELSENSORS_TEXT_UTF8_H
#define ZELSENSORS_TEXT_UTF8_H

#include <cstddef>
#include <string>
#include <string_view>

namespace host {

struct Character {
    char32_t codePoint = 0;  // the byte itself when it is not valid UTF-8
    std::size_t length = 0;  // in bytes; 1 when it is not valid UTF-8, 0 only for an empty text
    bool isUtf8 = false;
};

// The first character of a text. Overlong forms, surrogates and what is cut off are not valid UTF-8.
Character firstCharacter(std::string_view text);

// C0, DEL and C1.
bool isControl(char32_t codePoint);

// The character in UTF-8; a surrogate, which is no character, in three bytes that are no UTF-8.
std::string utf8Of(char32_t codePoint);

// Whether the text is UTF-8 made of characters that XML can carry: controls cannot, except tab, line feed and carriage
// return.
bool isFitForXml(std::string_view text);

// Each byte as \xNN.
std::string escaped(std::string_view bytes);

// The text as it may go to a terminal: each byte of a control character, and each byte that is not valid UTF-8, as
// \xNN.
std::string printable(std::string_view text);

// Columns on a terminal, each character counted as one.
std::size_t columnsOf(std::string_view text);
// The beginning of the text that takes no more columns than that.
std::string cutToColumns(std::string_view text, std::size_t columns);

}  // namespace host

#endif
