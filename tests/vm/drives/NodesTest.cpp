// Device nodes that cannot be used, and things that only bear a node's name.
#include <cstdio>

#include "Guest.h"

namespace {

using testing::ElementsAre;

const char FIRST[] = "SSD1 Temperature(00000001), device 1: 50, limits -273 to 70";
const char SECOND[] = "SSD2 Temperature(00000002), device 2: 50, limits -273 to 70";
const char THIRD[] = "SSD3 Temperature(00000003), device 3: 50, limits -273 to 70";
const char OTHERS[] = "others: 48, 12048, 2 log lines";
const char NOT_PERMITTED[] = "Error SmartIo::nvme_read_identify - NVME_IOCTL_ADMIN_CMD failed: Permission denied";
const char NO_DRIVE[] =
    "Error SmartIo::nvme_read_identify - NVME_IOCTL_ADMIN_CMD failed: Inappropriate ioctl for device";
const char NOT_OPENED[] = "Error SmartIo::getIdentifyNVMeData - Open /dev/nvme1 failed, 13";
const char NOT_IDENTIFIED[] = "Error SmartIo::getIdentifyNVMeData - nvme_read_identify failed";

class NodesTest : public GuestTest {
  protected:
    static void SetUpTestSuite() { boot({"nodes", 3}); }
};

// Since Linux 6.2 whoever may open a drive may also have it identify itself; all else wants a privilege as before.
bool letsEverybodyIdentify(const std::string& kernel) {
    unsigned major = 0;
    unsigned minor = 0;
    EXPECT_EQ(std::sscanf(kernel.c_str(), "%u.%u.", &major, &minor), 2) << kernel;
    return major > 6 || (major == 6 && minor >= 2);
}

// nvme1 cannot be opened; the others can. So the second drive that is listed is nvme2, and read from nvme1.
TEST_F(NodesTest, WithoutPrivilegesNoDriveShowsMoreThanTheKernelLetsEverybodySee) {
    const Strings kernel = section("kernel");
    ASSERT_EQ(kernel.size(), 1U);
    if (letsEverybodyIdentify(kernel[0])) {
        EXPECT_THAT(section("unprivileged"),
                    ElementsAre("SSD1 Temperature(00000001), device 1: 65263, limits -273 to -273",
                                "SSD2 Temperature(00000002), device 2: 0, limits -273 to -273", NOT_OPENED,
                                "Error NvmeSsd::getSsdTemperature - Error while read /dev/nvme1 file",
                                "/dev/nvme1: Permission denied", OTHERS));
    } else {
        EXPECT_THAT(section("unprivileged"), ElementsAre("no drive sensors", NOT_PERMITTED, NOT_IDENTIFIED, NOT_OPENED,
                                                         NOT_PERMITTED, NOT_IDENTIFIED, OTHERS));
    }
}

TEST_F(NodesTest, PrivilegesLostAfterTheStartLookLikeZeroKelvinOrZero) {
    EXPECT_THAT(section("privileges lost after start"),
                ElementsAre(FIRST, SECOND, THIRD, "SSD1: 65263", "SSD2: 0",
                            "Error NvmeSsd::getSsdTemperature - Error while read /dev/nvme1 file",
                            "/dev/nvme1: Permission denied", OTHERS, "SSD1: 50", "SSD2: 50"));
}

TEST_F(NodesTest, FilesAndDirectoriesAreLeftOut) {
    EXPECT_THAT(section("a regular file and a directory"),
                ElementsAre(FIRST, SECOND, THIRD, NO_DRIVE, NOT_IDENTIFIED, NO_DRIVE, NOT_IDENTIFIED, OTHERS));
    EXPECT_THAT(section("only a regular file"), ElementsAre("no drive sensors", NO_DRIVE, NOT_IDENTIFIED, OTHERS));
}

TEST_F(NodesTest, FilesAndDirectoriesInADrivesPlaceReadAsZeroKelvin) {
    EXPECT_THAT(
        section("a file in a drive's place after start"),
        ElementsAre(FIRST, SECOND, THIRD, NO_DRIVE, NOT_IDENTIFIED, NO_DRIVE, NOT_IDENTIFIED, "SSD1: 65263",
                    "SSD1: 65263", "SSD1: 0", "Error NvmeSsd::getSsdTemperature - Error while read /dev/nvme0 file",
                    "/dev/nvme0: Too many levels of symbolic links", "SSD1: 50"));
}

TEST_F(NodesTest, WithoutDrivesNothingIsLogged) {
    EXPECT_THAT(section("no drives"), ElementsAre("no drive sensors", OTHERS));
}

}  // namespace
