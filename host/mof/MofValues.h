// MOF's values and lists of qualifiers. Not thread-safe.
#ifndef ZELSENSORS_MOF_MOFVALUES_H
#define ZELSENSORS_MOF_MOFVALUES_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "mof/MofLexer.h"
#include "mof/Schema.h"

namespace mof {

// The part of the grammar below the declarations: lists of qualifiers, values, and the single tokens. Each rule takes
// its tokens, and throws MofError where the next one is not what it needs.
class ValueParser {
  protected:
    // The text must outlive the parser.
    ValueParser(std::string_view text, const std::string& file);

    std::vector<Qualifier> qualifierList();
    Qualifier qualifier();
    std::vector<std::string> flavors();
    std::optional<Literal> defaultValue(CMPIType type, const std::string& name);
    Literal value();
    Literal list();
    Literal scalar();
    std::string text();

    bool isSymbol(char symbol) const;
    bool isWord(std::string_view word) const;
    bool takeSymbol(char symbol);  // whether it was there
    bool takeWord(std::string_view word);
    Token take();
    void expectSymbol(char symbol, const std::string& where);
    std::string expectName(const std::string& what);
    [[noreturn]] void failExpected(const std::string& what) const;

    Lexer m_lexer;
    Token m_token;  // the next one, not taken yet
};

}  // namespace mof

#endif
