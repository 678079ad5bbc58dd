// The broker's factories, and its services to providers.
#include <chrono>
#include <cstdarg>
#include <cstring>

#include "broker/Calls.h"
#include "broker/Dates.h"
#include "broker/Names.h"
#include "broker/Rendering.h"
#include "broker/Tables.h"
#include "broker/Values.h"

namespace broker {
namespace {

constexpr const char* ENCAPSULATION_TABLE = "broker";

CMPIInstance* newInstance(const CMPIBroker* mb, const CMPIObjectPath* path, CMPIStatus* status) {
    Broker::State* state = stateOf(mb);
    return perform(state, {ENCAPSULATION_TABLE, "newInstance"}, {}, status, [&](CMPIrc& rc) -> CMPIInstance* {
        if (path == nullptr || !state->hasMade(path)) {
            rc = CMPI_RC_ERR_INVALID_HANDLE;
            return nullptr;
        }
        InstanceContent content;
        content.instance.path = held<PathObject>(path)->content.path;
        return state->make<InstanceObject>(std::move(content));
    });
}

CMPIObjectPath* newObjectPath(const CMPIBroker* mb, const char* nameSpace, const char* className, CMPIStatus* status) {
    Broker::State* state = stateOf(mb);
    return perform(state, {ENCAPSULATION_TABLE, "newObjectPath"}, {className}, status, [&](CMPIrc&) {
        PathContent content;
        if (nameSpace != nullptr) content.path.nameSpace = nameSpace;
        if (className != nullptr) content.path.className = className;
        return state->make<PathObject>(std::move(content));
    });
}

CMPIArgs* newArgs(const CMPIBroker* mb, CMPIStatus* status) {
    Broker::State* state = stateOf(mb);
    return perform(state, {ENCAPSULATION_TABLE, "newArgs"}, {}, status,
                   [&](CMPIrc&) { return state->make<ArgsObject>(NamedValues{}); });
}

CMPIString* newString(const CMPIBroker* mb, const char* text, CMPIStatus* status) {
    Broker::State* state = stateOf(mb);
    return perform(state, {ENCAPSULATION_TABLE, "newString"}, textArgument(text), status,
                   [&](CMPIrc& rc) -> CMPIString* {
                       if (text != nullptr) return state->make<StringObject>(std::string(text));
                       rc = CMPI_RC_ERR_INVALID_PARAMETER;
                       return nullptr;
                   });
}

CMPIArray* newArray(const CMPIBroker* mb, CMPICount size, CMPIType elementType, CMPIStatus* status) {
    Broker::State* state = stateOf(mb);
    return perform(state, {ENCAPSULATION_TABLE, "newArray"}, {}, status, [&](CMPIrc& rc) -> CMPIArray* {
        Value element;
        rc = (elementType & CMPI_ARRAY) != 0 ? CMPI_RC_ERR_INVALID_DATA_TYPE
                                             : toModel(*state, nullptr, elementType, element);
        if (rc != CMPI_RC_OK) return nullptr;
        return state->make<ArrayObject>(ArrayContent{elementType, std::vector<Value>(size, element)});
    });
}

CMPIDateTime* makeDate(Broker::State& state, const std::optional<std::string>& text, CMPIrc& rc) {
    if (text) return state.make<DateTimeObject>(*text);
    rc = CMPI_RC_ERR_INVALID_PARAMETER;
    return nullptr;
}

CMPIDateTime* newDateTime(const CMPIBroker* mb, CMPIStatus* status) {
    Broker::State* state = stateOf(mb);
    return perform(state, {ENCAPSULATION_TABLE, "newDateTime"}, {}, status, [&](CMPIrc& rc) {
        const auto sinceEpoch = std::chrono::system_clock::now().time_since_epoch();
        const auto now = std::chrono::duration_cast<std::chrono::microseconds>(sinceEpoch).count();
        return makeDate(*state, formatDate(static_cast<std::uint64_t>(now), false), rc);
    });
}

CMPIDateTime* newDateTimeFromBinary(const CMPIBroker* mb, CMPIUint64 microseconds, CMPIBoolean isInterval,
                                    CMPIStatus* status) {
    Broker::State* state = stateOf(mb);
    CMPIValue argument{};
    argument.uint64 = microseconds;
    return perform(state, {ENCAPSULATION_TABLE, "newDateTimeFromBinary"}, {nullptr, &argument, CMPI_uint64}, status,
                   [&](CMPIrc& rc) { return makeDate(*state, formatDate(microseconds, isInterval != 0), rc); });
}

CMPIDateTime* newDateTimeFromChars(const CMPIBroker* mb, const char* text, CMPIStatus* status) {
    Broker::State* state = stateOf(mb);
    return perform(state, {ENCAPSULATION_TABLE, "newDateTimeFromChars"}, textArgument(text), status, [&](CMPIrc& rc) {
        const bool isDate = text != nullptr && parseDate(text).has_value();
        return makeDate(*state, isDate ? std::optional<std::string>(text) : std::nullopt, rc);
    });
}

CMPISelectExp* newSelectExp(const CMPIBroker* mb, const char*, const char*, CMPIArray**, CMPIStatus* status) {
    return perform(stateOf(mb), {ENCAPSULATION_TABLE, "newSelectExp"}, {}, status, [](CMPIrc& rc) -> CMPISelectExp* {
        rc = CMPI_RC_ERR_NOT_SUPPORTED;
        return nullptr;
    });
}

// Without a schema, a class is only itself.
CMPIBoolean classPathIsA(const CMPIBroker* mb, const CMPIObjectPath* path, const char* className, CMPIStatus* status) {
    Broker::State* state = stateOf(mb);
    return perform(state, {ENCAPSULATION_TABLE, "classPathIsA"}, {className}, status, [&](CMPIrc& rc) {
        rc = CMPI_RC_OK;
        if (path == nullptr || !state->hasMade(path)) {
            rc = CMPI_RC_ERR_INVALID_HANDLE;
        } else if (className == nullptr) {
            rc = CMPI_RC_ERR_INVALID_PARAMETER;
        } else if (sameName(held<PathObject>(path)->content.path.className, className)) {
            return CMPIBoolean{1};
        }
        return CMPIBoolean{0};
    });
}

template <typename Cmpi>
const Cmpi* madeAs(Broker::State& state, const void* object) {
    const auto* candidate = static_cast<const Cmpi*>(object);
    return candidate != nullptr && state.hasMade(candidate) ? candidate : nullptr;
}

// CMPI's name for the object's type; null for null and for what this broker has not made.
const char* typeNameOf(Broker::State& state, const void* object) {
    if (object == nullptr) return nullptr;
    if (madeAs<CMPIString>(state, object) != nullptr) return "CMPIString";
    if (madeAs<CMPIObjectPath>(state, object) != nullptr) return "CMPIObjectPath";
    if (madeAs<CMPIInstance>(state, object) != nullptr) return "CMPIInstance";
    if (madeAs<CMPIArray>(state, object) != nullptr) return "CMPIArray";
    if (madeAs<CMPIDateTime>(state, object) != nullptr) return "CMPIDateTime";
    if (madeAs<CMPIContext>(state, object) != nullptr) return "CMPIContext";
    if (madeAs<CMPIArgs>(state, object) != nullptr) return "CMPIArgs";
    return madeAs<CMPIResult>(state, object) != nullptr ? "CMPIResult" : nullptr;
}

std::string textOf(Broker::State& state, const void* object) {
    if (const auto* string = madeAs<CMPIString>(state, object)) return held<StringObject>(string)->content;
    if (const auto* date = madeAs<CMPIDateTime>(state, object)) return held<DateTimeObject>(date)->content;
    if (const auto* path = madeAs<CMPIObjectPath>(state, object)) return rendered(held<PathObject>(path)->content.path);
    if (const auto* instance = madeAs<CMPIInstance>(state, object)) {
        return rendered(held<InstanceObject>(instance)->content.instance);
    }
    if (const auto* array = madeAs<CMPIArray>(state, object)) {
        const ArrayContent& content = held<ArrayObject>(array)->content;
        return rendered(Value::ofArray(content.elements, content.elementType));
    }
    return typeNameOf(state, object);
}

CMPIString* toString(const CMPIBroker* mb, const void* object, CMPIStatus* status) {
    Broker::State* state = stateOf(mb);
    return perform(state, {ENCAPSULATION_TABLE, "toString"}, {}, status, [&](CMPIrc& rc) -> CMPIString* {
        if (typeNameOf(*state, object) != nullptr) return state->make<StringObject>(textOf(*state, object));
        rc = CMPI_RC_ERR_INVALID_HANDLE;
        return nullptr;
    });
}

CMPIBoolean isOfType(const CMPIBroker* mb, const void* object, const char* typeName, CMPIStatus* status) {
    Broker::State* state = stateOf(mb);
    return perform(state, {ENCAPSULATION_TABLE, "isOfType"}, {typeName}, status, [&](CMPIrc& rc) {
        const char* actual = typeNameOf(*state, object);
        if (actual == nullptr) rc = CMPI_RC_ERR_INVALID_HANDLE;
        const bool isIt = actual != nullptr && typeName != nullptr && std::strcmp(actual, typeName) == 0;
        return static_cast<CMPIBoolean>(isIt ? 1 : 0);
    });
}

CMPIString* getType(const CMPIBroker* mb, const void* object, CMPIStatus* status) {
    Broker::State* state = stateOf(mb);
    return perform(state, {ENCAPSULATION_TABLE, "getType"}, {}, status, [&](CMPIrc& rc) -> CMPIString* {
        if (const char* name = typeNameOf(*state, object)) return state->make<StringObject>(std::string(name));
        rc = CMPI_RC_ERR_INVALID_HANDLE;
        return nullptr;
    });
}

// Integers of up to 32 bits travel as long, those of 64 as long long.
std::string nextArgument(CMPIType type, va_list& arguments) {
    const Value kind = Value::null(type);
    if (type == CMPI_sint64) return std::to_string(va_arg(arguments, long long));
    if (type == CMPI_uint64) return std::to_string(va_arg(arguments, unsigned long long));
    if (kind.isSigned()) return std::to_string(va_arg(arguments, long));
    if (kind.isUnsigned()) return std::to_string(va_arg(arguments, unsigned long));
    if (type == CMPI_real32 || type == CMPI_real64) return rendered(Value::ofReal(va_arg(arguments, double)));
    if (type == CMPI_boolean) return va_arg(arguments, int) != 0 ? "true" : "false";
    if (type == CMPI_string) {
        const auto* string = held<StringObject>(va_arg(arguments, const CMPIString*));
        return string == nullptr ? "" : string->content;
    }
    const char* text = va_arg(arguments, const char*);
    return text == nullptr ? "" : text;
}

std::vector<std::string> takeArguments(CMPICount count, va_list& arguments) {
    std::vector<std::string> taken;
    for (CMPICount index = 0; index < count; ++index) {
        const auto type = static_cast<CMPIType>(va_arg(arguments, int));
        taken.push_back(nextArgument(type, arguments));
    }
    return taken;
}

// $0 to $9 stand for the arguments; a $ that no argument belongs to stays.
std::string filledIn(const std::string& text, const std::vector<std::string>& arguments) {
    std::string result;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const bool mayBePlace = text[at] == '$' && at + 1 < text.size() && text[at + 1] >= '0' && text[at + 1] <= '9';
        const std::size_t index = mayBePlace ? static_cast<std::size_t>(text[at + 1] - '0') : arguments.size();
        if (index < arguments.size()) {
            result += arguments[index];
            ++at;
        } else {
            result += text[at];
        }
    }
    return result;
}

// There are no message files: the default text is the message, or else the id.
CMPIString* message(const CMPIBroker* mb, const char* function, const char* id, const char* text,
                    const std::vector<std::string>& arguments, CMPIStatus* status) {
    Broker::State* state = stateOf(mb);
    return perform(state, {ENCAPSULATION_TABLE, function}, {id}, status, [&](CMPIrc& rc) -> CMPIString* {
        const char* pattern = text != nullptr ? text : id;
        if (pattern != nullptr) return state->make<StringObject>(filledIn(pattern, arguments));
        rc = CMPI_RC_ERR_INVALID_PARAMETER;
        return nullptr;
    });
}

CMPIString* getMessage(const CMPIBroker* mb, const char* id, const char* text, CMPIStatus* status, CMPICount count,
                       ...) {
    va_list arguments;
    va_start(arguments, count);
    const auto taken = takeArguments(count, arguments);
    va_end(arguments);
    return message(mb, "getMessage", id, text, taken, status);
}

CMPIString* getMessage2(const CMPIBroker* mb, const char* id, CMPIMsgFileHandle, const char* text, CMPIStatus* status,
                        CMPICount count, ...) {
    va_list arguments;
    va_start(arguments, count);
    const auto taken = takeArguments(count, arguments);
    va_end(arguments);
    return message(mb, "getMessage2", id, text, taken, status);
}

CMPIStatus refused(const CMPIBroker* mb, const char* function, const char* name, const char* text) {
    CallArgument argument = textArgument(text);
    argument.name = name;
    return performStatus(stateOf(mb), {ENCAPSULATION_TABLE, function}, argument,
                         [] { return CMPI_RC_ERR_NOT_SUPPORTED; });
}

// Editions of <cmpift.h> differ in the type of the second parameter; the templates suit both.
template <typename Severity>
CMPIStatus logMessage(const CMPIBroker* mb, Severity, const char* id, const char* text, const CMPIString*) {
    return refused(mb, "logMessage", id, text);
}
template <typename Level>
CMPIStatus trace(const CMPIBroker* mb, Level, const char* component, const char* text, const CMPIString*) {
    return refused(mb, "trace", component, text);
}

CMPIError* newCMPIError(const CMPIBroker* mb, const char*, const char*, const char*, CMPIErrorSeverity,
                        CMPIErrorProbableCause, CMPIrc, CMPIStatus* status) {
    return perform(stateOf(mb), {ENCAPSULATION_TABLE, "newCMPIError"}, {}, status, [](CMPIrc& rc) -> CMPIError* {
        rc = CMPI_RC_ERR_NOT_SUPPORTED;
        return nullptr;
    });
}
CMPIStatus openMessageFile(const CMPIBroker* mb, const char* file, CMPIMsgFileHandle* handle) {
    if (handle != nullptr) *handle = nullptr;
    return refused(mb, "openMessageFile", file, nullptr);
}
CMPIStatus closeMessageFile(const CMPIBroker* mb, CMPIMsgFileHandle) {
    return refused(mb, "closeMessageFile", nullptr, nullptr);
}

}  // namespace

void fillEncapsulationTable(CMPIBrokerEncFT& table, const BrokerOptions& options) {
    table.ftVersion = options.tableVersion;
    table.newInstance = newInstance;
    table.newObjectPath = newObjectPath;
    table.newArgs = newArgs;
    table.newString = newString;
    table.newArray = newArray;
    table.newDateTime = newDateTime;
    table.newDateTimeFromBinary = newDateTimeFromBinary;
    table.newDateTimeFromChars = newDateTimeFromChars;
    table.newSelectExp = newSelectExp;
    table.classPathIsA = classPathIsA;
    table.toString = toString;
    table.isOfType = isOfType;
    table.getType = getType;
    table.getMessage = getMessage;
    table.logMessage = logMessage;
    table.trace = trace;
    if (!options.hasLevel200Slots) return;
    table.newCMPIError = newCMPIError;
    table.openMessageFile = openMessageFile;
    table.closeMessageFile = closeMessageFile;
    table.getMessage2 = getMessage2;
}

}  // namespace broker
