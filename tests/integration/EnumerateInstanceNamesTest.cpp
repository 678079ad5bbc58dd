#include "Provider.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class EnumerateInstanceNamesTest : public ProviderTest {};

TEST_F(EnumerateInstanceNamesTest, GivesEverySensorsPathWithOneKey) {
    inFreshProcess([] {
        useScenario(chipSensor(0x1a, "CPU", {50}) + chipSensor(2, "Fan", {900}));
        LoadedProvider loaded;
        loaded.broker.startRecording();
        const broker::Reply reply = loaded.provider.enumerateInstanceNames(classPath(SENSOR_CLASS));
        EXPECT_EQ(reply.status.rc, CMPI_RC_OK);
        EXPECT_FALSE(reply.status.message.has_value());
        EXPECT_EQ(reply.doneCalls, 1U);
        ASSERT_EQ(reply.paths.size(), 2U);
        EXPECT_EQ(describe(reply.paths[0]), "root/cimv2:TQS_NumericSensor Name=chars 'CPU(0000001a)'");
        EXPECT_EQ(describe(reply.paths[1]), "root/cimv2:TQS_NumericSensor Name=chars 'Fan(00000002)'");
        EXPECT_THAT(describe(loaded.broker.recordedCalls()),
                    ElementsAre("getNameSpace", "getClassName", "newObjectPath TQS_NumericSensor",
                                "addKey Name=chars 'CPU(0000001a)'", "returnObjectPath ref 'CPU(0000001a)'",
                                "newObjectPath TQS_NumericSensor", "addKey Name=chars 'Fan(00000002)'",
                                "returnObjectPath ref 'Fan(00000002)'", "returnDone"));
        EXPECT_EQ(loaded.broker.liveObjects(), 0U);
        EXPECT_EQ(loaded.broker.liveClones(), 0U);
    });
}

TEST_F(EnumerateInstanceNamesTest, ReadsNothingAndLogsItsOpening) {
    inFreshProcess([] {
        useScenario(chipSensor(1, "CPU", {50}));
        LoadedProvider loaded;
        const void* provider = loaded.provider.mi()->hdl;
        fakeclock::advanceMilliseconds(1000);
        takeLog();
        OutputCapture error(STDERR_FILENO);
        loaded.provider.enumerateInstanceNames(classPath(SENSOR_CLASS));
        EXPECT_EQ(error.take(), format("drvEnumInstanceNames - provider=%p\n", provider));
        EXPECT_THAT(takeLog(), ElementsAre(format("Debug drvEnumInstanceNames - provider=%p", provider),
                                           "Debug SensorProvider::enumInstanceNames - Reference object path: class = "
                                           "TQS_NumericSensor, namespace = root/cimv2\n"));
    });
}

TEST_F(EnumerateInstanceNamesTest, GivesTheEventLogsPathWithoutReadingTheLog) {
    inFreshProcess([] {
        useScenario(chipFault("event-log", "status = 1"));
        LoadedProvider loaded;
        loaded.broker.startRecording();
        const broker::Reply reply = loaded.provider.enumerateInstanceNames(classPath(LOG_CLASS));
        EXPECT_EQ(reply.status.rc, CMPI_RC_OK);
        EXPECT_EQ(reply.doneCalls, 1U);
        ASSERT_EQ(reply.paths.size(), 1U);
        EXPECT_EQ(describe(reply.paths[0]), "root/cimv2:TQS_SystemEventLog Name=chars 'Quorvel POS System Event Log'");
        EXPECT_THAT(describe(loaded.broker.recordedCalls()),
                    ElementsAre("getNameSpace", "getClassName", "newObjectPath TQS_SystemEventLog",
                                "addKey Name=chars 'Quorvel POS System Event Log'",
                                "returnObjectPath ref 'Quorvel POS System Event Log'", "returnDone"));
    });
}

TEST_F(EnumerateInstanceNamesTest, WithoutSensorsFails) {
    inFreshProcess([] {
        useScenario("");
        LoadedProvider loaded;
        takeLog();
        const broker::Reply reply = loaded.provider.enumerateInstanceNames(classPath(SENSOR_CLASS));
        EXPECT_EQ(reply.status.rc, CMPI_RC_ERR_FAILED);
        EXPECT_FALSE(reply.status.message.has_value());
        EXPECT_EQ(reply.doneCalls, 1U);
        EXPECT_THAT(reply.paths, IsEmpty());
        EXPECT_THAT(takeLastLog(1), ElementsAre("Debug SensorProvider::enumerateInstanceNames - No instances found"));
    });
}

}  // namespace
