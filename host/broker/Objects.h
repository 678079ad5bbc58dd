// The objects that a broker hands out.
#ifndef ZELSENSORS_BROKER_OBJECTS_H
#define ZELSENSORS_BROKER_OBJECTS_H

#include <memory>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "broker/Broker.h"

namespace broker {

// The part of an object that its holder does not see.
class Object {
  public:
    explicit Object(Broker::State& itsState) : state(itsState) {}
    virtual ~Object();
    Object(const Object&) = delete;
    Object& operator=(const Object&) = delete;

    Broker::State& state;
    bool isCounted = false;  // among the live objects
    bool isClone = false;    // released by its holder
};

// The table of functions that CMPI gives that kind of object.
template <typename Cmpi>
using TableOf = std::remove_const_t<std::remove_pointer_t<decltype(Cmpi::ft)>>;

// An object as the provider holds it, starting with CMPI's two pointers, and what it says.
template <typename Cmpi, typename Content>
struct Held final : Cmpi, Object {
    Held(Broker::State& itsState, TableOf<Cmpi>& table, Content itsContent)
        : Cmpi{}, Object(itsState), content(std::move(itsContent)) {
        if constexpr (std::is_same_v<Cmpi, CMPIString>) {
            this->hdl = content.data();  // old programs read the text there
        } else {
            this->hdl = this;
        }
        this->ft = &table;
    }

    Content content;
};

struct PathContent {
    ObjectPath path;
    bool keepsTypes = false;  // keys are handed out with the types that they were given
};

struct InstanceContent {
    Instance instance;
    bool keepsTypes = false;
    std::optional<std::vector<std::string>> filter;  // the properties that it takes; without a value, all
};

struct ArrayContent {
    CMPIType elementType = CMPI_null;
    std::vector<Value> elements;
};

using StringObject = Held<CMPIString, std::string>;
using PathObject = Held<CMPIObjectPath, PathContent>;
using InstanceObject = Held<CMPIInstance, InstanceContent>;
using ArrayObject = Held<CMPIArray, ArrayContent>;
using DateTimeObject = Held<CMPIDateTime, std::string>;  // the 25-character form
using ContextObject = Held<CMPIContext, std::vector<NamedValue>>;
using ArgsObject = Held<CMPIArgs, std::vector<NamedValue>>;
using ResultObject = Held<CMPIResult, std::shared_ptr<Reply>>;

// The name of an object's table in fault plans.
template <typename T>
inline constexpr const char* TABLE_OF = nullptr;
template <>
inline constexpr const char* TABLE_OF<StringObject> = "string";
template <>
inline constexpr const char* TABLE_OF<PathObject> = "path";
template <>
inline constexpr const char* TABLE_OF<InstanceObject> = "instance";
template <>
inline constexpr const char* TABLE_OF<ArrayObject> = "array";
template <>
inline constexpr const char* TABLE_OF<DateTimeObject> = "dateTime";
template <>
inline constexpr const char* TABLE_OF<ContextObject> = "context";
template <>
inline constexpr const char* TABLE_OF<ArgsObject> = "args";
template <>
inline constexpr const char* TABLE_OF<ResultObject> = "result";

// The object behind what a provider holds; null for null. CMPI declares objects const that it changes, but none is.
template <typename T, typename Cmpi>
T* held(const Cmpi* object) {
    return static_cast<T*>(const_cast<Cmpi*>(object));
}

}  // namespace broker

#endif
