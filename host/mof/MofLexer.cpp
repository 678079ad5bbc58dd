#include "mof/MofLexer.h"

#include <utility>

#include "mof/MofError.h"
#include "mof/MofNumber.h"
#include "text/Utf8.h"

namespace mof {
namespace {

constexpr std::string_view BYTE_ORDER_MARK = "\xef\xbb\xbf";
constexpr std::size_t SHOWN_COLUMNS = 40;

bool isWordStart(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
}
bool isWordPart(char c) {
    return isWordStart(c) || isDigit(c);
}
bool isBlank(char c) {
    return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '\f' || c == '\v';
}

int hexDigit(char c) {
    if (isDigit(c)) return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

std::string shown(std::string_view text) {
    const std::string cut = host::cutToColumns(text, SHOWN_COLUMNS);
    return '"' + host::printable(cut) + (cut.size() < text.size() ? "...\"" : "\"");
}

// Of the basic plane, which is what an escape can name.
void appendUtf8(std::string& text, char32_t codePoint) {
    const auto append = [&text](char32_t byte) { text += static_cast<char>(static_cast<unsigned char>(byte)); };
    if (codePoint < 0x80) {
        append(codePoint);
    } else if (codePoint < 0x800) {
        append(0xc0 | (codePoint >> 6));
        append(0x80 | (codePoint & 0x3f));
    } else {
        append(0xe0 | (codePoint >> 12));
        append(0x80 | ((codePoint >> 6) & 0x3f));
        append(0x80 | (codePoint & 0x3f));
    }
}

}  // namespace

std::string described(const Token& token) {
    switch (token.kind) {
        case Token::Kind::End:
            return "the end of the file";
        case Token::Kind::Text:
            return "the text " + shown(token.text);
        case Token::Kind::Character:
            return "the character " + shown(token.text);
        default:
            return shown(token.text);
    }
}

Lexer::Lexer(std::string_view text, std::string file) : m_text(text), m_file(std::move(file)) {
    if (text.substr(0, BYTE_ORDER_MARK.size()) == BYTE_ORDER_MARK) m_at = BYTE_ORDER_MARK.size();
}

void Lexer::fail(unsigned line, const std::string& what) const {
    throw MofError(m_file, line, what);
}

char Lexer::peek(std::size_t ahead) const {
    return ahead < m_text.size() - m_at ? m_text[m_at + ahead] : '\0';
}

void Lexer::advance() {
    if (m_text[m_at] == '\n') ++m_line;
    ++m_at;
}

bool Lexer::skipComment() {
    if (peek() != '/') return false;
    if (peek(1) == '/') {
        while (m_at < m_text.size() && peek() != '\n') advance();
        return true;
    }
    if (peek(1) != '*') return false;
    const unsigned line = m_line;
    const std::size_t end = m_text.find("*/", m_at + 2);
    if (end == std::string_view::npos) fail(line, "the comment is not closed, expected */");
    while (m_at < end + 2) advance();
    return true;
}

void Lexer::skipBlanksAndComments() {
    do {
        while (isBlank(peek())) advance();
    } while (skipComment());
}

Token Lexer::next() {
    skipBlanksAndComments();
    if (m_at == m_text.size()) return {Token::Kind::End, m_line, "", {}};
    const char first = peek();
    if (isWordStart(first)) return wordToken();
    if (first == '"') return textToken();
    if (first == '\'') return characterToken();
    const char afterSign = first == '+' || first == '-' ? peek(1) : first;
    if (isDigit(afterSign) || afterSign == '.') return numberToken();
    return symbolToken();
}

Token Lexer::wordToken() {
    const std::size_t start = m_at;
    while (isWordPart(peek())) advance();
    return {Token::Kind::Word, m_line, std::string(m_text.substr(start, m_at - start)), {}};
}

// Everything up to the next blank or symbol, so that "12abc" is a wrong number and not a number and a word.
Token Lexer::numberToken() {
    const std::size_t start = m_at;
    advance();
    while (isWordPart(peek()) || peek() == '.' ||
           ((peek() == '+' || peek() == '-') && (m_text[m_at - 1] == 'e' || m_text[m_at - 1] == 'E'))) {
        advance();
    }
    const std::string_view text = m_text.substr(start, m_at - start);
    const std::optional<Literal> literal = numberIn(text);
    if (!literal) fail(m_line, shown(text) + " is no number, or too large a one");
    return {Token::Kind::Number, m_line, std::string(text), *literal};
}

Token Lexer::textToken() {
    const unsigned line = m_line;
    return {Token::Kind::Text, line, quoted('"'), {}};
}

Token Lexer::characterToken() {
    const unsigned line = m_line;
    const std::string text = quoted('\'');
    const host::Character character = host::firstCharacter(text);
    if (text.empty() || character.length != text.size()) fail(line, "expected one character between single quotes");
    if (character.codePoint > 0xffff) fail(line, "the character is beyond the 16 bits of a char16");
    Literal literal;
    literal.kind = Literal::Kind::Character;
    literal.magnitude = character.codePoint;
    return {Token::Kind::Character, line, text, literal};
}

Token Lexer::symbolToken() {
    static constexpr std::string_view symbols = "()[]{},;:=$#";
    const host::Character character = host::firstCharacter(m_text.substr(m_at));
    const std::string_view text = m_text.substr(m_at, character.length);
    if (symbols.find(peek()) == std::string_view::npos) fail(m_line, shown(text) + " has no meaning here");
    advance();
    return {Token::Kind::Symbol, m_line, std::string(text), {}};
}

std::string Lexer::quoted(char quote) {
    advance();
    std::string text;
    while (peek() != quote || m_at == m_text.size()) {
        if (m_at == m_text.size() || peek() == '\n') {
            fail(m_line, std::string("the text is not closed on its line, expected ") + quote);
        }
        if (peek() == '\\') {
            appendUtf8(text, escape());
        } else {
            appendPlain(text);
        }
    }
    advance();
    return text;
}

void Lexer::appendPlain(std::string& text) {
    const host::Character character = host::firstCharacter(m_text.substr(m_at));
    const std::string_view bytes = m_text.substr(m_at, character.length);
    if (!character.isUtf8) fail(m_line, "the text is not valid UTF-8: " + host::printable(bytes));
    const bool isAllowed = character.codePoint == U'\t' || !host::isControl(character.codePoint);
    if (!isAllowed) fail(m_line, "a control character in the text: " + host::printable(bytes));
    text += bytes;
    m_at += character.length;
}

char32_t Lexer::escape() {
    static constexpr std::string_view letters = "btnfr\"'\\";
    static constexpr std::string_view meanings = "\b\t\n\f\r\"'\\";
    advance();
    const char letter = peek();
    if (letter == 'x' || letter == 'X') return hexEscape();
    const std::size_t which = letters.find(letter);
    if (which == std::string_view::npos) {
        fail(m_line, "an unknown escape in the text, expected one of \\b \\t \\n \\f \\r \\\" \\' \\\\ \\x");
    }
    advance();
    return static_cast<unsigned char>(meanings[which]);
}

char32_t Lexer::hexEscape() {
    advance();
    char32_t codePoint = 0;
    int digits = 0;
    for (int digit = hexDigit(peek()); digit >= 0 && digits < 4; digit = hexDigit(peek()), ++digits) {
        codePoint = codePoint * 16 + static_cast<char32_t>(digit);
        advance();
    }
    if (digits == 0) fail(m_line, "expected one to four hexadecimal digits after \\x");
    const bool isSurrogate = codePoint >= 0xd800 && codePoint < 0xe000;
    if (codePoint == 0 || isSurrogate) fail(m_line, "the escape \\x names no character");
    return codePoint;
}

}  // namespace mof
