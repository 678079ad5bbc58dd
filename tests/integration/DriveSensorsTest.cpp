// The drive sensors of a Grebel terminal, from the ioctl to the instance.
#include <algorithm>
#include <filesystem>

#include "Provider.h"
#include "SensorProperties.h"

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

constexpr char FIRST[] = "SSD1 Temperature(00000001)";
constexpr char SECOND[] = "SSD2 Temperature(00000002)";

// Destructions of the drives' copies come as often as the C++ library copies.
Strings takeLogWithoutDestructions() {
    Strings log = takeLog();
    log.erase(std::remove(log.begin(), log.end(), "Debug SsdDevice destroyed"), log.end());
    return log;
}

std::string node(unsigned number) {
    return "/dev/nvme" + std::to_string(number);
}

class DriveSensorsTest : public ProviderTest {
  protected:
    void SetUp() override {
        ProviderTest::SetUp();
        if (!IsSkipped()) sandbox::writeSensorConfiguration("NvmeReadings=1\n");
    }

    // That many drives, numbered from 0, answer their identification and then a first reading of 40, 41, ... °C.
    static void expectDrives(unsigned count) {
        for (unsigned i = 0; i < count; ++i) {
            drives::makeNode(node(i));
            drives::Drive drive;
            drive.serial = "SN" + std::to_string(i);
            drive.underThresholdKelvin = 273 + i;
            drive.overThresholdKelvin = 343 + i;
            drives::expect(drives::identification(node(i), drive));
        }
        for (unsigned i = 0; i < count; ++i)
            drives::expect(drives::healthPage(node(i), static_cast<std::uint16_t>(313 + i)));
    }

    static std::string grebel(const std::string& sensors) { return "model = \"grebel\"\n" + sensors; }
};

TEST_F(DriveSensorsTest, FollowTheChipSensorsOnePerDrive) {
    inFreshProcess([] {
        expectDrives(2);
        useScenario(grebel(chipSensor(0x10, "CPU", {50})));
        LoadedProvider loaded;
        drives::verifyAllMet();
        const broker::Reply names = loaded.provider.enumerateInstanceNames(classPath(SENSOR_CLASS));
        EXPECT_THAT(namesOf(names.paths), ElementsAre("CPU(00000010)", FIRST, SECOND));
        const broker::Reply reply = loaded.provider.enumerateInstances(classPath(SENSOR_CLASS));
        ASSERT_EQ(reply.instances.size(), 3U);
        EXPECT_EQ(describe(reply.instances[1].properties), sensorProperties(driveSensorValues(1, 40, 0, 70)));
        EXPECT_EQ(describe(reply.instances[2].properties), sensorProperties(driveSensorValues(2, 41, 1, 71)));
    });
}

// Sensors and drives are paired by position; with a gap in the numbering they do not match, and that is kept.
TEST_F(DriveSensorsTest, OnlyDriveNumberedOneIsReadFromNumberNull) {
    inFreshProcess([] {
        drives::makeNode(node(1));
        drives::expect(drives::identification(node(1), {}));
        useScenario(grebel(""));
        LoadedProvider loaded;
        drives::verifyAllMet();
        drives::makeNode(node(0));
        fakeclock::advanceMilliseconds(1000);
        drives::expect(drives::healthPage(node(0), 300));
        EXPECT_THAT(propertyOf(loaded.provider.getInstance(namedPath(SENSOR_CLASS, FIRST)), "CurrentReading"),
                    ElementsAre("27"));
        drives::verifyAllMet();
    });
}

TEST_F(DriveSensorsTest, SettingUpLogsEveryStep) {
    inFreshProcess([] {
        expectDrives(1);
        useScenario(grebel(""));
        const LoadedProvider loaded;
        Strings log = takeLogWithoutDestructions();
        log.erase(log.begin(), std::find(log.begin(), log.end(), "Debug SensorProvider::InitSensorProvider"));
        EXPECT_THAT(
            log,
            ElementsAre("Debug SensorProvider::InitSensorProvider", "Debug AdditionalInfo::initialise is grebel",
                        "Info Processing additionals for Grebel machine", "Debug NvmeSsd::scanNVMeDevices",
                        "Debug NvmeSsd::getIdentifyNVMeData - Under Temperature Threshold RESULT: 273\n",
                        "Debug NvmeSsd::getIdentifyNVMeData - Over Temperature Threshold RESULT: 343\n",
                        "Debug Model Number: ZEL SSD                                 ",
                        "Debug Serial Number: SN0                 ", "Debug Firmware Version: 1.0     ",
                        "Debug SsdDevice constructed", "Debug NvmeSsd::addSsdDevice",
                        "Debug SsdDevice::initialise - drive nvme0 devPath /dev/nvme0",
                        "Debug NvmeSsd::getSsdTemperature - starting", "Info SensorProvider created and initialised"));
    });
}

TEST_F(DriveSensorsTest, WithoutDrivesThereAreOnlyTheChipSensors) {
    inFreshProcess([] {
        useScenario(grebel(chipSensor(1, "CPU", {50})));
        LoadedProvider loaded;
        EXPECT_THAT(takeLastLog(4),
                    ElementsAre("Info Processing additionals for Grebel machine", "Debug NvmeSsd::scanNVMeDevices",
                                "Debug AdditionalInfo::processGrebel - NvmeSsd devices not added.",
                                "Info SensorProvider created and initialised"));
        EXPECT_EQ(loaded.provider.enumerateInstanceNames(classPath(SENSOR_CLASS)).paths.size(), 1U);
    });
}

TEST_F(DriveSensorsTest, SwitchedOffNothingIsScanned) {
    inFreshProcess([] {
        sandbox::writeSensorConfiguration("NvmeReadings=0\n");
        drives::makeNode(node(0));
        useScenario(grebel(chipSensor(1, "CPU", {50})));
        LoadedProvider loaded;
        EXPECT_EQ(drives::callCount(), 0U);
        EXPECT_THAT(takeLog(), Not(Contains(HasSubstr("grebel"))));
        EXPECT_EQ(loaded.provider.enumerateInstanceNames(classPath(SENSOR_CLASS)).paths.size(), 1U);
    });
}

TEST_F(DriveSensorsTest, WithoutTheConfigurationFileTheyAreOff) {
    inFreshProcess([] {
        sandbox::reset();
        drives::makeNode(node(0));
        useScenario(grebel(chipSensor(1, "CPU", {50})));
        LoadedProvider loaded;
        EXPECT_EQ(drives::callCount(), 0U);
        EXPECT_EQ(loaded.provider.enumerateInstanceNames(classPath(SENSOR_CLASS)).paths.size(), 1U);
    });
}

TEST_F(DriveSensorsTest, OneInstanceIsReadFromTheDriveItself) {
    inFreshProcess([] {
        expectDrives(3);
        useScenario(grebel(chipSensor(2, "CPU", {50, 51, 52})));
        LoadedProvider loaded;
        fakeclock::advanceMilliseconds(1000);
        drives::expect(drives::healthPage(node(2), 323));
        takeLog();
        OutputCapture error(STDERR_FILENO);
        const broker::Reply reply = loaded.provider.getInstance(namedPath(SENSOR_CLASS, "SSD3 Temperature(00000003)"));
        EXPECT_EQ(reply.status.rc, CMPI_RC_OK);
        EXPECT_THAT(propertyOf(reply, "CurrentReading"), ElementsAre("50"));
        EXPECT_EQ(error.take(), "now=1001:0us, prev=1000:0us\nread sensor - diff was 1000, update interval is 1000\n");
        Strings expected = {"Debug AdditionalInfo::UpdateReading (Sensor)"};
        for (const char* drive : {"nvme0", "nvme1", "nvme2"})
            expected.push_back(std::string("Debug AdditionalInfo::UpdateReading - Adding SsdDevice devPath=/dev/") +
                               drive + ", fw_rev=1.0     , physicalDisk=" + drive);
        expected.emplace_back("Debug NvmeSsd::getSsdTemperature - starting");
        Strings log = takeLogWithoutDestructions();
        log.erase(log.begin(), std::find(log.begin(), log.end(), expected.front()));
        EXPECT_EQ(log, expected);
    });
}

TEST_F(DriveSensorsTest, WithinTheIntervalTheDriveIsNotTouched) {
    inFreshProcess([] {
        expectDrives(1);
        useScenario(grebel(""));
        LoadedProvider loaded;
        const unsigned calls = drives::callCount();
        fakeclock::advanceMilliseconds(999);
        EXPECT_THAT(propertyOf(loaded.provider.getInstance(namedPath(SENSOR_CLASS, FIRST)), "CurrentReading"),
                    ElementsAre("40"));
        EXPECT_EQ(takeLog().back(),
                  "Debug SensorProvider::UpdateReading - No need to update sensor SSD1 Temperature(00000001) yet");
        fakeclock::advanceMilliseconds(1);
        drives::expect(drives::healthPage(node(0), 320));
        EXPECT_THAT(propertyOf(loaded.provider.getInstance(namedPath(SENSOR_CLASS, FIRST)), "CurrentReading"),
                    ElementsAre("47"));
        fakeclock::advanceMilliseconds(999);
        EXPECT_THAT(propertyOf(loaded.provider.getInstance(namedPath(SENSOR_CLASS, FIRST)), "CurrentReading"),
                    ElementsAre("47"));
        EXPECT_EQ(drives::callCount(), calls + 1);
    });
}

TEST_F(DriveSensorsTest, BelowZeroShowsAsALargeReading) {
    inFreshProcess([] {
        expectDrives(1);
        useScenario(grebel(""));
        LoadedProvider loaded;
        fakeclock::advanceMilliseconds(1000);
        drives::expect(drives::healthPage(node(0), 272));
        EXPECT_THAT(propertyOf(loaded.provider.getInstance(namedPath(SENSOR_CLASS, FIRST)), "CurrentReading"),
                    ElementsAre("65535"));
    });
}

TEST_F(DriveSensorsTest, DriveThatCannotBeReadShowsZero) {
    inFreshProcess([] {
        expectDrives(1);
        useScenario(grebel(""));
        LoadedProvider loaded;
        std::filesystem::remove(node(0));
        fakeclock::advanceMilliseconds(1000);
        takeLog();
        OutputCapture error(STDERR_FILENO);
        const broker::Reply reply = loaded.provider.getInstance(namedPath(SENSOR_CLASS, FIRST));
        EXPECT_EQ(reply.status.rc, CMPI_RC_OK);
        EXPECT_THAT(propertyOf(reply, "CurrentReading"), ElementsAre("0"));
        EXPECT_THAT(error.take(), testing::EndsWith("\n/dev/nvme0: No such file or directory\n"));
        EXPECT_THAT(takeLog(), Contains("Error NvmeSsd::getSsdTemperature - Error while read /dev/nvme0 file"));
    });
}

TEST_F(DriveSensorsTest, EnumerationThatIsDueAsksTheChipForTheDrivesHandles) {
    inFreshProcess([] {
        expectDrives(2);
        const unsigned callsAtStart = 12;
        useScenario(grebel(chipSensor(0, "CPU", {50, 51, 52}) + chipSensor(1, "Fan", {900, 901, 902})));
        LoadedProvider loaded;
        EXPECT_EQ(drives::callCount(), callsAtStart);
        fakeclock::advanceMilliseconds(1000);
        const broker::Reply reply = loaded.provider.enumerateInstances(classPath(SENSOR_CLASS));
        EXPECT_EQ(reply.status.rc, CMPI_RC_OK);
        EXPECT_THAT(propertyOf(reply, "Name"), ElementsAre("CPU(00000000)", "Fan(00000001)", FIRST, SECOND));
        EXPECT_THAT(propertyOf(reply, "CurrentReading"), ElementsAre("51", "901", "52", "902"));
        EXPECT_EQ(drives::callCount(), callsAtStart);
    });
}

TEST_F(DriveSensorsTest, EnumerationThatIsDueEndsEarlyWhereTheChipLacksTheDrivesHandle) {
    inFreshProcess([] {
        expectDrives(2);
        useScenario(grebel(chipSensor(0x10, "CPU", {50, 51})));
        LoadedProvider loaded;
        fakeclock::advanceMilliseconds(1000);
        takeLog();
        const broker::Reply reply = loaded.provider.enumerateInstances(classPath(SENSOR_CLASS));
        EXPECT_EQ(reply.status.rc, CMPI_RC_ERR_FAILED);
        EXPECT_EQ(reply.doneCalls, 1U);
        EXPECT_THAT(propertyOf(reply, "Name"), ElementsAre("CPU(00000010)"));
        EXPECT_THAT(takeLastLog(2), ElementsAre("Error SensorProvider::UpdateReading - failed to read sensor "
                                                "0x00000000, sscode=0xe0000003",
                                                "Error SensorProvider::enumerateInstances -  Unknown Exception"));
    });
}

TEST_F(DriveSensorsTest, ChipSensorOfTheSameNameIsFoundFirst) {
    inFreshProcess([] {
        expectDrives(1);
        useScenario(grebel(chipSensor(1, "SSD1 Temperature", {77, 78})));
        LoadedProvider loaded;
        fakeclock::advanceMilliseconds(1000);
        EXPECT_THAT(propertyOf(loaded.provider.getInstance(namedPath(SENSOR_CLASS, FIRST)), "CurrentReading"),
                    ElementsAre("78"));
    });
}

TEST_F(DriveSensorsTest, CleanupForgetsTheDrives) {
    inFreshProcess([] {
        expectDrives(1);
        useScenario(grebel(""));
        LoadedProvider loaded;
        takeLog();
        loaded.provider.cleanUp(true);
        EXPECT_THAT(takeLastLog(2),
                    ElementsAre("Info SensorProvider - provider destroyed", "Debug SsdDevice destroyed"));
        EXPECT_EQ(loaded.provider.enumerateInstances(classPath(SENSOR_CLASS)).status.rc, 16);
    });
}

}  // namespace
