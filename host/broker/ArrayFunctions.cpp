#include "broker/Calls.h"
#include "broker/Tables.h"
#include "broker/Values.h"

namespace broker {
namespace {

constexpr const char* ARRAY_TABLE = TABLE_OF<ArrayObject>;

CMPICount getSize(const CMPIArray* self, CMPIStatus* status) {
    const auto* array = held<ArrayObject>(self);
    return perform(array, {ARRAY_TABLE, "getSize"}, {}, status,
                   [&](CMPIrc&) { return static_cast<CMPICount>(array->content.elements.size()); });
}

CMPIType getSimpleType(const CMPIArray* self, CMPIStatus* status) {
    const auto* array = held<ArrayObject>(self);
    return perform(array, {ARRAY_TABLE, "getSimpleType"}, {}, status,
                   [&](CMPIrc&) { return array->content.elementType; });
}

CMPIData getElementAt(const CMPIArray* self, CMPICount index, CMPIStatus* status) {
    const auto* array = held<ArrayObject>(self);
    return perform(array, {ARRAY_TABLE, "getElementAt"}, {}, status, [&](CMPIrc& rc) {
        const ArrayContent& content = array->content;
        // An array of chars is only handed out where chars stay what they are.
        if (index < content.elements.size()) {
            return toData(array->state, content.elements[index],
                          {content.elementType == CMPI_chars, false, CMPI_goodValue});
        }
        rc = CMPI_RC_ERR_NO_SUCH_PROPERTY;
        return missingData();
    });
}

// Text of the other kind becomes text of the array's kind where types need not be exact; nothing else is converted.
bool accepts(const ArrayObject& array, CMPIType type) {
    const Value element = Value::null(array.content.elementType);
    return type == element.type ||
           (!array.state.options.strictElementTypes && element.isText() && Value::null(type).isText());
}

CMPIrc setElementOf(ArrayObject& array, CMPICount index, const CMPIValue* value, CMPIType type) {
    ArrayContent& content = array.content;
    if (index >= content.elements.size()) return CMPI_RC_ERR_NO_SUCH_PROPERTY;
    if (value == nullptr && array.state.options.refusesNullElements) return CMPI_RC_ERR_INVALID_PARAMETER;
    Value element = Value::null(content.elementType);
    if (type != CMPI_null) {
        if (!accepts(array, type)) return CMPI_RC_ERR_TYPE_MISMATCH;
        const CMPIrc rc = toModel(array.state, value, type, element);
        if (rc != CMPI_RC_OK) return rc;
        element.type = content.elementType;
    }
    content.elements[index] = std::move(element);
    return CMPI_RC_OK;
}

// Editions of <cmpift.h> differ in whether the array is const here; the template suits both.
template <typename Array>
CMPIStatus setElementAt(Array* self, CMPICount index, const CMPIValue* value, CMPIType type) {
    auto* array = held<ArrayObject>(self);
    return performStatus(array, {ARRAY_TABLE, "setElementAt"}, {nullptr, value, type},
                         [&] { return setElementOf(*array, index, value, type); });
}

}  // namespace

void fillTable(CMPIArrayFT& table, const BrokerOptions& options) {
    table.ftVersion = options.tableVersion;
    table.release = releaseObject<ArrayObject>;
    table.clone = cloneObject<ArrayObject>;
    table.getSize = getSize;
    table.getSimpleType = getSimpleType;
    table.getElementAt = getElementAt;
    table.setElementAt = setElementAt;
}

}  // namespace broker
