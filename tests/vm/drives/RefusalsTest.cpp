// Every command in turn meets a refusal. The first of two scripted drives refuses; it has 28 degrees, the
// other one 47.
#include "Guest.h"

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::Not;

const char FIRST[] = "SSD1 Temperature(00000001), device 1: 28, limits -15 to 85";
const char SECOND[] = "SSD2 Temperature(00000002), device 2: 47, limits -15 to 85";
const char OTHERS[] = "others: 48, 12048, 2 log lines";

class RefusalsTest : public GuestTest {
  protected:
    static void SetUpTestSuite() { boot({"refusals"}); }
};

TEST_F(RefusalsTest, WithoutItsIdentityADriveIsListedWithEmptyTexts) {
    EXPECT_THAT(section("identify controller refused"), ElementsAre(FIRST, SECOND, OTHERS));
    EXPECT_THAT(section("identify controller refused log"), Contains("Debug Serial Number: "));
    EXPECT_THAT(section("identify controller refused commands"), Not(Contains(testing::HasSubstr("nsid 00000001"))));
}

// SSD1 is then the second drive with its limits, but it is read from /dev/nvme0, the first one.
TEST_F(RefusalsTest, AResultWithTheIdentityLeavesTheDriveOut) {
    EXPECT_THAT(section("identify controller with a result"),
                ElementsAre(FIRST, "Error SmartIo::nvme_read_identify - result failed: 1",
                            "Error SmartIo::getIdentifyNVMeData - nvme_read_identify failed", "SSD1: 28", OTHERS));
}

TEST_F(RefusalsTest, WithoutItsNamespaceADriveIsListedAllTheSame) {
    EXPECT_THAT(section("identify namespace refused"), ElementsAre(FIRST, SECOND, OTHERS));
    EXPECT_THAT(section("identify namespace with a result"),
                ElementsAre(FIRST, SECOND, "Error SmartIo::nvme_read_identify - result failed: 7"));
}

TEST_F(RefusalsTest, WithoutItsUnderThresholdADriveIsLeftOut) {
    EXPECT_THAT(section("under threshold refused"),
                ElementsAre(FIRST, "Error NvmeSsd::getIdentifyNVMeData - error reading Under Temperature Threshold",
                            "opcode 06 nsid 00000000 cdw10 00000001 cdw11 00000000 length 4096",
                            "opcode 06 nsid 00000001 cdw10 00000000 cdw11 00000000 length 4096",
                            "opcode 0a nsid ffffffff cdw10 00000104 cdw11 00100000 length 0",
                            "opcode 02 nsid ffffffff cdw10 007f0002 cdw11 00000000 length 512", "SSD1: 28", OTHERS));
}

TEST_F(RefusalsTest, WithoutItsOverThresholdADriveIsLeftOut) {
    EXPECT_THAT(
        section("over threshold refused"),
        ElementsAre(FIRST, "Error NvmeSsd::getIdentifyNVMeData - error reading Over Temperature Threshold", OTHERS));
}

TEST_F(RefusalsTest, WithoutItsHealthPageADriveShowsZeroSilently) {
    EXPECT_THAT(section("health page refused at start"),
                ElementsAre("SSD1 Temperature(00000001), device 1: 0, limits -15 to 85", SECOND));
    EXPECT_THAT(section("health page refused later"),
                ElementsAre(FIRST, SECOND, "SSD1: 0", "SSD2: 47", OTHERS, "SSD1: 28"));
}

TEST_F(RefusalsTest, WithoutAnyDriveTheOtherSensorsAnswer) {
    EXPECT_THAT(section("all drives refused"),
                ElementsAre("no drive sensors",
                            "Error NvmeSsd::getIdentifyNVMeData - error reading Under Temperature Threshold",
                            "Error NvmeSsd::getIdentifyNVMeData - error reading Over Temperature Threshold", OTHERS,
                            "CPU Temperature(00000010): 48", "+12 V(00000021): 12048", "status 0"));
}

}  // namespace
