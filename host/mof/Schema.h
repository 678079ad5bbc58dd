// What MOF declares: qualifiers and classes. Plain values, owned by whoever holds them.
#ifndef ZELSENSORS_MOF_SCHEMA_H
#define ZELSENSORS_MOF_SCHEMA_H

#include <cmpidt.h>

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace mof {

// CIM ignores the case of names.
struct NameLess {
    bool operator()(const std::string& left, const std::string& right) const;
};
using Names = std::set<std::string, NameLess>;

struct Literal {
    enum class Kind { Null, Boolean, Integer, Real, Text, Character, List };
    Kind kind = Kind::Null;
    bool isNegative = false;        // integers
    std::uint64_t magnitude = 0;    // integers; of a boolean 0 or 1, of a character its code
    double real = 0;                // reals
    std::string text;               // texts, in UTF-8
    std::vector<Literal> elements;  // lists, which hold no lists
};

// Whether a value may be given to something of that type. Null may always.
bool fits(const Literal& value, CMPIType type);

// Types are CMPI's: CMPI_string for a text, CMPI_ref for a reference, with CMPI_ARRAY for arrays; never CMPI_chars.
// Lines count from 1 in the file that was read.

struct Qualifier {
    std::string name;
    std::optional<Literal> value;
    std::vector<std::string> flavors;
    unsigned line = 0;
};

struct QualifierDeclaration {
    std::string name;
    CMPIType type = CMPI_null;
    std::optional<Literal> defaultValue;
    Names scopes;
    Names flavors;
    unsigned line = 0;
};

struct Element {
    std::vector<Qualifier> qualifiers;
    CMPIType type = CMPI_null;
    std::string referencedClass;  // of a reference
    std::string name;
    std::optional<std::uint64_t> arraySize;
    std::optional<Literal> defaultValue;  // of a property
    unsigned line = 0;
};
using Property = Element;
using Parameter = Element;

struct Method {
    Element result;  // with the method's name and qualifiers
    std::vector<Parameter> parameters;
};

struct Class {
    std::vector<Qualifier> qualifiers;
    std::string name;
    std::string alias;       // without the $; empty for none
    std::string superclass;  // empty for none
    std::vector<Property> properties;
    std::vector<Method> methods;
    unsigned line = 0;
};

// Null where the list has none of that name.
const Qualifier* findQualifier(const std::vector<Qualifier>& qualifiers, std::string_view name);
// Whether a boolean qualifier is there and not false.
bool isSet(const std::vector<Qualifier>& qualifiers, std::string_view name);

// A property of a class, its own or an inherited one.
struct Member {
    std::string name;
    CMPIType type;
    bool isKey;
};

class Schema {
  public:
    // False, and nothing is added, where the name is taken.
    bool add(const QualifierDeclaration& declaration);
    bool add(Class declaration);

    const std::vector<Class>& classes() const { return m_classes; }  // in the order in which they were declared
    const Class* findClass(const std::string& name) const;           // null: there is none
    const QualifierDeclaration* findQualifier(const std::string& name) const;
    bool declaresQualifiers() const { return !m_qualifiers.empty(); }
    std::size_t qualifierCount() const { return m_qualifiers.size(); }

    // All properties, those of the superclasses first; one that is declared again stands where it first came.
    std::vector<Member> membersOf(const Class& declaration) const;

  private:
    std::vector<Class> m_classes;
    std::map<std::string, std::size_t, NameLess> m_classIndex;
    std::map<std::string, QualifierDeclaration, NameLess> m_qualifiers;
};

}  // namespace mof

#endif
