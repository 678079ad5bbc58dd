// The first of two scripted drives gives no answer: after the driver's patience the call is interrupted, and while the
// driver recovers, the drive cannot be opened.
#include "Guest.h"
#include "Recovery.h"

namespace {

using testing::ElementsAre;

class SilenceTest : public GuestTest {
  protected:
    static void SetUpTestSuite() { boot({"silence", 0, false, "nvme_core.admin_timeout=2"}); }
};

TEST_F(SilenceTest, AtTheHealthPageReadsAsZeroKelvin) {
    EXPECT_THAT(section("health page"), ElementsAre(FIRST, SECOND, "SSD1: 65263"));
}

TEST_F(SilenceTest, WhileTheDriverRecoversADriveShowsZero) {
    EXPECT_THAT(section("while recovering"),
                ElementsAre("SSD1: 0", NOT_OPENED, NOT_OPENED_ON_STANDARD_ERROR, "SSD2: 47", OTHERS));
    EXPECT_THAT(section("recovered"), ElementsAre("SSD1: 28", OTHERS));
}

// SSD1 is then the second drive with its limits, read from the first one.
TEST_F(SilenceTest, AtTheIdentityLeavesTheDriveOut) {
    EXPECT_THAT(section("identify controller"), ElementsAre(FIRST_UNREAD, INTERRUPTED, NOT_IDENTIFIED, NOT_OPENED,
                                                            NOT_OPENED_ON_STANDARD_ERROR, OTHERS));
}

TEST_F(SilenceTest, AStartWhileTheDriverRecoversLeavesTheDriveOut) {
    EXPECT_THAT(section("start while recovering"),
                ElementsAre(FIRST_UNREAD, "Error SmartIo::getIdentifyNVMeData - Open /dev/nvme0 failed, 11", NOT_OPENED,
                            NOT_OPENED_ON_STANDARD_ERROR, OTHERS));
}

// The silence itself counts as a threshold; then the driver, which recovers, refuses the next command with a status.
TEST_F(SilenceTest, AtTheUnderThresholdFailsAtTheOverThreshold) {
    EXPECT_THAT(
        section("under threshold"),
        ElementsAre(FIRST_UNREAD, "Error NvmeSsd::getIdentifyNVMeData - error reading Over Temperature Threshold",
                    NOT_OPENED, NOT_OPENED_ON_STANDARD_ERROR, OTHERS));
}

TEST_F(SilenceTest, AtTheOverThresholdCountsAsAThresholdOfZeroKelvin) {
    EXPECT_THAT(section("over threshold"), ElementsAre("SSD1 Temperature(00000001), device 1: 0, limits -15 to -273",
                                                       SECOND, NOT_OPENED, NOT_OPENED_ON_STANDARD_ERROR, OTHERS));
    EXPECT_THAT(section("over threshold recovered"), ElementsAre("SSD1: 28"));
}

}  // namespace
