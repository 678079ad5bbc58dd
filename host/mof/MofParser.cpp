#include "mof/MofParser.h"

#include <algorithm>
#include <utility>

#include "broker/Names.h"
#include "mof/MofCheck.h"

namespace mof {
namespace {

struct TypeWord {
    const char* word;
    CMPIType type;
};
constexpr TypeWord TYPE_WORDS[] = {
    {"boolean", CMPI_boolean}, {"string", CMPI_string},     {"char16", CMPI_char16}, {"uint8", CMPI_uint8},
    {"sint8", CMPI_sint8},     {"uint16", CMPI_uint16},     {"sint16", CMPI_sint16}, {"uint32", CMPI_uint32},
    {"sint32", CMPI_sint32},   {"uint64", CMPI_uint64},     {"sint64", CMPI_sint64}, {"real32", CMPI_real32},
    {"real64", CMPI_real64},   {"datetime", CMPI_dateTime},
};

const Names SCOPES{"class",     "association", "indication", "qualifier", "property",
                   "reference", "method",      "parameter",  "schema",    "any"};

}  // namespace

Parser::Parser(std::string_view text, const std::string& file, Schema& schema)
    : ValueParser(text, file), m_schema(schema) {}

void Parser::parse() {
    while (m_token.kind != Token::Kind::End) declaration();
}

void Parser::declaration() {
    if (isSymbol('#')) return pragma();
    if (isWord("qualifier")) return qualifierDeclaration();
    std::vector<Qualifier> qualifiers = qualifierList();
    if (isWord("class")) return classDeclaration(std::move(qualifiers));
    if (isWord("instance")) {
        m_lexer.fail(m_token.line, "an instance declaration, expected classes and qualifiers only");
    }
    failExpected(qualifiers.empty() ? "a class or qualifier declaration" : "class");
}

void Parser::pragma() {
    take();
    if (!takeWord("pragma")) failExpected("pragma after #");
    if (isWord("include")) m_lexer.fail(m_token.line, "#pragma include is not followed, read that file by itself");
    expectName("the pragma's name");
    expectSymbol('(', "after the pragma's name");
    text();
    expectSymbol(')', "after the pragma's text");
}

void Parser::qualifierDeclaration() {
    QualifierDeclaration declaration;
    declaration.line = take().line;
    declaration.name = expectName("the qualifier's name");
    expectSymbol(':', "after the qualifier's name");
    Element type;
    elementType(type);
    if (type.type == CMPI_ref) m_lexer.fail(declaration.line, "a qualifier cannot be a reference");
    array(type);
    declaration.type = type.type;
    declaration.defaultValue = defaultValue(type.type, declaration.name);
    expectSymbol(',', "and the qualifier's scope");
    if (!takeWord("scope")) failExpected("scope");
    declaration.scopes = parenthesised(SCOPES, "a scope such as property or any");
    if (takeSymbol(',')) {
        if (!takeWord("flavor")) failExpected("flavor");
        declaration.flavors = parenthesised(flavorWords(), "a flavor such as DisableOverride");
    }
    expectSymbol(';', "after the qualifier declaration");
    if (!m_schema.add(declaration)) {
        m_lexer.fail(declaration.line, "the qualifier " + declaration.name + " is declared twice");
    }
}

Names Parser::parenthesised(const Names& known, const char* expected) {
    Names words;
    expectSymbol('(', "");
    do {
        if (m_token.kind != Token::Kind::Word || known.count(m_token.text) == 0) failExpected(expected);
        words.insert(take().text);
    } while (takeSymbol(','));
    expectSymbol(')', "or a comma");
    return words;
}

void Parser::classDeclaration(std::vector<Qualifier> qualifiers) {
    Class declaration;
    declaration.qualifiers = std::move(qualifiers);
    declaration.line = take().line;
    declaration.name = expectName("the class's name");
    if (takeWord("as")) {
        expectSymbol('$', "before the alias");
        declaration.alias = expectName("the alias");
    }
    if (takeSymbol(':')) declaration.superclass = expectName("the superclass's name");
    expectSymbol('{', "before the class's properties");
    Names properties;
    Names methods;
    while (!isSymbol('}')) feature(declaration, properties, methods);
    take();
    expectSymbol(';', "after the class");
    const Checker checker(m_lexer, m_schema);
    checker.check(declaration);
    const unsigned line = declaration.line;
    const std::string name = declaration.name;
    if (!m_schema.add(std::move(declaration))) m_lexer.fail(line, "the class " + name + " is declared twice");
}

void Parser::feature(Class& declaration, Names& properties, Names& methods) {
    Element declared = element();
    Names& names = isSymbol('(') ? methods : properties;
    if (!names.insert(declared.name).second) m_lexer.fail(declared.line, declared.name + " is declared twice");
    if (isSymbol('(')) {
        method(declaration, std::move(declared));
    } else {
        property(declaration, std::move(declared));
    }
    expectSymbol(';', "after the declaration");
}

void Parser::property(Class& declaration, Element element) {
    array(element);
    element.defaultValue = defaultValue(element.type, element.name);
    if (element.type == (CMPI_ref | CMPI_ARRAY)) {
        m_lexer.fail(element.line, element.name + " is an array of references, which no property can be");
    }
    declaration.properties.push_back(std::move(element));
}

void Parser::method(Class& declaration, Element result) {
    if (result.type == CMPI_ref) m_lexer.fail(result.line, "the method " + result.name + " returns a reference");
    Method method;
    method.result = std::move(result);
    take();
    Names names;
    while (!isSymbol(')')) {
        method.parameters.push_back(parameter());
        const Parameter& last = method.parameters.back();
        if (!names.insert(last.name).second) m_lexer.fail(last.line, last.name + " is declared twice");
        if (!takeSymbol(',')) break;
        if (isSymbol(')')) failExpected("another parameter");
    }
    expectSymbol(')', "or a comma");
    declaration.methods.push_back(std::move(method));
}

Parameter Parser::parameter() {
    Parameter parameter = element();
    array(parameter);
    return parameter;
}

// Qualifiers, type and name, as properties, methods and parameters begin.
Element Parser::element() {
    Element element;
    element.qualifiers = qualifierList();
    elementType(element);
    element.line = m_token.line;
    element.name = expectName("a name after the type");
    return element;
}

void Parser::elementType(Element& element) {
    const Token word = m_token;
    expectName("a type");
    const auto* found = std::find_if(std::begin(TYPE_WORDS), std::end(TYPE_WORDS),
                                     [&word](const TypeWord& each) { return broker::sameName(each.word, word.text); });
    if (found != std::end(TYPE_WORDS)) {
        element.type = found->type;
    } else if (takeWord("ref")) {
        element.type = CMPI_ref;
        element.referencedClass = word.text;
    } else {
        m_lexer.fail(word.line, described(word) + " is no type, expected a CIM type, or a class and ref");
    }
}

void Parser::array(Element& element) {
    if (!takeSymbol('[')) return;
    element.type = static_cast<CMPIType>(element.type | CMPI_ARRAY);
    if (m_token.kind == Token::Kind::Number) {
        const Literal& size = m_token.literal;
        const bool isSize = size.kind == Literal::Kind::Integer && !size.isNegative && size.magnitude > 0;
        if (!isSize) failExpected("a number of elements");
        element.arraySize = take().literal.magnitude;
    }
    expectSymbol(']', "after the array's size");
}

}  // namespace mof
