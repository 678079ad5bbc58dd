#include <glob.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <vector>

#include "FailingCLibrary.h"
#include "FakeDrives.h"
#include "FullLog.h"
#include "LogLines.h"
#include "NvmeSsd.h"
#include "Sandbox.h"
#include "WithoutRootsRights.h"
#include "log.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class NvmeSsdScanTest : public testing::Test {
  protected:
    void SetUp() override { REQUIRE_SANDBOX(); }
};

using NvmeSsdTemperatureTest = NvmeSsdScanTest;

drives::Drive driveWithSerial(const std::string& serial) {
    drives::Drive drive;
    drive.serial = serial;
    return drive;
}

std::vector<std::string> paths(const std::vector<SsdDevice>& devices) {
    std::vector<std::string> all;
    for (const SsdDevice& device : devices) all.push_back(device.devPath);
    return all;
}

// The temperature that /dev/nvme0 gives with this health page.
unsigned short temperatureOf(const drives::Expectation& page) {
    drives::expect(page);
    return NvmeSsd().getSsdTemperature(0);
}

}  // namespace

TEST_F(NvmeSsdScanTest, NoDriveIsNoMessage) {
    runWithFullLog([] {
        NvmeSsd ssd;
        EXPECT_FALSE(ssd.scanNVMeDevices());
        EXPECT_THAT(ssd.getSsdList(), IsEmpty());
    });
    EXPECT_THAT(messagesAt("Debug"), ElementsAre("NvmeSsd::scanNVMeDevices"));
    EXPECT_EQ(loggedMessages().size(), 1U);
}

TEST_F(NvmeSsdScanTest, DriveIsListedAsItDescribesItself) {
    drives::makeNode("/dev/nvme7");
    runWithFullLog([] {
        drives::Drive drive;
        drive.underThresholdKelvin = 263;
        drive.overThresholdKelvin = 358;
        drives::expect(drives::identification("/dev/nvme7", drive));
        NvmeSsd ssd;
        EXPECT_TRUE(ssd.scanNVMeDevices());
        const std::vector<SsdDevice> list = ssd.getSsdList();
        ASSERT_EQ(list.size(), 1U);
        EXPECT_TRUE(list[0].present);
        EXPECT_EQ(list[0].physicalDisk, "nvme7");
        EXPECT_EQ(list[0].devPath, "/dev/nvme7");
        EXPECT_EQ(list[0].serialNumber, "SN0001" + std::string(14, ' '));
        EXPECT_EQ(list[0].modelNumber, "ZEL SSD" + std::string(33, ' '));
        EXPECT_EQ(list[0].fw_rev, "1.0     ");
        EXPECT_EQ(list[0].underTemperatureThreshold, -10);
        EXPECT_EQ(list[0].overTemperatureThreshold, 85);
    });
    std::vector<std::string> messages = loggedMessages();
    ASSERT_GT(messages.size(), 8U);
    EXPECT_EQ(messages.front(), "NvmeSsd::scanNVMeDevices");
    messages.erase(messages.begin(), messages.begin() + 6);  // and what identifying logs
    messages.resize(3);                                      // how often the list is copied does not matter
    EXPECT_THAT(messages, ElementsAre("SsdDevice constructed", "NvmeSsd::addSsdDevice",
                                      "SsdDevice::initialise - drive nvme7 devPath /dev/nvme7"));
}

TEST_F(NvmeSsdScanTest, ControllersWithOneDigitAreListedInOrder) {
    for (const char* name : {"nvme1", "nvme0", "nvme10", "nvme0n1", "nvme", "nvme-fabrics", "nvmeX"}) {
        drives::makeNode(std::string("/dev/") + name);
    }
    runWithFullLog([] {
        drives::expect(drives::identification("/dev/nvme0", driveWithSerial("A")));
        drives::expect(drives::identification("/dev/nvme1", driveWithSerial("B")));
        NvmeSsd ssd;
        EXPECT_TRUE(ssd.scanNVMeDevices());
        EXPECT_THAT(paths(ssd.getSsdList()), ElementsAre("/dev/nvme0", "/dev/nvme1"));
        EXPECT_EQ(ssd.getSsdList()[1].serialNumber, "B" + std::string(19, ' '));
    });
}

TEST_F(NvmeSsdScanTest, DriveThatMayNotBeOpenedIsLeftOut) {
    drives::makeNode("/dev/nvme0");
    ASSERT_EQ(chmod("/dev/nvme0", 0), 0);
    runWithFullLog([] {
        const WithoutRootsRights rights;
        EXPECT_FALSE(NvmeSsd().scanNVMeDevices());
    });
    EXPECT_THAT(messagesAt("Error"), ElementsAre("SmartIo::getIdentifyNVMeData - Open /dev/nvme0 failed, 13"));
}

TEST_F(NvmeSsdScanTest, DriveThatCannotBeIdentifiedIsLeftOutAndTheScanGoesOn) {
    drives::makeNode("/dev/nvme0");
    drives::makeNode("/dev/nvme1");
    runWithFullLog([] {
        drives::Expectation refused = drives::identifyController("/dev/nvme0", drives::Drive());
        refused.answer.returned = -1;
        refused.answer.error = EIO;
        drives::expect({drives::namespaceIdQuery("/dev/nvme0", -1), refused});
        drives::expect(drives::identification("/dev/nvme1", drives::Drive()));
        NvmeSsd ssd;
        EXPECT_TRUE(ssd.scanNVMeDevices());
        EXPECT_THAT(paths(ssd.getSsdList()), ElementsAre("/dev/nvme1"));
    });
}

TEST_F(NvmeSsdScanTest, DriveOfUnknownNamespacesIsListed) {
    drives::makeNode("/dev/nvme0");
    runWithFullLog([] {
        drives::Drive drive;
        drive.namespaceId = -1;
        drive.numberOfNamespaces = 2;
        drives::expect({drives::namespaceIdQuery("/dev/nvme0", -1), drives::identifyController("/dev/nvme0", drive),
                        drives::underThreshold("/dev/nvme0", 273), drives::overThreshold("/dev/nvme0", 343)});
        EXPECT_TRUE(NvmeSsd().scanNVMeDevices());
    });
}

TEST_F(NvmeSsdScanTest, SecondScanAppendsTheDrivesAgain) {
    drives::makeNode("/dev/nvme0");
    runWithFullLog([] {
        NvmeSsd ssd;
        for (int scan = 0; scan < 2; ++scan) {
            drives::expect(drives::identification("/dev/nvme0", drives::Drive()));
            EXPECT_TRUE(ssd.scanNVMeDevices());
        }
        EXPECT_THAT(paths(ssd.getSsdList()), ElementsAre("/dev/nvme0", "/dev/nvme0"));
    });
}

TEST_F(NvmeSsdScanTest, SearchThatRunsOutOfMemoryIsLogged) {
    runWithFullLog([] {
        const FailingCall search(Function::Glob, 1, GLOB_NOSPACE);
        EXPECT_FALSE(NvmeSsd().scanNVMeDevices());
    });
    EXPECT_THAT(loggedMessages(), ElementsAre("NvmeSsd::scanNVMeDevices", "SsdManager::scanNVMeDevice - GLOB_NOSPACE"));
    EXPECT_EQ(messagesAt("Error").size(), 1U);
}

TEST_F(NvmeSsdScanTest, SearchThatIsAbortedIsSilentAndFindsNothing) {
    drives::makeNode("/dev/nvme0");
    runWithFullLog([] {
        const FailingCall search(Function::Glob, 1, GLOB_ABORTED);
        EXPECT_FALSE(NvmeSsd().scanNVMeDevices());
    });
    EXPECT_THAT(loggedMessages(), ElementsAre("NvmeSsd::scanNVMeDevices"));
}

TEST_F(NvmeSsdTemperatureTest, IsThePagesLessTwoHundredAndSeventyThree) {
    drives::makeNode("/dev/nvme0");
    runWithFullLog([] {
        EXPECT_EQ(temperatureOf(drives::healthPage("/dev/nvme0", 0x0143)), 50);
        EXPECT_EQ(temperatureOf(drives::healthPage("/dev/nvme0", 0xFFFF)), 65262);
    });
    EXPECT_THAT(messagesAt("Debug"), ElementsAre("NvmeSsd::getSsdTemperature - starting",  //
                                                 "NvmeSsd::getSsdTemperature - starting"));
    EXPECT_EQ(loggedMessages().size(), 2U);
}

// A daemon may have closed its standard input.
TEST_F(NvmeSsdTemperatureTest, DescriptorZeroIsAsGoodAsAnyOther) {
    drives::makeNode("/dev/nvme0");
    runWithFullLog([] {
        LogQuick(LOG_ERROR, "has its descriptor now");
        close(STDIN_FILENO);
        EXPECT_EQ(temperatureOf(drives::healthPage("/dev/nvme0", 300)), 27);
    });
}

TEST_F(NvmeSsdTemperatureTest, OneBelowZeroWrapsAround) {
    drives::makeNode("/dev/nvme0");
    runWithFullLog([] { EXPECT_EQ(temperatureOf(drives::healthPage("/dev/nvme0", 0x0110)), 65535); });
}

TEST_F(NvmeSsdTemperatureTest, NoReadingIsZeroKelvin) {
    drives::makeNode("/dev/nvme0");
    runWithFullLog([] { EXPECT_EQ(temperatureOf(drives::healthPage("/dev/nvme0", 0)), 65263); });
}

TEST_F(NvmeSsdTemperatureTest, PositionIsTheDevicesNumberWhateverTheListHolds) {
    drives::makeNode("/dev/nvme1");
    runWithFullLog([] {
        drives::expect(drives::identification("/dev/nvme1", drives::Drive()));
        NvmeSsd ssd;
        ASSERT_TRUE(ssd.scanNVMeDevices());
        ASSERT_THAT(paths(ssd.getSsdList()), ElementsAre("/dev/nvme1"));

        drives::makeNode("/dev/nvme0");
        drives::expect(drives::healthPage("/dev/nvme0", 300));
        EXPECT_EQ(ssd.getSsdTemperature(0), 27);
    });
}

TEST_F(NvmeSsdTemperatureTest, MissingDeviceReadsAsZeroAndIsReported) {
    const std::string standardError = runWithFullLog([] {
        EXPECT_EQ(NvmeSsd().getSsdTemperature(3), 0);
        EXPECT_EQ(NvmeSsd().getSsdTemperature(-1), 0);
        EXPECT_EQ(NvmeSsd().getSsdTemperature(12), 0);
    });
    EXPECT_EQ(standardError,
              "/dev/nvme3: No such file or directory\n"
              "/dev/nvme-1: No such file or directory\n"
              "/dev/nvme12: No such file or directory\n");
    EXPECT_THAT(messagesAt("Error"), ElementsAre("NvmeSsd::getSsdTemperature - Error while read /dev/nvme3 file",
                                                 "NvmeSsd::getSsdTemperature - Error while read /dev/nvme-1 file",
                                                 "NvmeSsd::getSsdTemperature - Error while read /dev/nvme12 file"));
    EXPECT_EQ(loggedMessages()[0], "NvmeSsd::getSsdTemperature - starting");
}

TEST_F(NvmeSsdTemperatureTest, CommandThatTheDriveRefusesReadsAsZeroSilently) {
    drives::makeNode("/dev/nvme0");
    const std::string standardError = runWithFullLog([] {
        for (const int status : {1, 0x2002}) {
            drives::Expectation page = drives::healthPage("/dev/nvme0", 300);
            page.answer.returned = status;
            EXPECT_EQ(temperatureOf(page), 0);
        }
    });
    EXPECT_EQ(standardError, "");
    EXPECT_THAT(loggedMessages(), ElementsAre("NvmeSsd::getSsdTemperature - starting",  //
                                              "NvmeSsd::getSsdTemperature - starting"));
}

TEST_F(NvmeSsdTemperatureTest, CommandThatTheKernelRefusesReadsAsZeroKelvin) {
    drives::makeNode("/dev/nvme0");
    runWithFullLog([] {
        drives::Expectation page = drives::healthPage("/dev/nvme0", 300);
        page.answer.returned = -1;
        page.answer.error = EINTR;
        page.answer.data.clear();
        EXPECT_EQ(temperatureOf(page), 65263);
    });
    EXPECT_THAT(loggedMessages(), ElementsAre("NvmeSsd::getSsdTemperature - starting"));
}

TEST_F(NvmeSsdTemperatureTest, OpensWithoutWaiting) {
    ASSERT_EQ(mkfifo("/dev/nvme0", 0600), 0);  // has no writer, for which a waiting open would wait
    runWithFullLog([] { EXPECT_EQ(temperatureOf(drives::healthPage("/dev/nvme0", 273)), 0); });
}

TEST(NvmeSsdConversionTest, KelvinLessTwoHundredAndSeventyThreeIsCelsius) {
    EXPECT_EQ(NvmeSsd().kelvinToCelsius(273), 0);
    EXPECT_EQ(NvmeSsd().kelvinToCelsius(0), -273);
    EXPECT_EQ(NvmeSsd().kelvinToCelsius(323), 50);
}
