#include "mof/MofValues.h"

#include <utility>

#include "broker/Names.h"
#include "mof/MofCheck.h"

namespace mof {

ValueParser::ValueParser(std::string_view text, const std::string& file)
    : m_lexer(text, file), m_token(m_lexer.next()) {}

std::vector<Qualifier> ValueParser::qualifierList() {
    std::vector<Qualifier> qualifiers;
    if (!takeSymbol('[')) return qualifiers;
    Names names;
    do {
        qualifiers.push_back(qualifier());
        const Qualifier& last = qualifiers.back();
        if (!names.insert(last.name).second) m_lexer.fail(last.line, "the qualifier " + last.name + " is given twice");
    } while (takeSymbol(','));
    expectSymbol(']', "or a comma after the qualifier");
    return qualifiers;
}

Qualifier ValueParser::qualifier() {
    Qualifier qualifier;
    qualifier.line = m_token.line;
    qualifier.name = expectName("a qualifier's name");
    if (takeSymbol('(')) {
        qualifier.value = scalar();
        expectSymbol(')', "after the qualifier's value");
    } else if (isSymbol('{')) {
        qualifier.value = list();
    }
    if (takeSymbol(':')) qualifier.flavors = flavors();
    return qualifier;
}

std::vector<std::string> ValueParser::flavors() {
    std::vector<std::string> flavors;
    do {
        const bool isFlavor = m_token.kind == Token::Kind::Word && flavorWords().count(m_token.text) != 0;
        if (!isFlavor) failExpected("a flavor such as DisableOverride");
        flavors.push_back(take().text);
    } while (m_token.kind == Token::Kind::Word);
    return flavors;
}

std::optional<Literal> ValueParser::defaultValue(CMPIType type, const std::string& name) {
    const unsigned line = m_token.line;
    if (!takeSymbol('=')) return std::nullopt;
    Literal literal = value();
    if (!fits(literal, type)) {
        m_lexer.fail(line, "the value of " + name + " does not fit its type " + broker::nameOfType(type));
    }
    return literal;
}

Literal ValueParser::value() {
    return isSymbol('{') ? list() : scalar();
}

Literal ValueParser::list() {
    Literal list;
    list.kind = Literal::Kind::List;
    take();
    while (!isSymbol('}')) {
        list.elements.push_back(scalar());
        if (!takeSymbol(',')) break;
        if (isSymbol('}')) failExpected("another value");
    }
    expectSymbol('}', "or a comma after the value");
    return list;
}

Literal ValueParser::scalar() {
    Literal literal;
    if (m_token.kind == Token::Kind::Number || m_token.kind == Token::Kind::Character) return take().literal;
    if (m_token.kind == Token::Kind::Text) {
        literal.kind = Literal::Kind::Text;
        literal.text = text();
        return literal;
    }
    if (takeWord("null")) return literal;
    literal.kind = Literal::Kind::Boolean;
    literal.magnitude = isWord("true") ? 1 : 0;
    if (!takeWord("true") && !takeWord("false")) failExpected("a value");
    return literal;
}

std::string ValueParser::text() {
    if (m_token.kind != Token::Kind::Text) failExpected("a text in double quotes");
    std::string text;
    while (m_token.kind == Token::Kind::Text) text += take().text;
    return text;
}

bool ValueParser::isSymbol(char symbol) const {
    return m_token.kind == Token::Kind::Symbol && m_token.text[0] == symbol;
}

bool ValueParser::isWord(std::string_view word) const {
    return m_token.kind == Token::Kind::Word && broker::sameName(m_token.text, word);
}

bool ValueParser::takeSymbol(char symbol) {
    if (!isSymbol(symbol)) return false;
    take();
    return true;
}

bool ValueParser::takeWord(std::string_view word) {
    if (!isWord(word)) return false;
    take();
    return true;
}

Token ValueParser::take() {
    return std::exchange(m_token, m_lexer.next());
}

void ValueParser::expectSymbol(char symbol, const std::string& where) {
    if (!takeSymbol(symbol)) failExpected(std::string("\"") + symbol + (where.empty() ? "\"" : "\" " + where));
}

std::string ValueParser::expectName(const std::string& what) {
    if (m_token.kind != Token::Kind::Word) failExpected(what);
    return take().text;
}

void ValueParser::failExpected(const std::string& what) const {
    m_lexer.fail(m_token.line, "expected " + what + ", found " + described(m_token));
}

}  // namespace mof
