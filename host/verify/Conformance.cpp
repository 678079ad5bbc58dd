#include "verify/Conformance.h"

#include <algorithm>
#include <string_view>

#include "broker/Names.h"
#include "format/ValueText.h"
#include "text/Utf8.h"

namespace host {
namespace {

using broker::NamedValue;
using broker::ObjectPath;
using broker::Value;
using mof::Member;
using Faults = std::vector<Fault>;

// A text may be handed over as CMPI_chars as well.
CMPIType declarable(CMPIType type) {
    const auto array = static_cast<CMPIType>(type & CMPI_ARRAY);
    const auto simple = static_cast<CMPIType>(type & ~CMPI_ARRAY);
    return static_cast<CMPIType>((simple == CMPI_chars ? CMPI_string : simple) | array);
}

bool hasFitTexts(const Value& value) {
    return value.isNull ||
           (isFitForXml(value.text) && std::all_of(value.elements.begin(), value.elements.end(), hasFitTexts));
}

bool isUntypedNull(const Value& value) {
    return value.isNull && value.type == CMPI_null;
}

// `what` is "key Name" or "property Caption".
void checkValue(const std::string& what, const Value& value, const Member& declared, Faults& faults) {
    if (declarable(value.type) != declared.type && !isUntypedNull(value)) {
        faults.push_back({FaultKind::OtherType, what + " is " + broker::nameOfType(value.type) + ", declared as " +
                                                    broker::nameOfType(declared.type)});
    }
    if (!hasFitTexts(value)) {
        faults.push_back({FaultKind::UnfitText,
                          what + " holds text that is not valid UTF-8 or has control characters: " + valueText(value)});
    }
}

void checkSpelling(const std::string& what, const std::string& name, const Member& declared, Faults& faults) {
    if (name != declared.name)
        faults.push_back({FaultKind::OtherName, what + " is spelled " + printable(declared.name) + " in the schema"});
}

void checkKey(const NamedValue& key, const ExpectedClass& expected, Faults& faults) {
    const std::string what = "key " + printable(key.name);
    const Member* declared = expected.find(key.name);
    if (declared == nullptr || !declared->isKey) {
        faults.push_back({FaultKind::WrongKey, what + " is not declared as a key"});
        return;
    }
    checkSpelling(what, key.name, *declared, faults);
    checkValue(what, key.value, *declared, faults);
    if (key.value.isNull) faults.push_back({FaultKind::WrongKey, what + " is null"});
}

void checkBlanks(const NamedValue& key, Faults& faults) {
    const std::string& text = key.value.text;
    constexpr std::string_view blanks = " \t\r\n";
    if (text.empty() || (blanks.find(text.front()) == blanks.npos && blanks.find(text.back()) == blanks.npos)) return;
    faults.push_back({FaultKind::BlankAroundKey, "key " + printable(key.name) + " begins or ends with a blank"});
}

void checkProperty(const NamedValue& property, const ExpectedClass& expected, Faults& faults) {
    const std::string what = "property " + printable(property.name);
    const Member* declared = expected.find(property.name);
    if (declared == nullptr) {
        faults.push_back({FaultKind::NotDeclared, what + " is not declared"});
        return;
    }
    checkSpelling(what, property.name, *declared, faults);
    checkValue(what, property.value, *declared, faults);
}

// CMPI_chars and CMPI_string are the same to a reader.
bool isSameKey(const Value& property, const Value& key) {
    return property.isText() && key.isText() ? property.text == key.text : property == key;
}

void checkKeyProperty(const broker::Instance& instance, const Member& key, Faults& faults) {
    const Value* property = instance.findProperty(key.name);
    const Value* inPath = instance.path.findKey(key.name);
    if (property == nullptr || property->isNull) {
        faults.push_back({FaultKind::KeyPropertyNotSet, "key property " + key.name + " is not set"});
    } else if (inPath != nullptr && !inPath->isNull && !isSameKey(*property, *inPath)) {
        faults.push_back({FaultKind::KeyPropertyDiffers, "property " + key.name + " is " + valueText(*property) +
                                                             ", but the path's key is " + valueText(*inPath)});
    }
}

}  // namespace

const Member* ExpectedClass::find(const std::string& member) const {
    const auto found = std::find_if(members.begin(), members.end(),
                                    [&member](const Member& each) { return broker::sameName(each.name, member); });
    return found == members.end() ? nullptr : &*found;
}

Faults faultsOf(const ObjectPath& path, const ExpectedClass& expected, Via via) {
    Faults faults;
    if (!broker::sameName(path.nameSpace, expected.nameSpace)) {
        faults.push_back({FaultKind::OtherName, "the namespace is not " + printable(expected.nameSpace)});
    }
    if (path.className != expected.name) faults.push_back({FaultKind::OtherName, "the class is not " + expected.name});
    for (const NamedValue& key : path.keys) {
        checkKey(key, expected, faults);
        if (via == Via::Manager) checkBlanks(key, faults);
    }
    for (const Member& member : expected.members) {
        if (member.isKey && path.findKey(member.name) == nullptr)
            faults.push_back({FaultKind::WrongKey, "key " + member.name + " is missing"});
    }
    return faults;
}

Faults faultsOf(const broker::Instance& instance, const ExpectedClass& expected, Via via) {
    Faults faults = faultsOf(instance.path, expected, via);
    for (const NamedValue& property : instance.properties) checkProperty(property, expected, faults);
    for (const Member& member : expected.members) {
        if (member.isKey) checkKeyProperty(instance, member, faults);
        if (via == Via::Manager && !member.isKey && instance.findProperty(member.name) == nullptr) {
            faults.push_back({FaultKind::Missing, "property " + member.name + " is missing"});
        }
    }
    return faults;
}

}  // namespace host
