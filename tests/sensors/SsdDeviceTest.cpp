#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "FullLog.h"
#include "LogLines.h"
#include "Sandbox.h"
#include "SsdDevice.h"

using testing::ElementsAre;

namespace {

IdentifyData makeData() {
    IdentifyData data;
    data.serialNumber = "SERIAL";
    data.modelNumber = "MODEL";
    data.firmwareVersion = "FW";
    data.overTemperatureThreshold = 85;
    data.underTemperatureThreshold = -10;
    return data;
}

class SsdDeviceRecordTest : public testing::Test {
  protected:
    void SetUp() override { REQUIRE_SANDBOX(); }
};

}  // namespace

TEST_F(SsdDeviceRecordTest, IsFilledFromWhatTheDriveReported) {
    runWithFullLog([] {
        SsdDevice device;
        EXPECT_TRUE(device.present);
        EXPECT_EQ(device.physicalDisk + device.devPath + device.modelNumber + device.serialNumber + device.fw_rev, "");
        device.present = false;
        EXPECT_TRUE(device.initialise(makeData(), "nvme3", "/dev/nvme3"));
        EXPECT_TRUE(device.present);
        EXPECT_EQ(device.physicalDisk, "nvme3");
        EXPECT_EQ(device.devPath, "/dev/nvme3");
        EXPECT_EQ(device.modelNumber, "MODEL");
        EXPECT_EQ(device.serialNumber, "SERIAL");
        EXPECT_EQ(device.fw_rev, "FW");
        EXPECT_EQ(device.overTemperatureThreshold, 85);
        EXPECT_EQ(device.underTemperatureThreshold, -10);
    });
    EXPECT_THAT(messagesAt("Debug"),
                ElementsAre("SsdDevice constructed", "SsdDevice::initialise - drive nvme3 devPath /dev/nvme3",
                            "SsdDevice destroyed"));
}

TEST_F(SsdDeviceRecordTest, CopiesAreMadeSilentlyAndDestroyedAloud) {
    runWithFullLog([] {
        SsdDevice device;
        device.devPath = "/dev/nvme0";
        {
            SsdDevice copy = device;
            SsdDevice assigned = copy;
            assigned = device;
            EXPECT_EQ(assigned.devPath, "/dev/nvme0");
        }
        const SsdDevice moved = std::move(device);
        EXPECT_EQ(moved.devPath, "/dev/nvme0");
    });
    EXPECT_THAT(messagesAt("Debug"), ElementsAre("SsdDevice constructed", "SsdDevice destroyed", "SsdDevice destroyed",
                                                 "SsdDevice destroyed", "SsdDevice destroyed"));
}
