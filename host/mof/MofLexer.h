// MOF's tokens. Not thread-safe.
#ifndef ZELSENSORS_MOF_MOFLEXER_H
#define ZELSENSORS_MOF_MOFLEXER_H

#include <cstddef>
#include <string>
#include <string_view>

#include "mof/Schema.h"

namespace mof {

struct Token {
    enum class Kind { Word, Text, Character, Number, Symbol, End };
    Kind kind = Kind::End;
    unsigned line = 1;
    std::string text;  // a word, a number or a symbol as it is written; a text without quotes and escapes, in UTF-8
    Literal literal;   // of a character or a number
};

// As an error message names what was found.
std::string described(const Token& token);

// Cuts a MOF text into words, texts, numbers and symbols, passing over blanks and comments.
class Lexer {
  public:
    // The text must outlive the lexer.
    Lexer(std::string_view text, std::string file);

    // At the end of the text a token of that kind, again and again. Throws MofError.
    Token next();

    // Throws MofError.
    [[noreturn]] void fail(unsigned line, const std::string& what) const;

  private:
    char peek(std::size_t ahead = 0) const;  // 0 beyond the end
    void advance();
    bool skipComment();
    void skipBlanksAndComments();
    Token wordToken();
    Token numberToken();
    Token textToken();
    Token characterToken();
    Token symbolToken();
    std::string quoted(char quote);
    char32_t escape();
    char32_t hexEscape();
    void appendPlain(std::string& text);

    std::string_view m_text;
    std::string m_file;
    std::size_t m_at = 0;
    unsigned m_line = 1;
};

}  // namespace mof

#endif
