#include "CimModel.h"

#include <cstring>

namespace {

// Some brokers copy the whole union whatever its type, so all of it is given a value. In place: copying a union may
// leave out its padding.
void zero(CMPIValue& value) {
    std::memset(&value, 0, sizeof value);
}

CMPIInstance* newInstance(const CMPIBroker* broker, CMPIObjectPath* path) {
    CMPIStatus status = {CMPI_RC_OK, nullptr};
    CMPIInstance* instance = CMNewInstance(broker, path, &status);
    return requireMade(instance, status);
}

}  // namespace

void throwStatus(const CMPIStatus& status) {
    // One record does: requests come one at a time, and nobody reads what the pointer leads to.
    static CMPIStatus thrown;
    thrown = status;
    throw &thrown;
}

void throwFailure() {
    throwStatus({CMPI_RC_ERR_FAILED, nullptr});
}

const CMPIValue* asValue(const char* characters) {
    return reinterpret_cast<const CMPIValue*>(characters);
}

CMPIObjectPath* newNamedPath(const CMPIBroker* broker, const char* className, const char* name) {
    CMPIStatus status = {CMPI_RC_OK, nullptr};
    CMPIObjectPath* path = CMNewObjectPath(broker, CIM_NAMESPACE, className, &status);
    requireMade(path, status);
    CMAddKey(path, "Name", asValue(name), CMPI_chars);
    return path;
}

InstanceBuilder::InstanceBuilder(const CMPIBroker* broker, CMPIObjectPath* path)
    : m_instance(newInstance(broker, path)) {}

void InstanceBuilder::text(const char* property, const char* characters) {
    set(property, asValue(characters), CMPI_chars);
}

void InstanceBuilder::boolean(const char* property, bool value) {
    CMPIValue whole;
    zero(whole);
    whole.boolean = value ? 1 : 0;
    set(property, &whole, CMPI_boolean);
}

void InstanceBuilder::uint8(const char* property, CMPIUint8 number) {
    CMPIValue value;
    zero(value);
    value.uint8 = number;
    set(property, &value, CMPI_uint8);
}

void InstanceBuilder::uint16(const char* property, CMPIUint16 number) {
    CMPIValue value;
    zero(value);
    value.uint16 = number;
    set(property, &value, CMPI_uint16);
}

void InstanceBuilder::uint32(const char* property, CMPIUint32 number) {
    CMPIValue value;
    zero(value);
    value.uint32 = number;
    set(property, &value, CMPI_uint32);
}

void InstanceBuilder::sint32(const char* property, CMPISint32 number) {
    CMPIValue value;
    zero(value);
    value.sint32 = number;
    set(property, &value, CMPI_sint32);
}

void InstanceBuilder::array(const char* property, CMPIArray* elements, CMPIType type) {
    CMPIValue value;
    zero(value);
    value.array = elements;
    set(property, &value, type);
}

void InstanceBuilder::set(const char* property, const CMPIValue* value, CMPIType type) {
    const CMPIStatus status = CMSetProperty(m_instance, property, value, type);
    if (status.rc != CMPI_RC_OK) throwStatus(status);
}
