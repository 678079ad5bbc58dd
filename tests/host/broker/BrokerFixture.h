// A broker with a request under way, and short ways to CMPI's calls.
#ifndef ZELSENSORS_TESTS_HOST_BROKERFIXTURE_H
#define ZELSENSORS_TESTS_HOST_BROKERFIXTURE_H

#include <gmock/gmock.h>

#include <string>

#include "broker/Broker.h"

// Characters as CMPI takes them where a value is asked for.
inline const CMPIValue* chars(const char* text) {
    return reinterpret_cast<const CMPIValue*>(text);
}

inline CMPIValue uint32Value(CMPIUint32 number) {
    CMPIValue value{};
    value.uint32 = number;
    return value;
}

inline std::string textOf(const CMPIString* string) {
    return string == nullptr ? "(null)" : string->ft->getCharPtr(string, nullptr);
}

class BrokerTest : public testing::Test {
  protected:
    explicit BrokerTest(const broker::BrokerOptions& options = {}) : broker(options) {}

    CMPIString* newString(const char* text) { return mb->eft->newString(mb, text, nullptr); }
    CMPIValue stringValue(const char* text) {
        CMPIValue value{};
        value.string = newString(text);
        return value;
    }
    CMPIObjectPath* newPath(const char* className = "Test_Class") {
        return mb->eft->newObjectPath(mb, "root/cimv2", className, nullptr);
    }
    CMPIInstance* newInstance() { return mb->eft->newInstance(mb, newPath(), nullptr); }

    broker::Broker broker;
    broker::Request request{broker};
    const CMPIBroker* mb = broker.handle();
    CMPIStatus status{};
};

#endif
