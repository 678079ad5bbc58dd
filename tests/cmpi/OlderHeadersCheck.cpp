// Compiles only with headers of the older generation: so the test that compiles the provider with them is worth
// something.
#include <cmpi/cmpift.h>

#include <type_traits>

#if defined(CMPI_VER_210) || defined(CMPIVersion210) || CMPICurrentVersion != 200
#error "headers of level 210"
#endif
#if !defined(CMSetProperty) || !defined(CMGetCharPtr) || !defined(CMNewString) || !defined(CMInstanceMIStub)
#error "functions instead of macros, or cmpimacs.h is not brought by cmpift.h"
#endif

enum { CMPIVersion, CMPICodepageID, CMPIPropertyList, CMPI_RC_NO_MORE_ELEMENTS, CBGetCapabilities };

static_assert(sizeof(CMPIBrokerFT) == 160 && sizeof(CMPIBrokerEncFT) == 168 && sizeof(CMPIBrokerExtFT) == 168 &&
              sizeof(CMPIInstanceMIFT) == 80 && sizeof(CMPIBroker) == 40);
static_assert(std::is_same_v<decltype(CMPIBrokerFT::brokerVersion), unsigned int>);
static_assert(std::is_same_v<decltype(CMPIString::hdl), void*>);
static_assert(std::is_same_v<decltype(CMPIInstanceMI::hdl), const void*>);
static_assert(std::is_same_v<decltype(CMPIInstanceMI::ft), CMPIInstanceMIFT*>);
static_assert(std::is_same_v<decltype(CMPIBroker::eft), CMPIBrokerEncFT*>);
static_assert(std::is_same_v<decltype(CMPIObjectPathFT::addKey),
                             CMPIStatus (*)(CMPIObjectPath*, const char*, const CMPIValue*, CMPIType)>);
static_assert(std::is_same_v<decltype(CMPIObjectPathFT::setNameSpaceFromObjectPath),
                             CMPIStatus (*)(CMPIObjectPath*, const CMPIObjectPath*)>);
static_assert(std::is_same_v<decltype(CMPIErrorFT::setErrorType), CMPIStatus (*)(CMPIError*, CMPIErrorType)>);
static_assert(std::is_same_v<decltype(CMPIInstanceFT::setProperty),
                             CMPIStatus (*)(const CMPIInstance*, const char*, const CMPIValue*, CMPIType)>);
static_assert(std::is_same_v<decltype(CMPIBrokerEncFT::trace),
                             CMPIStatus (*)(const CMPIBroker*, int, const char*, const char*, const CMPIString*)>);

// A value argument is cast by the macro.
CMPIStatus named(CMPIInstance* instance, CMPIObjectPath* path) {
    CMAddKey(path, "Name", "text", CMPI_chars);
    return CMSetProperty(instance, "Name", "text", CMPI_chars);
}

char* handleAsText(const CMPIString* string) {
    return CMGetCharPtr(string);
}

CMPIStatus failed(const CMPIBroker* broker) {
    CMReturnWithChars(broker, CMPI_RC_ERR_FAILED, "text")
}
