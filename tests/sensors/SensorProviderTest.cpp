// What of the provider object no request shows: its inventory after a failed start, the event log after a failed read,
// and how exactly it takes the names of classes.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <string>

#include "FullLog.h"
#include "LogLines.h"
#include "Sandbox.h"
#include "SensorProvider.h"
#include "broker/Broker.h"

using testing::Contains;

namespace {

class OpenProvider : public SensorProvider {
  public:
    using SensorProvider::eventLog;
    using SensorProvider::sensors;
};

// Runs the body on a terminal of this scenario, in a process whose log takes every level.
void runOn(const std::string& scenario, const std::function<void()>& body) {
    const std::string path = "/etc/tarn/scenario.toml";
    std::ofstream(path) << scenario;
    runWithFullLog([&] {
        setenv("ZELCHIP_SCENARIO", path.c_str(), 1);
        body();
    });
}

constexpr char FOUR_SENSORS[] =
    "[[sensor]]\nhandle = 1\nname = \"a\"\nreading = 1\n"
    "[[sensor]]\nhandle = 2\nname = \"b\"\nreading = 2\n"
    "[[sensor]]\nhandle = 3\nname = \"c\"\nreading = 3\n"
    "[[sensor]]\nhandle = 4\nname = \"d\"\nreading = 4\n";

class ProviderObjectTest : public testing::Test {
  protected:
    void SetUp() override { REQUIRE_SANDBOX(); }
};

TEST_F(ProviderObjectTest, FailedThirdReadingLeavesTwoSensorsAndAnUninitialisedProvider) {
    runOn(std::string(FOUR_SENSORS) + "[[fault]]\noperation = \"read\"\nhandle = 3\nstatus = 7\n", [] {
        OpenProvider provider;
        provider.initialise(nullptr);
        EXPECT_FALSE(provider.isInitialised());
        ASSERT_EQ(provider.sensors.size(), 2U);
        EXPECT_STREQ(provider.sensors[0].getName(), "a(00000001)");
        EXPECT_STREQ(provider.sensors[1].getName(), "b(00000002)");
    });
}

TEST_F(ProviderObjectTest, FailedThirdDescriptionLeavesTwoSensorsToo) {
    runOn(std::string(FOUR_SENSORS) + "[[fault]]\noperation = \"information\"\nhandle = 3\nstatus = 7\n", [] {
        OpenProvider provider;
        provider.initialise(nullptr);
        EXPECT_FALSE(provider.isInitialised());
        EXPECT_EQ(provider.sensors.size(), 2U);
    });
}

TEST_F(ProviderObjectTest, EventLogThatCannotBeReadKeepsItsContents) {
    runOn(
        "[event-log]\nlines = [\"one\", \"two\"]\n"
        "[[fault]]\noperation = \"event-log\"\nfrom-call = 2\nstatus = 9\n",
        [] {
            OpenProvider provider;
            broker::Broker broker;
            const broker::Request request(broker);
            provider.initialise(nullptr);
            provider.updateLog();
            EXPECT_THROW(provider.updateLog(), CMPIStatus*);
            const broker::Instance instance = broker::copyOut(provider.eventLog.getInstance(broker.handle()));
            const broker::Value* lines = instance.findProperty("LogLines");
            ASSERT_NE(lines, nullptr);
            ASSERT_EQ(lines->elements.size(), 2U);
            EXPECT_EQ(lines->elements[1].text, "two");
        });
    EXPECT_THAT(loggedMessages(),
                Contains("SensorProvider::GetSystemEventLog - failed to get log information, sscode=0x00000009"));
}

TEST(ClassNamesTest, AreTakenExactly) {
    EXPECT_EQ(SensorProvider::getTqsInstanceClass("TQS_NumericSensor"), 0);
    EXPECT_EQ(SensorProvider::getTqsInstanceClass("TQS_SystemEventLog"), 1);
    for (const char* other : {"", "tqs_numericsensor", "TQS_NumericSensors", "TQS_NumericSenso", "CIM_NumericSensor"}) {
        EXPECT_EQ(SensorProvider::getTqsInstanceClass(other), -1) << other;
    }
}

}  // namespace
