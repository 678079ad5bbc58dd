// What the models of the two CIM classes share: the path of an instance with the one key "Name", the setting of an
// instance's properties, and the throwing of what a broker refuses.
//
// All CMPI objects made here belong to the broker, which frees them after the request; nobody releases them. A failure
// is thrown as a `CMPIStatus*` and nothing is logged. The pointer needs no free and stays valid until the next throw.
//
// Not thread-safe: the provider's lock lets one request in at a time.
#ifndef ZELSENSORS_CIMMODEL_H
#define ZELSENSORS_CIMMODEL_H

#include <cmpidt.h>
#include <cmpift.h>
#include <cmpimacs.h>

constexpr char CIM_NAMESPACE[] = "root/cimv2";
constexpr char SYSTEM_CREATION_CLASS_NAME[] = "Computer System";
constexpr char SYSTEM_NAME[] = "Quorvel POS Sensor Drivers and System Event Log";

// Throws a copy of a broker's status; its message stays the broker's.
[[noreturn]] void throwStatus(const CMPIStatus& status);
// Throws CMPI_RC_ERR_FAILED without a message.
[[noreturn]] void throwFailure();

// Gives back what a broker's factory function answered, or throws the status that it left. A null object with a good
// status, as a careless broker may answer, counts as a failure.
template <typename Object>
Object* requireMade(Object* object, const CMPIStatus& status) {
    if (status.rc != CMPI_RC_OK) throwStatus(status);
    if (object == nullptr) throwFailure();
    return object;
}

// Texts travel as CMPI_chars, where the characters themselves stand in the place of the value.
const CMPIValue* asValue(const char* characters);

// The path of the class in CIM_NAMESPACE with the key "Name". A broker that refuses the key is not noticed.
CMPIObjectPath* newNamedPath(const CMPIBroker* broker, const char* className, const char* name);

// Makes an instance and sets its properties in the order of the calls. Every call throws when the broker refuses it;
// the instance is then abandoned to the broker.
class InstanceBuilder {
  public:
    InstanceBuilder(const CMPIBroker* broker, CMPIObjectPath* path);

    void text(const char* property, const char* characters);
    void boolean(const char* property, bool value);
    void uint8(const char* property, CMPIUint8 number);
    void uint16(const char* property, CMPIUint16 number);
    void uint32(const char* property, CMPIUint32 number);
    void sint32(const char* property, CMPISint32 number);
    // `type` is the array's own: the elements' type with CMPI_ARRAY.
    void array(const char* property, CMPIArray* elements, CMPIType type);

    CMPIInstance* instance() const { return m_instance; }

  private:
    void set(const char* property, const CMPIValue* value, CMPIType type);

    CMPIInstance* m_instance;
};

#endif
