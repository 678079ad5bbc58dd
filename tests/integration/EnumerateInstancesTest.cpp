#include "Provider.h"
#include "SensorProperties.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr char EVERYTHING[] =
    "sensor-type = 2\nbase-units = 4\nrate-units = 3\nunit-modifier = -1\nis-linear = false\naccuracy = -2\n"
    "hysteresis = 3\nlower-threshold-critical = -4\nlower-threshold-fatal = -5\nlower-threshold-non-critical = -6\n"
    "max-readable = 107\nmin-readable = -8\nnominal-reading = 9\nother-sensor-type-description = \"of a kind\"\n"
    "resolution = 10\nunread = 77\nupper-threshold-critical = 11\nupper-threshold-fatal = 12\n"
    "upper-threshold-non-critical = 13";

const Strings EVERY_PROPERTY = sensorProperties({{"Accuracy", "-2"},
                                                 {"BaseUnits", "4"},
                                                 {"Caption", "Temperature(0000001a)"},
                                                 {"CurrentReading", "50"},
                                                 {"Description", "CPU(0000001a): Temperature sensor"},
                                                 {"DeviceID", "0000001a"},
                                                 {"Hysteresis", "3"},
                                                 {"IsLinear", "false"},
                                                 {"LowerThresholdCritical", "-4"},
                                                 {"LowerThresholdFatal", "-5"},
                                                 {"LowerThresholdNonCritical", "-6"},
                                                 {"MaxReadable", "107"},
                                                 {"MinReadable", "-8"},
                                                 {"Name", "CPU(0000001a)"},
                                                 {"NominalReading", "9"},
                                                 {"OtherSensorTypeDescription", "of a kind"},
                                                 {"RateUnits", "3"},
                                                 {"Resolution", "10"},
                                                 {"SensorType", "2"},
                                                 {"UnitModifier", "-1"},
                                                 {"UpperThresholdCritical", "11"},
                                                 {"UpperThresholdFatal", "12"},
                                                 {"UpperThresholdNonCritical", "13"}});

constexpr char OPENING[] =
    "Debug SensorProvider::enumInstances - Reference object path: class = TQS_NumericSensor, namespace = root/cimv2\n";
constexpr char UPDATE[] = "Debug SensorProvider::UpdateReading (Sensor)";
constexpr char UNKNOWN_EXCEPTION[] = "Error SensorProvider::enumerateInstances -  Unknown Exception";
constexpr char NONE_FOUND[] = "Debug SensorProvider::enumerateInstances - No instances found";

const Strings CALLS_FOR_THE_EVENT_LOG = {
    "getNameSpace",
    "getClassName",
    "newObjectPath TQS_SystemEventLog",
    "addKey Name=chars 'Quorvel POS System Event Log'",
    "newInstance",
    "setProperty Caption=chars 'Quorvel POS System Event Log'",
    "setProperty CreationClassName=chars 'TQS_SystemEventLog'",
    "setProperty Description=chars 'The Quorvel POS System Event Log is a motherboard level storage "
    "device that contains a record of critical system events such as POST errors, disk check "
    "errors, etc.'",
    "setProperty DeviceID=chars 'Quorvel POS System Event Log'",
    "setProperty LogFull=boolean false",
    "newArray",
    "setElementAt chars 'first'",
    "setElementAt chars ''",
    "setElementAt chars 'third'",
    "setProperty LogLines=chars[] ['first', '', 'third']",
    "setProperty LogMultipleEventCountIncrement=uint8 255",
    "setProperty LogMultipleEventTimeWindow=uint8 60",
    "setProperty LogValid=boolean true",
    "setProperty Name=chars 'Quorvel POS System Event Log'",
    "setProperty SystemCreationClassName=chars 'Computer System'",
    "setProperty SystemName=chars 'Quorvel POS Sensor Drivers and System Event Log'",
    "returnInstance instance 'Quorvel POS System Event Log'",
    "returnDone"};

class EnumerateInstancesTest : public ProviderTest {};

TEST_F(EnumerateInstancesTest, SensorHasItsTwentySixPropertiesInOrder) {
    inFreshProcess([] {
        useScenario(chipSensor(0x1a, "CPU", {50}, EVERYTHING));
        LoadedProvider loaded;
        loaded.broker.startRecording();
        // The list of wanted properties is not looked at.
        const broker::Reply reply = loaded.provider.enumerateInstances(classPath(SENSOR_CLASS), {"Name"});
        EXPECT_EQ(reply.status.rc, CMPI_RC_OK);
        EXPECT_FALSE(reply.status.message.has_value());
        EXPECT_EQ(reply.doneCalls, 1U);
        ASSERT_EQ(reply.instances.size(), 1U);
        EXPECT_EQ(describe(reply.instances[0].properties), EVERY_PROPERTY);
        EXPECT_EQ(describe(reply.instances[0].path), "root/cimv2:TQS_NumericSensor Name=chars 'CPU(0000001a)'");

        Strings calls = {"getNameSpace", "getClassName", "newObjectPath TQS_NumericSensor",
                         "addKey Name=chars 'CPU(0000001a)'", "newInstance"};
        for (const std::string& property : EVERY_PROPERTY) calls.push_back("setProperty " + property);
        calls.insert(calls.end(), {"returnInstance instance 'CPU(0000001a)'", "returnDone"});
        EXPECT_EQ(describe(loaded.broker.recordedCalls()), calls);
        EXPECT_EQ(loaded.broker.liveObjects(), 0U);
        EXPECT_EQ(loaded.broker.liveClones(), 0U);
    });
}

TEST_F(EnumerateInstancesTest, ValuesThatTheChipLacksAreLeftOut) {
    inFreshProcess([] {
        useScenario(chipSensor(1, "CPU", {-2147483647 - 1}));
        LoadedProvider loaded;
        const broker::Reply reply = loaded.provider.enumerateInstances(classPath(SENSOR_CLASS));
        ASSERT_EQ(reply.instances.size(), 1U);
        EXPECT_EQ(describe(reply.instances[0].properties),
                  sensorProperties({{"BaseUnits", "0"},
                                    {"Caption", "Unknown(00000001)"},
                                    {"CurrentReading", "-2147483648"},
                                    {"Description", "CPU(00000001): Unknown sensor"},
                                    {"DeviceID", "00000001"},
                                    {"IsLinear", "true"},
                                    {"Name", "CPU(00000001)"},
                                    {"OtherSensorTypeDescription", ""},
                                    {"RateUnits", "0"},
                                    {"SensorType", "0"},
                                    {"UnitModifier", "0"}}));
    });
}

TEST_F(EnumerateInstancesTest, ReadsWhatIsDueAndServesTheRestAsItIs) {
    inFreshProcess([] {
        useScenario(chipSensor(1, "A", {10, 11, 12}) + chipSensor(2, "B", {20, 21, 22}));
        LoadedProvider loaded;
        const void* provider = loaded.provider.mi()->hdl;
        fakeclock::advanceMilliseconds(999);
        takeLog();
        OutputCapture error(STDERR_FILENO);
        EXPECT_THAT(propertyOf(loaded.provider.enumerateInstances(classPath(SENSOR_CLASS)), "CurrentReading"),
                    ElementsAre("10", "20"));
        const std::string notDue =
            "now=1000:999000us, prev=1000:0us\nno need to read - diff is 999, update interval is 1000\n";
        EXPECT_EQ(error.take(), notDue + notDue);
        EXPECT_THAT(takeLog(),
                    ElementsAre(format("Debug drvEnumInstances - provider=%p", provider), OPENING, UPDATE,
                                "Trace SensorProvider::UpdateReading - No need to update sensor 0x00000001 yet", UPDATE,
                                "Trace SensorProvider::UpdateReading - No need to update sensor 0x00000002 yet"));

        fakeclock::advanceMilliseconds(1);
        EXPECT_THAT(propertyOf(loaded.provider.enumerateInstances(classPath(SENSOR_CLASS)), "CurrentReading"),
                    ElementsAre("11", "21"));
        const std::string due = "now=1001:0us, prev=1000:0us\nread sensor - diff was 1000, update interval is 1000\n";
        EXPECT_EQ(error.take(), due + due);
        EXPECT_THAT(takeLog(),
                    ElementsAre(format("Debug drvEnumInstances - provider=%p", provider), OPENING, UPDATE, UPDATE));
    });
}

TEST_F(EnumerateInstancesTest, WithoutSensorsFails) {
    inFreshProcess([] {
        useScenario("");
        LoadedProvider loaded;
        takeLog();
        const broker::Reply reply = loaded.provider.enumerateInstances(classPath(SENSOR_CLASS));
        EXPECT_EQ(reply.status.rc, CMPI_RC_ERR_FAILED);
        EXPECT_EQ(reply.doneCalls, 1U);
        EXPECT_THAT(reply.instances, IsEmpty());
        EXPECT_THAT(takeLastLog(1), ElementsAre(NONE_FOUND));
    });
}

TEST_F(EnumerateInstancesTest, FailedReadingOfTheThirdSensorKeepsTheFirstTwo) {
    inFreshProcess([] {
        useScenario(chipSensor(1, "A", {10, 11}) + chipSensor(2, "B", {20, 21}) + chipSensor(0xcc, "C", {30, 31, 32}) +
                    chipFault("read", "handle = 0xcc\nfrom-call = 2\ncalls = 1\nstatus = 0x0badcafe"));
        LoadedProvider loaded;
        fakeclock::advanceMilliseconds(1000);
        takeLog();
        const broker::Reply partial = loaded.provider.enumerateInstances(classPath(SENSOR_CLASS));
        EXPECT_EQ(partial.status.rc, CMPI_RC_ERR_FAILED);
        EXPECT_EQ(partial.doneCalls, 1U);
        EXPECT_THAT(propertyOf(partial, "CurrentReading"), ElementsAre("11", "21"));
        EXPECT_THAT(takeLastLog(3),
                    ElementsAre(UPDATE,
                                "Error SensorProvider::UpdateReading - failed to read sensor 0x000000cc, "
                                "sscode=0x0badcafe",
                                UNKNOWN_EXCEPTION));

        // The failed reading counts as one: the next is due an interval later, and the inventory is whole.
        EXPECT_THAT(propertyOf(loaded.provider.enumerateInstances(classPath(SENSOR_CLASS)), "CurrentReading"),
                    ElementsAre("11", "21", "30"));
    });
}

TEST_F(EnumerateInstancesTest, FailedReadingOfTheFirstSensorFindsNothing) {
    inFreshProcess([] {
        useScenario(chipSensor(1, "A", {10}) + chipFault("read", "from-call = 2\nstatus = 5"));
        LoadedProvider loaded;
        fakeclock::advanceMilliseconds(1000);
        takeLog();
        const broker::Reply reply = loaded.provider.enumerateInstances(classPath(SENSOR_CLASS));
        EXPECT_EQ(reply.status.rc, CMPI_RC_ERR_FAILED);
        EXPECT_EQ(reply.doneCalls, 1U);
        EXPECT_THAT(reply.instances, IsEmpty());
        EXPECT_THAT(takeLastLog(3),
                    ElementsAre("Error SensorProvider::UpdateReading - failed to read sensor 0x00000001, "
                                "sscode=0x00000005",
                                UNKNOWN_EXCEPTION, NONE_FOUND));
    });
}

TEST_F(EnumerateInstancesTest, EventLogHasItsTwelvePropertiesInOrder) {
    inFreshProcess([] {
        useScenario(
            "[event-log]\nvalid = true\nfull = false\nmultiple-event-count-increment = 255\n"
            "multiple-event-time-window = 60\nlines = [\"first\", \"\", \"third\"]\n");
        LoadedProvider loaded;
        loaded.broker.startRecording();
        const broker::Reply reply = loaded.provider.enumerateInstances(classPath(LOG_CLASS));
        EXPECT_EQ(reply.status.rc, CMPI_RC_OK);
        EXPECT_EQ(reply.doneCalls, 1U);
        EXPECT_EQ(reply.instances.size(), 1U);
        EXPECT_EQ(describe(loaded.broker.recordedCalls()), CALLS_FOR_THE_EVENT_LOG);
        EXPECT_THAT(takeLastLog(1), ElementsAre("Debug SensorProvider::GetSystemEventLog"));
        EXPECT_EQ(loaded.broker.liveObjects(), 0U);
    });
}

TEST_F(EnumerateInstancesTest, EventLogWithoutLinesHasNoLogLines) {
    inFreshProcess([] {
        useScenario("[event-log]\nvalid = false\nfull = true\n");
        LoadedProvider loaded;
        const broker::Reply reply = loaded.provider.enumerateInstances(classPath(LOG_CLASS));
        ASSERT_EQ(reply.instances.size(), 1U);
        EXPECT_EQ(reply.instances[0].properties.size(), 11U);
        EXPECT_THAT(propertyOf(reply, "LogLines"), ElementsAre("absent"));
        EXPECT_THAT(propertyOf(reply, "LogFull"), ElementsAre("true"));
        EXPECT_THAT(propertyOf(reply, "LogValid"), ElementsAre("false"));
    });
}

TEST_F(EnumerateInstancesTest, FailedReadingOfTheEventLogFindsNothing) {
    inFreshProcess([] {
        useScenario("[event-log]\nlines = [\"one\"]\n" + chipFault("event-log", "calls = 1\nstatus = 0xdead"));
        LoadedProvider loaded;
        takeLog();
        const broker::Reply reply = loaded.provider.enumerateInstances(classPath(LOG_CLASS));
        EXPECT_EQ(reply.status.rc, CMPI_RC_ERR_FAILED);
        EXPECT_FALSE(reply.status.message.has_value());
        EXPECT_EQ(reply.doneCalls, 1U);
        EXPECT_THAT(reply.instances, IsEmpty());
        EXPECT_THAT(takeLastLog(3), ElementsAre("Error SensorProvider::GetSystemEventLog - failed to get log "
                                                "information, sscode=0x0000dead",
                                                UNKNOWN_EXCEPTION, NONE_FOUND));
        EXPECT_THAT(propertyOf(loaded.provider.enumerateInstances(classPath(LOG_CLASS)), "LogLines"),
                    ElementsAre("['one']"));
    });
}

}  // namespace
