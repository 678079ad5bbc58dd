#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <string>
#include <vector>

#include "CimModel.h"
#include "CimText.h"
#include "broker/Broker.h"

namespace {

// A broker whose instances keep the bytes behind each value pointer, as brokers do that copy the whole union.
struct SetValue {
    std::string property;
    CMPIType type;
    std::array<unsigned char, sizeof(CMPIValue)> bytes;
};

std::vector<SetValue> s_setValues;

CMPIStatus keepWholeValue(const CMPIInstance*, const char* name, const CMPIValue* value, CMPIType type) {
    SetValue set{name, type, {}};
    std::memcpy(set.bytes.data(), value, sizeof(CMPIValue));
    s_setValues.push_back(set);
    return {CMPI_RC_OK, nullptr};
}

CMPIInstance* giveTheOneInstance(const CMPIBroker*, const CMPIObjectPath*, CMPIStatus*) {
    static CMPIInstanceFT functions{};
    static CMPIInstance instance{};
    functions.setProperty = keepWholeValue;
    instance.ft = &functions;
    return &instance;
}

// Leaves something in the memory where the next call has its variables.
[[gnu::noinline]] void soilStack() {
    volatile unsigned char soil[1024];
    for (volatile unsigned char& byte : soil) byte = 0xEE;
}

class CopyingBroker {
  public:
    CopyingBroker() {
        s_setValues.clear();
        m_functions.newInstance = giveTheOneInstance;
        m_broker.eft = &m_functions;
    }
    const CMPIBroker* handle() const { return &m_broker; }

  private:
    CMPIBrokerEncFT m_functions{};
    CMPIBroker m_broker{};
};

}  // namespace

TEST(CimModelTest, ThrownStatusIsACopyWithItsMessage) {
    broker::Broker broker;
    const broker::Request request(broker);
    CMPIStatus given = {CMPI_RC_ERR_TYPE_MISMATCH, CMNewString(broker.handle(), "why", nullptr)};
    const CMPIStatus original = given;
    try {
        throwStatus(given);
    } catch (CMPIStatus* thrown) {
        given = {CMPI_RC_OK, nullptr};
        EXPECT_EQ(thrown->rc, original.rc);
        EXPECT_EQ(thrown->msg, original.msg);
        return;
    }
    FAIL() << "nothing was thrown";
}

TEST(CimModelTest, ThrownFailureHasNoMessage) {
    try {
        throwFailure();
    } catch (CMPIStatus* thrown) {
        EXPECT_EQ(thrown->rc, CMPI_RC_ERR_FAILED);
        EXPECT_EQ(thrown->msg, nullptr);
        return;
    }
    FAIL() << "nothing was thrown";
}

TEST(CimModelTest, NullObjectWithAGoodStatusIsAFailure) {
    broker::Broker broker;
    const broker::Request request(broker);
    broker.planFault("newObjectPath", 1, broker::Fault::ReturnNull);
    EXPECT_EQ(thrownCode([&] { newNamedPath(broker.handle(), "Any", "name"); }), CMPI_RC_ERR_FAILED);
    CMPIObjectPath* path = newNamedPath(broker.handle(), "Any", "name");
    broker.planFault("newInstance", 1, broker::Fault::ReturnNull);
    EXPECT_EQ(thrownCode([&] { InstanceBuilder(broker.handle(), path); }), CMPI_RC_ERR_FAILED);
}

TEST(CimModelTest, ObjectsOfARefusedInstanceStayTheBrokers) {
    broker::Broker broker;
    {
        const broker::Request request(broker);
        InstanceBuilder builder(broker.handle(), newNamedPath(broker.handle(), "Any", "name"));
        broker.planFault("setProperty", 1, broker::Fault::Refuse, CMPI_RC_ERR_ACCESS_DENIED);
        EXPECT_EQ(thrownCode([&] { builder.text("Caption", "text"); }), CMPI_RC_ERR_ACCESS_DENIED);
        EXPECT_GT(broker.liveObjects(), 0U);
    }
    EXPECT_EQ(broker.liveObjects(), 0U);
    EXPECT_EQ(broker.liveClones(), 0U);
}

// One broker copies all of a value, whatever its type.
TEST(CimModelTest, NumbersAndArraysTravelInAWholeZeroedValue) {
    const CopyingBroker broker;
    InstanceBuilder builder(broker.handle(), nullptr);
    soilStack();
    builder.uint8("a", 0xA1);
    soilStack();
    builder.uint16("b", 0xB1B2);
    soilStack();
    builder.uint32("c", 0xC1C2C3C4);
    soilStack();
    builder.sint32("d", -2);
    soilStack();
    builder.boolean("e", true);
    soilStack();
    builder.boolean("f", false);
    soilStack();
    builder.array("g", nullptr, CMPI_charsA);

    const std::vector<std::vector<unsigned char>> expected = {
        {0xA1}, {0xB2, 0xB1}, {0xC4, 0xC3, 0xC2, 0xC1}, {0xFE, 0xFF, 0xFF, 0xFF}, {1}, {0}, {0}};
    const std::vector<CMPIType> types = {CMPI_uint8,   CMPI_uint16,  CMPI_uint32, CMPI_sint32,
                                         CMPI_boolean, CMPI_boolean, CMPI_charsA};
    ASSERT_EQ(s_setValues.size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        std::array<unsigned char, sizeof(CMPIValue)> whole{};
        std::copy(expected[i].begin(), expected[i].end(), whole.begin());
        EXPECT_EQ(s_setValues[i].bytes, whole) << s_setValues[i].property;
        EXPECT_EQ(s_setValues[i].type, types[i]) << s_setValues[i].property;
    }
}
