#include <algorithm>

#include "Provider.h"

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::EndsWith;
using testing::Not;

class InventoryTest : public ProviderTest {
  protected:
    // The log of a start that fails, from the building of the inventory on. The terminal would have drive sensors. No
    // failed call is made again: the faults hit one call each.
    static Strings failedStart(const std::string& scenario) {
        sandbox::writeSensorConfiguration("NvmeReadings=1\n");
        useScenario("model = \"grebel\"\n" + scenario);
        LoadedProvider loaded;
        EXPECT_EQ(loaded.provider.enumerateInstances(classPath(SENSOR_CLASS)).status.rc, 16);
        Strings log = takeLog();
        log.erase(log.begin(), std::find(log.begin(), log.end(), "Debug SensorProvider::InitSensorProvider"));
        log.erase(log.end() - 2, log.end());  // the request's
        return log;
    }
};

TEST_F(InventoryTest, EverySensorTypeHasItsWord) {
    inFreshProcess([] {
        std::string scenario;
        for (unsigned type = 0; type <= 12; ++type)
            scenario += chipSensor(0x10 + type, "S", {0}, "sensor-type = " + std::to_string(type));
        scenario += chipSensor(0x1d, "S", {0}, "sensor-type = 65535");
        useScenario(scenario);
        LoadedProvider loaded;
        const broker::Reply reply = loaded.provider.enumerateInstances(classPath(SENSOR_CLASS));
        EXPECT_THAT(propertyOf(reply, "Caption"),
                    ElementsAre("Unknown(00000010)", "Other(00000011)", "Temperature(00000012)", "Voltage(00000013)",
                                "Current(00000014)", "Tachometer(00000015)", "Counter(00000016)", "Switch(00000017)",
                                "Lock(00000018)", "Humidity(00000019)", "SmokeDetection(0000001a)",
                                "Presence(0000001b)", "Unknown(0000001c)", "Unknown(0000001d)"));
        EXPECT_EQ(propertyOf(reply, "Description")[2], "S(00000012): Temperature sensor");
    });
}

TEST_F(InventoryTest, HandlesAreLowerCaseHexadecimalWithoutPrefix) {
    inFreshProcess([] {
        useScenario(chipSensor(0xABCDEF01, "CPU", {0}, "sensor-type = 2"));
        LoadedProvider loaded;
        const broker::Reply reply = loaded.provider.enumerateInstances(classPath(SENSOR_CLASS));
        EXPECT_THAT(propertyOf(reply, "DeviceID"), ElementsAre("abcdef01"));
        EXPECT_THAT(propertyOf(reply, "Name"), ElementsAre("CPU(abcdef01)"));
        EXPECT_THAT(propertyOf(reply, "Caption"), ElementsAre("Temperature(abcdef01)"));
    });
}

TEST_F(InventoryTest, SensorsKeepTheOrderOfTheChip) {
    inFreshProcess([] {
        useScenario(chipSensor(9, "B", {0}) + chipSensor(2, "C", {0}) + chipSensor(5, "A", {0}));
        LoadedProvider loaded;
        EXPECT_THAT(namesOf(loaded.provider.enumerateInstanceNames(classPath(SENSOR_CLASS)).paths),
                    ElementsAre("B(00000009)", "C(00000002)", "A(00000005)"));
    });
}

TEST_F(InventoryTest, WithoutHandlesTheAdditionalSensorsAreStillSetUp) {
    inFreshProcess([] {
        sandbox::writeSensorConfiguration("NvmeReadings=1\n");
        useScenario("model = \"grebel\"\n");
        LoadedProvider loaded;
        const Strings log = takeLog();
        EXPECT_THAT(log, Contains("Debug AdditionalInfo::initialise is grebel"));
        EXPECT_EQ(log.back(), "Info SensorProvider created and initialised");
        EXPECT_EQ(loaded.provider.enumerateInstances(classPath(SENSOR_CLASS)).status.rc, CMPI_RC_ERR_FAILED);
    });
}

TEST_F(InventoryTest, FailedEnumerationOfHandlesEndsTheStart) {
    inFreshProcess([] {
        EXPECT_THAT(failedStart(chipSensor(1, "CPU", {0}) + chipFault("enumerate", "calls = 1\nstatus = 0xa1")),
                    ElementsAre("Debug SensorProvider::InitSensorProvider",
                                "Error SensorProvider::InitSensorProvider - EnumerateSensorHandles failed, "
                                "sscode=0x000000a1",
                                "Error SensorProvider::initialize - initSensorProvider failed - sscode=0x000000a1"));
    });
}

TEST_F(InventoryTest, FailedSensorInformationEndsTheStart) {
    inFreshProcess([] {
        EXPECT_THAT(failedStart(chipSensor(1, "A", {0}) + chipSensor(2, "B", {0}) +
                                chipFault("information", "handle = 1\ncalls = 1\nstatus = 0x80000001") +
                                chipFault("information", "handle = 2\nstatus = 2")),
                    ElementsAre("Debug SensorProvider::InitSensorProvider",
                                "Error SensorProvider::initSensorProvider - GetSensorInformation failed, "
                                "sscode=0x80000001\n",
                                "Error SensorProvider::initialize - initSensorProvider failed - sscode=0x80000001"));
    });
}

TEST_F(InventoryTest, FailedFirstReadingOfTheThirdSensorEndsTheStart) {
    inFreshProcess([] {
        EXPECT_THAT(failedStart(chipSensor(1, "A", {0}) + chipSensor(2, "B", {0}) + chipSensor(3, "C", {0}) +
                                chipSensor(4, "D", {0}) + chipFault("read", "handle = 3\ncalls = 1\nstatus = 0x33") +
                                chipFault("information", "handle = 4\nstatus = 0x44")),
                    ElementsAre("Debug SensorProvider::InitSensorProvider",
                                "Error SensorProvider::initSensorProvider - ReadSensor failed, sscode=0x00000033",
                                "Error SensorProvider::initialize - initSensorProvider failed - sscode=0x00000033"));
    });
}

}  // namespace
