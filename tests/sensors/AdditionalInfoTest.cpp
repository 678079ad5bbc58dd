#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

#include "AdditionalInfo.h"
#include "CimText.h"
#include "FakeClock.h"
#include "FakeDrives.h"
#include "FullLog.h"
#include "LogLines.h"
#include "Sandbox.h"
#include "SensorProperties.h"
#include "broker/Broker.h"

using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

class OpenAdditionalInfo : public AdditionalInfo {
  public:
    using AdditionalInfo::initialised;
};

class AdditionalSensorsTest : public testing::Test {
  protected:
    void SetUp() override { REQUIRE_SANDBOX(); }

    // Runs the body on a terminal of this model, whose clock stands still.
    static std::string runOnModel(const std::string& model, const std::function<void()>& body) {
        const std::string scenario = "/etc/tarn/scenario.toml";
        std::ofstream(scenario) << "model = \"" << model << "\"\n";
        return runWithFullLog([&] {
            setenv("ZELCHIP_SCENARIO", scenario.c_str(), 1);
            fakeclock::set({1000, 0});
            body();
        });
    }

    // What this class logs, the drives' messages left out.
    static std::vector<std::string> ownMessages() {
        std::vector<std::string> own;
        for (const std::string& message : loggedMessages()) {
            if (message.rfind("NvmeSsd::", 0) != 0 && message.rfind("SsdDevice", 0) != 0 &&
                message.find("Number: ") == std::string::npos && message.rfind("Firmware Version: ", 0) != 0) {
                own.push_back(message);
            }
        }
        return own;
    }
};

std::string nodeOf(unsigned position) {
    return "/dev/nvme" + std::to_string(position);
}

// As many drives as there are temperatures, which are what the first reading gives.
void expectDrives(const std::vector<std::uint16_t>& kelvin) {
    for (unsigned i = 0; i < kelvin.size(); ++i) {
        drives::makeNode(nodeOf(i));
        drives::Drive drive;
        drive.firmware = "FW" + std::to_string(i);
        drive.underThresholdKelvin = 263 + i;
        drive.overThresholdKelvin = 353 + i;
        drives::expect(drives::identification(nodeOf(i), drive));
    }
    for (unsigned i = 0; i < kelvin.size(); ++i) drives::expect(drives::healthPage(nodeOf(i), kelvin[i]));
}

broker::Instance instanceOf(const TQS_NumericSensor& sensor) {
    broker::Broker broker;
    const broker::Request request(broker);
    return broker::copyOut(sensor.getInstance(broker.handle()));
}

long long readingOf(const TQS_NumericSensor& sensor) {
    return instanceOf(sensor).findProperty("CurrentReading")->signedNumber;
}

}  // namespace

TEST_F(AdditionalSensorsTest, TerminalOfNeitherModelHasNoneWhateverTheConfiguration) {
    drives::makeNode("/dev/nvme0");
    const auto initialiseOne = [] {
        OpenAdditionalInfo info;
        EXPECT_FALSE(info.initialised);
        std::vector<TQS_NumericSensor> sensors;
        info.initialise(&sensors);
        EXPECT_THAT(sensors, IsEmpty());
        EXPECT_TRUE(info.initialised);
    };
    runOnModel("none", initialiseOne);  // without the file
    for (const char* configuration : {"", "NvmeReadings=0\n", "NvmeReadings=1\n"}) {
        sandbox::writeSensorConfiguration(configuration);
        runOnModel("none", initialiseOne);
    }
    EXPECT_THAT(loggedMessages(), IsEmpty());
}

TEST_F(AdditionalSensorsTest, ConfigurationIsReadOnATerminalOfNeitherModelToo) {
    sandbox::writeSensorConfiguration("Unknown=1\n");
    const std::string standardError = runOnModel("none", [] {
        std::vector<TQS_NumericSensor> sensors;
        AdditionalInfo().initialise(&sensors);
    });
    EXPECT_EQ(standardError, " Sensor configs not found.\n");
}

TEST_F(AdditionalSensorsTest, ZanTerminalOnlyLogsTheSwitch) {
    sandbox::writeSensorConfiguration("NvmeReadings=1\n");
    drives::makeNode("/dev/nvme0");
    runOnModel("zan", [] {
        OpenAdditionalInfo info;
        std::vector<TQS_NumericSensor> sensors;
        info.initialise(&sensors);
        EXPECT_THAT(sensors, IsEmpty());
        EXPECT_TRUE(info.initialised);
    });
    EXPECT_THAT(loggedMessages(), ElementsAre("AdditionalInfo::initialise is ZAN"));
    EXPECT_EQ(messagesAt("Debug").size(), 1U);
}

TEST_F(AdditionalSensorsTest, SwitchedOffThereIsNoScanAndNoMessage) {
    drives::makeNode("/dev/nvme0");
    for (const char* model : {"grebel", "zan"}) {
        for (const char* configuration : {"NvmeReadings=0\n", ""}) {
            sandbox::writeSensorConfiguration(configuration);
            runOnModel(model, [] {
                OpenAdditionalInfo info;
                std::vector<TQS_NumericSensor> sensors;
                info.initialise(&sensors);
                EXPECT_THAT(sensors, IsEmpty());
                EXPECT_TRUE(info.initialised);
            });
        }
    }
    EXPECT_THAT(loggedMessages(), IsEmpty());
}

TEST_F(AdditionalSensorsTest, GrebelTerminalWithoutDrivesAddsNone) {
    sandbox::writeSensorConfiguration("NvmeReadings=1\n");
    runOnModel("grebel", [] {
        OpenAdditionalInfo info;
        std::vector<TQS_NumericSensor> sensors(1, TQS_NumericSensor(0x1a));
        info.initialise(&sensors);
        EXPECT_EQ(sensors.size(), 1U);
        EXPECT_TRUE(info.initialised);
    });
    EXPECT_THAT(loggedMessages(),
                ElementsAre("AdditionalInfo::initialise is grebel", "Processing additionals for Grebel machine",
                            "NvmeSsd::scanNVMeDevices", "AdditionalInfo::processGrebel - NvmeSsd devices not added."));
    EXPECT_THAT(messagesAt("Info"), ElementsAre("Processing additionals for Grebel machine"));
    EXPECT_EQ(messagesAt("Debug").size(), 3U);
}

TEST_F(AdditionalSensorsTest, GrebelTerminalGetsOneSensorPerDriveAfterTheChips) {
    sandbox::writeSensorConfiguration("NvmeReadings=1\n");
    runOnModel("grebel", [] {
        expectDrives({301, 323});
        std::vector<TQS_NumericSensor> sensors(1, TQS_NumericSensor(0x1a));
        AdditionalInfo().initialise(&sensors);
        ASSERT_EQ(sensors.size(), 3U);
        EXPECT_FALSE(sensors[0].isAdditional);
        EXPECT_TRUE(sensors[1].isAdditional);
        EXPECT_TRUE(sensors[2].isAdditional);
        EXPECT_EQ(sensors[1].getHandle(), 0U);
        EXPECT_EQ(sensors[2].getHandle(), 1U);
        EXPECT_EQ(describe(instanceOf(sensors[1]).properties), sensorProperties(driveSensorValues(1, 28, -10, 80)));
        EXPECT_EQ(describe(instanceOf(sensors[2]).properties), sensorProperties(driveSensorValues(2, 50, -9, 81)));
    });
    EXPECT_THAT(ownMessages(),
                ElementsAre("AdditionalInfo::initialise is grebel", "Processing additionals for Grebel machine"));
}

TEST_F(AdditionalSensorsTest, TenthDriveIsNumberedInDecimalAndInHexadecimal) {
    runOnModel("grebel", [] {
        expectDrives(std::vector<std::uint16_t>(10, 300));
        std::vector<TQS_NumericSensor> sensors;
        AdditionalInfo().processGrebel(&sensors);
        ASSERT_EQ(sensors.size(), 10U);
        EXPECT_EQ(sensors[9].getHandle(), 9U);
        EXPECT_THAT(describe(instanceOf(sensors[9]).properties),
                    AllOf(Contains("Name=chars 'SSD10 Temperature(0000000a)'"), Contains("DeviceID=chars '10'")));
    });
}

TEST_F(AdditionalSensorsTest, ReadingIsAnUnsignedSixteenBitNumber) {
    runOnModel("grebel", [] {
        expectDrives({272});
        AdditionalInfo info;
        std::vector<TQS_NumericSensor> sensors;
        info.processGrebel(&sensors);
        ASSERT_EQ(sensors.size(), 1U);
        EXPECT_EQ(readingOf(sensors[0]), 65535);

        fakeclock::advanceMilliseconds(1000);
        drives::expect(drives::healthPage(nodeOf(0), 271));
        info.updateReading(sensors[0]);
        EXPECT_EQ(readingOf(sensors[0]), 65534);
    });
}

TEST_F(AdditionalSensorsTest, ReadingWithinTheIntervalTouchesNoDrive) {
    const std::string standardError = runOnModel("grebel", [] {
        expectDrives({300});
        AdditionalInfo info;
        std::vector<TQS_NumericSensor> sensors;
        info.processGrebel(&sensors);
        ASSERT_EQ(sensors.size(), 1U);
        const unsigned callsBefore = drives::callCount();

        fakeclock::advanceMilliseconds(999);
        info.updateReading(sensors[0]);
        EXPECT_EQ(drives::callCount(), callsBefore);

        fakeclock::advanceMilliseconds(1);
        drives::expect(drives::healthPage(nodeOf(0), 310));
        info.updateReading(sensors[0]);
        EXPECT_EQ(readingOf(sensors[0]), 37);

        fakeclock::advanceMilliseconds(999);
        info.updateReading(sensors[0]);
        EXPECT_EQ(readingOf(sensors[0]), 37);
    });
    EXPECT_THAT(ownMessages(),
                ElementsAre("Processing additionals for Grebel machine", "AdditionalInfo::UpdateReading (Sensor)",
                            "SensorProvider::UpdateReading - No need to update sensor SSD1 Temperature(00000001) yet",
                            "AdditionalInfo::UpdateReading (Sensor)",
                            "AdditionalInfo::UpdateReading - Adding SsdDevice devPath=/dev/nvme0, fw_rev=FW0     , "
                            "physicalDisk=nvme0",
                            "AdditionalInfo::UpdateReading (Sensor)",
                            "SensorProvider::UpdateReading - No need to update sensor SSD1 Temperature(00000001) yet"));
    EXPECT_THAT(messagesAt("Debug"), Contains(HasSubstr("No need to update")).Times(2));
    EXPECT_THAT(standardError, HasSubstr("no need to read - diff is 999, update interval is 1000\n"));
}

TEST_F(AdditionalSensorsTest, ReadingOfTheThirdOfFourDrivesLooksAtThreeDrivesAndReadsTheThird) {
    runOnModel("grebel", [] {
        expectDrives({300, 301, 302, 303});
        AdditionalInfo info;
        std::vector<TQS_NumericSensor> sensors;
        info.processGrebel(&sensors);
        ASSERT_EQ(sensors.size(), 4U);
        fakeclock::advanceMilliseconds(1000);
        drives::expect(drives::healthPage(nodeOf(2), 333));
        info.updateReading(sensors[2]);
        EXPECT_EQ(readingOf(sensors[2]), 60);
        EXPECT_EQ(readingOf(sensors[1]), 28);
    });
    std::vector<std::string> messages = loggedMessages();
    messages.erase(messages.begin(),
                   std::find(messages.begin(), messages.end(), "AdditionalInfo::UpdateReading (Sensor)"));
    EXPECT_THAT(
        messages,
        ElementsAre("AdditionalInfo::UpdateReading (Sensor)",
                    "AdditionalInfo::UpdateReading - Adding SsdDevice devPath=/dev/nvme0, fw_rev=FW0     , "
                    "physicalDisk=nvme0",
                    "AdditionalInfo::UpdateReading - Adding SsdDevice devPath=/dev/nvme1, fw_rev=FW1     , "
                    "physicalDisk=nvme1",
                    "AdditionalInfo::UpdateReading - Adding SsdDevice devPath=/dev/nvme2, fw_rev=FW2     , "
                    "physicalDisk=nvme2",
                    "NvmeSsd::getSsdTemperature - starting",
                    // The copy of the list, then the list.
                    "SsdDevice destroyed", "SsdDevice destroyed", "SsdDevice destroyed", "SsdDevice destroyed",
                    "SsdDevice destroyed", "SsdDevice destroyed", "SsdDevice destroyed", "SsdDevice destroyed"));
}

// The position decides, not the drive's own number: here the one drive is nvme1.
TEST_F(AdditionalSensorsTest, OnlyDriveNumberedOneIsReadFromNumberNull) {
    runOnModel("grebel", [] {
        drives::makeNode(nodeOf(1));
        drives::expect(drives::identification(nodeOf(1), {}));
        AdditionalInfo info;
        std::vector<TQS_NumericSensor> sensors;
        info.processGrebel(&sensors);  // /dev/nvme0 cannot be opened
        ASSERT_EQ(sensors.size(), 1U);
        EXPECT_EQ(readingOf(sensors[0]), 0);

        drives::makeNode(nodeOf(0));
        fakeclock::advanceMilliseconds(1000);
        drives::expect(drives::healthPage(nodeOf(0), 300));
        info.updateReading(sensors[0]);
        EXPECT_EQ(readingOf(sensors[0]), 27);
    });
    EXPECT_THAT(loggedMessages(), Contains("NvmeSsd::getSsdTemperature - Error while read /dev/nvme0 file"));
}

TEST_F(AdditionalSensorsTest, SensorWhoseNameFitsNoDriveKeepsItsReading) {
    runOnModel("grebel", [] {
        expectDrives({300});
        AdditionalInfo info;
        std::vector<TQS_NumericSensor> sensors;
        info.processGrebel(&sensors);
        ASSERT_EQ(sensors.size(), 1U);
        sensors[0].setName("ssd1 Temperature(00000001)");
        fakeclock::advanceMilliseconds(1000);
        info.updateReading(sensors[0]);
        EXPECT_EQ(readingOf(sensors[0]), 27);
    });
    EXPECT_THAT(ownMessages(), Contains(HasSubstr("Adding SsdDevice devPath=/dev/nvme0")).Times(1));
}

TEST_F(AdditionalSensorsTest, ReadingThatFailsIsStoredAsItComes) {
    runOnModel("grebel", [] {
        expectDrives({300});
        AdditionalInfo info;
        std::vector<TQS_NumericSensor> sensors;
        info.processGrebel(&sensors);
        ASSERT_EQ(sensors.size(), 1U);
        fakeclock::advanceMilliseconds(1000);
        drives::Expectation refused = drives::healthPage(nodeOf(0), 300);
        refused.answer.returned = 0x4002;
        drives::expect(refused);
        info.updateReading(sensors[0]);
        EXPECT_EQ(readingOf(sensors[0]), 0);
    });
}
