#include "mof/Schema.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "broker/Names.h"

namespace mof {
namespace {

using Kind = Literal::Kind;

struct IntegerRange {
    CMPIType type;
    std::uint64_t largest;
    std::uint64_t largestNegative;  // magnitude of the smallest number
};

template <typename Number>
constexpr IntegerRange rangeOf(CMPIType type) {
    constexpr auto largest = static_cast<std::uint64_t>(std::numeric_limits<Number>::max());
    return {type, largest, std::numeric_limits<Number>::is_signed ? largest + 1 : 0};
}

constexpr IntegerRange INTEGER_RANGES[] = {
    rangeOf<std::uint8_t>(CMPI_uint8),   rangeOf<std::int8_t>(CMPI_sint8),    rangeOf<std::uint16_t>(CMPI_uint16),
    rangeOf<std::int16_t>(CMPI_sint16),  rangeOf<std::uint32_t>(CMPI_uint32), rangeOf<std::int32_t>(CMPI_sint32),
    rangeOf<std::uint64_t>(CMPI_uint64), rangeOf<std::int64_t>(CMPI_sint64),  rangeOf<std::uint16_t>(CMPI_char16),
};

bool isInRange(const Literal& value, CMPIType type) {
    const auto* range = std::find_if(std::begin(INTEGER_RANGES), std::end(INTEGER_RANGES),
                                     [type](const IntegerRange& each) { return each.type == type; });
    if (range == std::end(INTEGER_RANGES)) return false;
    return value.magnitude <= (value.isNegative ? range->largestNegative : range->largest);
}

bool scalarFits(const Literal& value, CMPIType type) {
    switch (value.kind) {
        case Kind::Null:
            return true;
        case Kind::Boolean:
            return type == CMPI_boolean;
        case Kind::Integer:
            return type == CMPI_real32 || type == CMPI_real64 || isInRange(value, type);
        case Kind::Real:
            return type == CMPI_real32 || type == CMPI_real64;
        case Kind::Text:
            return type == CMPI_string || type == CMPI_dateTime || type == CMPI_ref;
        case Kind::Character:
            return type == CMPI_char16;
        case Kind::List:
            return false;
    }
    return false;
}

}  // namespace

bool NameLess::operator()(const std::string& left, const std::string& right) const {
    return std::lexicographical_compare(left.begin(), left.end(), right.begin(), right.end(),
                                        [](char l, char r) { return broker::lowered(l) < broker::lowered(r); });
}

bool fits(const Literal& value, CMPIType type) {
    if ((type & CMPI_ARRAY) == 0) return scalarFits(value, type);
    if (value.kind != Kind::List) return value.kind == Kind::Null;
    const auto elementType = static_cast<CMPIType>(type & ~CMPI_ARRAY);
    return std::all_of(value.elements.begin(), value.elements.end(),
                       [elementType](const Literal& element) { return scalarFits(element, elementType); });
}

const Qualifier* findQualifier(const std::vector<Qualifier>& qualifiers, std::string_view name) {
    const auto found = std::find_if(qualifiers.begin(), qualifiers.end(),
                                    [name](const Qualifier& each) { return broker::sameName(each.name, name); });
    return found == qualifiers.end() ? nullptr : &*found;
}

bool isSet(const std::vector<Qualifier>& qualifiers, std::string_view name) {
    const Qualifier* qualifier = findQualifier(qualifiers, name);
    if (qualifier == nullptr) return false;
    return !qualifier->value || (qualifier->value->kind == Kind::Boolean && qualifier->value->magnitude != 0);
}

bool Schema::add(const QualifierDeclaration& declaration) {
    return m_qualifiers.try_emplace(declaration.name, declaration).second;
}

bool Schema::add(Class declaration) {
    if (!m_classIndex.try_emplace(declaration.name, m_classes.size()).second) return false;
    m_classes.push_back(std::move(declaration));
    return true;
}

const Class* Schema::findClass(const std::string& name) const {
    const auto found = m_classIndex.find(name);
    return found == m_classIndex.end() ? nullptr : &m_classes[found->second];
}

const QualifierDeclaration* Schema::findQualifier(const std::string& name) const {
    const auto found = m_qualifiers.find(name);
    return found == m_qualifiers.end() ? nullptr : &found->second;
}

std::vector<Member> Schema::membersOf(const Class& declaration) const {
    std::vector<const Class*> line;
    for (const Class* each = &declaration; each != nullptr; each = findClass(each->superclass)) line.push_back(each);
    std::reverse(line.begin(), line.end());
    std::vector<Member> members;
    for (const Class* each : line) {
        for (const Property& property : each->properties) {
            const bool isKey = isSet(property.qualifiers, "Key");
            const auto inherited = std::find_if(members.begin(), members.end(), [&](const Member& member) {
                return broker::sameName(member.name, property.name);
            });
            if (inherited == members.end()) {
                members.push_back({property.name, property.type, isKey});
            } else {
                *inherited = {property.name, property.type, isKey || inherited->isKey};
            }
        }
    }
    return members;
}

}  // namespace mof
