#ifndef ZELSENSORS_MOF_MOFPARSER_H
#define ZELSENSORS_MOF_MOFPARSER_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "mof/MofLexer.h"
#include "mof/Schema.h"

namespace mof {

// Descends through the grammar with one token of foresight. No rule calls itself.
class Parser {
  public:
    // Text and schema must outlive the parser.
    Parser(std::string_view text, const std::string& file, Schema& schema);

    // Adds all declarations to the schema. Throws MofError.
    void parse();

  private:
    void declaration();
    void pragma();
    void qualifierDeclaration();
    Names parenthesised(const Names& known, const char* expected);
    void classDeclaration(std::vector<Qualifier> qualifiers);
    void feature(Class& declaration, Names& properties, Names& methods);
    void property(Class& declaration, Element element);
    void method(Class& declaration, Element result);
    Parameter parameter();
    Element element();
    void elementType(Element& element);
    void array(Element& element);

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
    Schema& m_schema;
    Token m_token;
};

}  // namespace mof

#endif
