#include "mof/MofCheck.h"

#include <algorithm>

#include "broker/Names.h"

namespace mof {
namespace {

// A qualifier for classes may stand at an association or indication too, since these are classes.
Names scopesOf(const Class& declaration) {
    Names scopes{"class"};
    for (const char* kind : {"association", "indication"}) {
        if (isSet(declaration.qualifiers, kind)) scopes.insert(kind);
    }
    return scopes;
}

bool isAllowed(const Names& declared, const Names& here) {
    return declared.count("any") != 0 ||
           std::any_of(here.begin(), here.end(), [&](const std::string& scope) { return declared.count(scope) != 0; });
}

// Without a value a boolean is true, and another qualifier has its default.
bool valueFits(const Qualifier& qualifier, CMPIType type) {
    return !qualifier.value || fits(*qualifier.value, type);
}

}  // namespace

const Names& flavorWords() {
    static const Names words{"EnableOverride", "DisableOverride", "Restricted",
                             "ToSubclass",     "ToInstance",      "Translatable"};
    return words;
}

void Checker::check(const Class& declaration) const {
    if (!declaration.superclass.empty() && m_schema.findClass(declaration.superclass) == nullptr) {
        m_lexer.fail(declaration.line, "the superclass " + declaration.superclass + " is not declared before");
    }
    if (!m_schema.declaresQualifiers()) return;
    check(declaration.qualifiers, scopesOf(declaration));
    for (const Property& property : declaration.properties) check(property);
    for (const Method& method : declaration.methods) check(method);
}

void Checker::check(const Element& element) const {
    check(element.qualifiers, element.type == CMPI_ref ? Names{"reference"} : Names{"property"});
}

void Checker::check(const Method& method) const {
    check(method.result.qualifiers, {"method"});
    for (const Parameter& parameter : method.parameters) check(parameter.qualifiers, {"parameter"});
}

void Checker::check(const std::vector<Qualifier>& qualifiers, const Names& scopes) const {
    for (const Qualifier& qualifier : qualifiers) {
        const std::string name = "the qualifier " + qualifier.name;
        const QualifierDeclaration* declaration = m_schema.findQualifier(qualifier.name);
        if (declaration == nullptr) m_lexer.fail(qualifier.line, name + " is not declared");
        if (!valueFits(qualifier, declaration->type)) {
            m_lexer.fail(qualifier.line,
                         "the value of " + name + " does not fit its type " + broker::nameOfType(declaration->type));
        }
        if (!isAllowed(declaration->scopes, scopes)) {
            m_lexer.fail(qualifier.line, name + " is outside its scope at a declaration of kind " + *scopes.begin());
        }
    }
}

}  // namespace mof
