// Values on their way between CMPI's form and ours, and lists of named ones.
#ifndef ZELSENSORS_BROKER_VALUES_H
#define ZELSENSORS_BROKER_VALUES_H

#include <string_view>
#include <vector>

#include "broker/State.h"

namespace broker {

// Copies a value as CMPI passes it into functions (for CMPI_chars, `value` is the characters themselves; a null `value`
// or object is CIM NULL). Codes: 61 for types that CIM values cannot have, 60 for an object of another broker, 13 for
// an array whose elements are of another type.
CMPIrc toModel(Broker::State& state, const CMPIValue* value, CMPIType type, Value& into);

// How values are handed out.
struct ValueOptions {
    bool charsStayChars = false;
    bool integersAsSint64 = false;
    CMPIValueState flags = CMPI_goodValue;
};

// Makes what the value needs as objects of the calling thread's innermost request.
CMPIData toData(Broker::State& state, const Value& value, const ValueOptions& options);

// What goes with a code other than 0 where a value is answered.
CMPIData missingData();

using NamedValues = std::vector<NamedValue>;

// Adds the value, or replaces that of the same name.
void put(NamedValues& list, std::string_view name, Value value);

// The functions that all lists of named values have. `name` may be null in the second.
CMPIData dataNamed(Broker::State& state, const Value* value, const ValueOptions& options, CMPIrc& rc);
CMPIData dataAt(Broker::State& state, const NamedValues& list, CMPICount index, CMPIString** name,
                const ValueOptions& options, CMPIrc& rc);
const Value* findValue(const NamedValues& list, const char* name);  // null: there is none

}  // namespace broker

#endif
