#include "broker/Model.h"

#include <algorithm>
#include <utility>

#include "broker/Names.h"

namespace broker {
namespace {

// The bits that distinguish signed from unsigned integers, once encapsulated types and arrays are excluded.
constexpr unsigned INTEGER_KIND = 0x00C0;
constexpr unsigned SIGNED_KIND = 0x00C0;
constexpr unsigned UNSIGNED_KIND = 0x0080;

bool isIntegerOfKind(CMPIType type, unsigned kind) {
    return (type & (CMPI_ARRAY | CMPI_ENC)) == 0 && (type & INTEGER_KIND) == kind;
}

const Value* valueNamed(const std::vector<NamedValue>& list, std::string_view name) {
    const auto found =
        std::find_if(list.begin(), list.end(), [&](const NamedValue& item) { return sameName(item.name, name); });
    return found == list.end() ? nullptr : &found->value;
}

template <typename T>
bool samePointee(const std::shared_ptr<const T>& left, const std::shared_ptr<const T>& right) {
    return left == right || (left && right && *left == *right);
}

}  // namespace

Value Value::null(CMPIType type) {
    Value value;
    value.type = type;
    return value;
}

Value Value::ofText(std::string text, CMPIType type) {
    Value value;
    value.type = type;
    value.isNull = false;
    value.text = std::move(text);
    return value;
}

Value Value::ofBoolean(bool boolean) {
    return ofUnsigned(boolean ? 1 : 0, CMPI_boolean);
}

Value Value::ofUnsigned(std::uint64_t number, CMPIType type) {
    Value value;
    value.type = type;
    value.isNull = false;
    value.unsignedNumber = number;
    return value;
}

Value Value::ofSigned(std::int64_t number, CMPIType type) {
    Value value;
    value.type = type;
    value.isNull = false;
    value.signedNumber = number;
    return value;
}

Value Value::ofReal(double number, CMPIType type) {
    Value value;
    value.type = type;
    value.isNull = false;
    value.real = number;
    return value;
}

Value Value::ofArray(std::vector<Value> elements, CMPIType elementType) {
    Value value;
    value.type = static_cast<CMPIType>(elementType | CMPI_ARRAY);
    value.isNull = false;
    value.elements = std::move(elements);
    return value;
}

bool Value::isText() const {
    return type == CMPI_string || type == CMPI_chars;
}
bool Value::isSigned() const {
    return isIntegerOfKind(type, SIGNED_KIND);
}
bool Value::isUnsigned() const {
    return isIntegerOfKind(type, UNSIGNED_KIND);
}

bool operator==(const Value& left, const Value& right) {
    if (left.type != right.type || left.isNull != right.isNull) return false;
    if (left.isNull) return true;
    return left.unsignedNumber == right.unsignedNumber && left.signedNumber == right.signedNumber &&
           left.real == right.real && left.text == right.text && left.elements == right.elements &&
           samePointee(left.path, right.path) && samePointee(left.instance, right.instance);
}
bool operator!=(const Value& left, const Value& right) {
    return !(left == right);
}

bool operator==(const NamedValue& left, const NamedValue& right) {
    return left.name == right.name && left.value == right.value;
}

const Value* ObjectPath::findKey(std::string_view name) const {
    return valueNamed(keys, name);
}

bool operator==(const ObjectPath& left, const ObjectPath& right) {
    return left.host == right.host && left.nameSpace == right.nameSpace && left.className == right.className &&
           left.keys == right.keys;
}

const Value* Instance::findProperty(std::string_view name) const {
    return valueNamed(properties, name);
}

bool operator==(const Instance& left, const Instance& right) {
    return left.path == right.path && left.properties == right.properties;
}

}  // namespace broker
