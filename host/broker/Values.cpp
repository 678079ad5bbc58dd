#include "broker/Values.h"

#include <algorithm>

#include "broker/Names.h"

namespace broker {
namespace {

CMPIType elementTypeOf(CMPIType type) {
    return static_cast<CMPIType>(type & ~CMPI_ARRAY);
}

bool isText(CMPIType type) {
    return type == CMPI_string || type == CMPI_chars;
}

// False where the type is no number's.
bool copyNumber(const CMPIValue& from, CMPIType type, Value& into) {
    switch (type) {
        case CMPI_boolean:
            into.unsignedNumber = from.boolean != 0 ? 1 : 0;
            return true;
        case CMPI_char16:
            into.unsignedNumber = from.char16;
            return true;
        case CMPI_uint8:
            into.unsignedNumber = from.uint8;
            return true;
        case CMPI_uint16:
            into.unsignedNumber = from.uint16;
            return true;
        case CMPI_uint32:
            into.unsignedNumber = from.uint32;
            return true;
        case CMPI_uint64:
            into.unsignedNumber = from.uint64;
            return true;
        case CMPI_sint8:
            into.signedNumber = from.sint8;  // NOLINT(bugprone-signed-char-misuse): a number, not a character
            return true;
        case CMPI_sint16:
            into.signedNumber = from.sint16;
            return true;
        case CMPI_sint32:
            into.signedNumber = from.sint32;
            return true;
        case CMPI_sint64:
            into.signedNumber = from.sint64;
            return true;
        case CMPI_real32:
            into.real = static_cast<double>(from.real32);
            return true;
        case CMPI_real64:
            into.real = from.real64;
            return true;
        default:
            return false;
    }
}

// Hands the content of an object to `copy`, unless it is null or of another broker.
template <typename T, typename Cmpi, typename Copy>
CMPIrc copyObject(Broker::State& state, const Cmpi* object, Value& into, Copy copy) {
    into.isNull = object == nullptr;
    if (object == nullptr) return CMPI_RC_OK;
    if (!state.hasMade(object)) return CMPI_RC_ERR_INVALID_HANDLE;
    return copy(held<T>(object)->content);
}

CMPIrc copyArray(Broker::State& state, const CMPIArray* array, CMPIType elementType, Value& into) {
    return copyObject<ArrayObject>(state, array, into, [&](const ArrayContent& content) {
        const bool fits = content.elementType == elementType ||
                          (!state.options.strictElementTypes && isText(content.elementType) && isText(elementType));
        if (!fits) return CMPI_RC_ERR_TYPE_MISMATCH;
        into.elements = content.elements;
        for (Value& element : into.elements) element.type = elementType;
        return CMPI_RC_OK;
    });
}

CMPIrc copyNonNumber(Broker::State& state, const CMPIValue& from, CMPIType type, Value& into) {
    const auto copyText = [&](const std::string& text) {
        into.text = text;
        return CMPI_RC_OK;
    };
    switch (type) {
        case CMPI_string:
            return copyObject<StringObject>(state, from.string, into, copyText);
        case CMPI_chars:
            into.text = reinterpret_cast<const char*>(&from);
            return CMPI_RC_OK;
        case CMPI_dateTime:
            return copyObject<DateTimeObject>(state, from.dateTime, into, copyText);
        case CMPI_ref:
            return copyObject<PathObject>(state, from.ref, into, [&](const PathContent& content) {
                into.path = std::make_shared<const ObjectPath>(content.path);
                return CMPI_RC_OK;
            });
        case CMPI_instance:
            return copyObject<InstanceObject>(state, from.inst, into, [&](const InstanceContent& content) {
                into.instance = std::make_shared<const Instance>(content.instance);
                return CMPI_RC_OK;
            });
        default:
            return CMPI_RC_ERR_INVALID_DATA_TYPE;
    }
}

bool isCimType(CMPIType type) {
    static constexpr CMPIType types[] = {CMPI_boolean,  CMPI_char16, CMPI_uint8,  CMPI_uint16,   CMPI_uint32,
                                         CMPI_uint64,   CMPI_sint8,  CMPI_sint16, CMPI_sint32,   CMPI_sint64,
                                         CMPI_real32,   CMPI_real64, CMPI_string, CMPI_dateTime, CMPI_ref,
                                         CMPI_instance, CMPI_chars};
    return std::find(std::begin(types), std::end(types), elementTypeOf(type)) != std::end(types);
}

void handOutNumber(const Value& value, CMPIData& data) {
    switch (value.type) {
        case CMPI_boolean:
            data.value.boolean = static_cast<CMPIBoolean>(value.unsignedNumber);
            break;
        case CMPI_char16:
            data.value.char16 = static_cast<CMPIChar16>(value.unsignedNumber);
            break;
        case CMPI_uint8:
            data.value.uint8 = static_cast<CMPIUint8>(value.unsignedNumber);
            break;
        case CMPI_uint16:
            data.value.uint16 = static_cast<CMPIUint16>(value.unsignedNumber);
            break;
        case CMPI_uint32:
            data.value.uint32 = static_cast<CMPIUint32>(value.unsignedNumber);
            break;
        case CMPI_uint64:
            data.value.uint64 = value.unsignedNumber;
            break;
        case CMPI_sint8:
            data.value.sint8 = static_cast<CMPISint8>(value.signedNumber);
            break;
        case CMPI_sint16:
            data.value.sint16 = static_cast<CMPISint16>(value.signedNumber);
            break;
        case CMPI_sint32:
            data.value.sint32 = static_cast<CMPISint32>(value.signedNumber);
            break;
        case CMPI_sint64:
            data.value.sint64 = value.signedNumber;
            break;
        case CMPI_real32:
            data.value.real32 = static_cast<CMPIReal32>(value.real);
            break;
        case CMPI_real64:
            data.value.real64 = value.real;
            break;
        default:
            break;
    }
}

void handOutObject(Broker::State& state, const Value& value, bool keepsTypes, CMPIData& data) {
    if (value.isArray()) {
        data.value.array = state.make<ArrayObject>(ArrayContent{elementTypeOf(data.type), value.elements});
        return;
    }
    switch (data.type) {
        case CMPI_string:
            data.value.string = state.make<StringObject>(value.text);
            break;
        case CMPI_chars:
            data.value.chars = state.make<StringObject>(value.text)->content.data();
            break;
        case CMPI_dateTime:
            data.value.dateTime = state.make<DateTimeObject>(value.text);
            break;
        case CMPI_ref:
            data.value.ref = state.make<PathObject>(PathContent{*value.path, keepsTypes});
            break;
        case CMPI_instance:
            data.value.inst = state.make<InstanceObject>(InstanceContent{*value.instance, keepsTypes, std::nullopt});
            break;
        default:
            break;
    }
}

CMPIType typeHandedOut(const Value& value, const ValueOptions& options) {
    if (options.integersAsSint64 && (value.isSigned() || value.isUnsigned())) return CMPI_sint64;
    if (options.charsStayChars) return value.type;
    if (value.type == CMPI_chars) return CMPI_string;
    return value.type == CMPI_charsA ? static_cast<CMPIType>(CMPI_stringA) : value.type;
}

}  // namespace

CMPIrc toModel(Broker::State& state, const CMPIValue* value, CMPIType type, Value& into) {
    if (!isCimType(type)) return CMPI_RC_ERR_INVALID_DATA_TYPE;
    into = Value::null(type);
    if (value == nullptr) return CMPI_RC_OK;
    into.isNull = false;
    if ((type & CMPI_ARRAY) != 0) return copyArray(state, value->array, elementTypeOf(type), into);
    return copyNumber(*value, type, into) ? CMPI_RC_OK : copyNonNumber(state, *value, type, into);
}

CMPIData toData(Broker::State& state, const Value& value, const ValueOptions& options) {
    CMPIData data = CMPIData();  // all of it zero; {} would zero the first member of the value alone
    data.type = typeHandedOut(value, options);
    data.state = options.flags;
    if (value.isNull) {
        data.state = static_cast<CMPIValueState>(data.state | CMPI_nullValue);
    } else if (value.isUnsigned() && data.type == CMPI_sint64) {
        data.value.sint64 = static_cast<CMPISint64>(value.unsignedNumber);
    } else if (value.isSigned() && data.type == CMPI_sint64) {
        data.value.sint64 = value.signedNumber;
    } else {
        handOutNumber(value, data);
        handOutObject(state, value, options.charsStayChars, data);
    }
    return data;
}

CMPIData missingData() {
    CMPIData data = CMPIData();
    data.state = static_cast<CMPIValueState>(CMPI_nullValue | CMPI_notFound);
    return data;
}

void put(NamedValues& list, std::string_view name, Value value) {
    const auto found =
        std::find_if(list.begin(), list.end(), [&](const NamedValue& item) { return sameName(item.name, name); });
    if (found == list.end()) {
        list.push_back({std::string(name), std::move(value)});
    } else {
        found->value = std::move(value);
    }
}

const Value* findValue(const NamedValues& list, const char* name) {
    if (name == nullptr) return nullptr;
    const auto found =
        std::find_if(list.begin(), list.end(), [&](const NamedValue& item) { return sameName(item.name, name); });
    return found == list.end() ? nullptr : &found->value;
}

CMPIData dataNamed(Broker::State& state, const Value* value, const ValueOptions& options, CMPIrc& rc) {
    if (value != nullptr) return toData(state, *value, options);
    rc = state.options.notFound;
    return missingData();
}

CMPIData dataAt(Broker::State& state, const NamedValues& list, CMPICount index, CMPIString** name,
                const ValueOptions& options, CMPIrc& rc) {
    if (index >= list.size()) {
        rc = state.options.notFound;
        return missingData();
    }
    if (name != nullptr) *name = state.make<StringObject>(list[index].name);
    return toData(state, list[index].value, options);
}

}  // namespace broker
