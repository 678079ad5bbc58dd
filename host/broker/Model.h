// Plain C++ values for what travels through a broker: copies, owned by whoever holds them, safe to keep after the
// request.
#ifndef ZELSENSORS_BROKER_MODEL_H
#define ZELSENSORS_BROKER_MODEL_H

#include <cmpidt.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace broker {

struct ObjectPath;
struct Instance;

// One CIM value. `type` is the code that was handed to the broker (CMPI_chars stays CMPI_chars; arrays carry
// CMPI_ARRAY). Of the members below it, the one that belongs to the type is meaningful, and none when `isNull`.
struct Value {
    CMPIType type = CMPI_null;
    bool isNull = true;
    std::uint64_t unsignedNumber = 0;          // boolean (0 or 1), char16, uint8 to uint64
    std::int64_t signedNumber = 0;             // sint8 to sint64
    double real = 0;                           // real32, real64
    std::string text;                          // string, chars, and dateTime in its 25-character CIM form
    std::vector<Value> elements;               // arrays; each element carries the element's type
    std::shared_ptr<const ObjectPath> path;    // ref
    std::shared_ptr<const Instance> instance;  // instance

    static Value null(CMPIType type);
    static Value ofText(std::string text, CMPIType type = CMPI_string);
    static Value ofBoolean(bool value);
    static Value ofUnsigned(std::uint64_t number, CMPIType type = CMPI_uint32);
    static Value ofSigned(std::int64_t number, CMPIType type = CMPI_sint32);
    static Value ofReal(double number, CMPIType type = CMPI_real64);
    // `elementType` without CMPI_ARRAY.
    static Value ofArray(std::vector<Value> elements, CMPIType elementType);

    bool isArray() const { return (type & CMPI_ARRAY) != 0; }
    bool isText() const;      // string or chars, not an array
    bool isSigned() const;    // a signed integer, not an array
    bool isUnsigned() const;  // an unsigned integer, not an array; boolean and char16 are not counted
};
bool operator==(const Value& left, const Value& right);
bool operator!=(const Value& left, const Value& right);

struct NamedValue {
    std::string name;
    Value value;
};
bool operator==(const NamedValue& left, const NamedValue& right);

// Names of classes, keys, properties and namespaces compare without regard to case in CIM; these structures keep the
// spelling that they were given, and == compares exactly, in order.
struct ObjectPath {
    std::string host;
    std::string nameSpace;
    std::string className;
    std::vector<NamedValue> keys;  // in the order in which they were added

    const Value* findKey(std::string_view name) const;  // null: there is none
};
bool operator==(const ObjectPath& left, const ObjectPath& right);

struct Instance {
    ObjectPath path;
    std::vector<NamedValue> properties;  // in the order in which they were first set

    const Value* findProperty(std::string_view name) const;  // null: there is none
};
bool operator==(const Instance& left, const Instance& right);

struct Status {
    CMPIrc rc = CMPI_RC_OK;
    std::optional<std::string> message;
};

// What a provider answered to one request.
struct Reply {
    Status status;
    std::vector<ObjectPath> paths;
    std::vector<Instance> instances;
    std::vector<Value> data;
    unsigned doneCalls = 0;  // how often the provider called returnDone
};

}  // namespace broker

#endif
