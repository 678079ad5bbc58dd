// What a scripted drive reports comes through the kernel's driver as it is.
#include "Guest.h"

namespace {

using testing::ElementsAre;

const char IDENTIFY_CONTROLLER[] = "opcode 06 nsid 00000000 cdw10 00000001 cdw11 00000000 length 4096";
const char IDENTIFY_NAMESPACE[] = "opcode 06 nsid 00000001 cdw10 00000000 cdw11 00000000 length 4096";
const char UNDER_THRESHOLD[] = "opcode 0a nsid ffffffff cdw10 00000104 cdw11 00100000 length 0";
const char OVER_THRESHOLD[] = "opcode 0a nsid ffffffff cdw10 00000104 cdw11 00000000 length 0";
const char HEALTH_PAGE[] = "opcode 02 nsid ffffffff cdw10 007f0002 cdw11 00000000 length 512";
const char SENSOR[] = "SSD1 Temperature(00000001), device 1: 28, limits -15 to 85";

class TemperaturesTest : public GuestTest {
  protected:
    static void SetUpTestSuite() { boot({"temperatures"}); }
};

TEST_F(TemperaturesTest, CommandsArriveWithEveryFieldAsTheyWereSent) {
    EXPECT_THAT(section("ordinary"), ElementsAre(SENSOR));
    EXPECT_THAT(section("ordinary commands"),
                ElementsAre(IDENTIFY_CONTROLLER, IDENTIFY_NAMESPACE, UNDER_THRESHOLD, OVER_THRESHOLD, HEALTH_PAGE));
    EXPECT_THAT(section("read"), ElementsAre("SSD1: 28"));
    EXPECT_THAT(section("read commands"), ElementsAre(HEALTH_PAGE));
}

TEST_F(TemperaturesTest, BelowZeroShowsModulo65536) {
    EXPECT_THAT(section("below zero"), ElementsAre("SSD1: 65535"));
}

TEST_F(TemperaturesTest, ZeroKelvinShows65263) {
    EXPECT_THAT(section("zero kelvin"), ElementsAre("SSD1: 65263"));
}

TEST_F(TemperaturesTest, FarTooHighIsShownAsItIs) {
    EXPECT_THAT(section("far too high"), ElementsAre("SSD1: 65262"));
    EXPECT_THAT(section("too hot at start"),
                ElementsAre("SSD1 Temperature(00000001), device 1: 65262, limits -15 to 85"));
}

TEST_F(TemperaturesTest, ZeroCelsiusShowsLikeAFailure) {
    EXPECT_THAT(section("zero celsius"), ElementsAre("SSD1: 0"));
}

TEST_F(TemperaturesTest, AnOddDriveDisturbsNothingElse) {
    EXPECT_THAT(section("others"), ElementsAre("others: 48, 12048, 2 log lines"));
}

TEST_F(TemperaturesTest, ThresholdsAreSignedAndOf16Bits) {
    EXPECT_THAT(section("thresholds below zero"),
                ElementsAre("SSD1 Temperature(00000001), device 1: 28, limits -1 to 77"));
    EXPECT_THAT(section("thresholds with upper bits"), ElementsAre(SENSOR));
    EXPECT_THAT(section("thresholds of zero and all ones"),
                ElementsAre("SSD1 Temperature(00000001), device 1: 28, limits -273 to 65262"));
}

TEST_F(TemperaturesTest, TheNamespaceIsIdentifiedWhereThereIsExactlyOne) {
    EXPECT_THAT(section("one namespace"), ElementsAre(SENSOR, IDENTIFY_CONTROLLER, IDENTIFY_NAMESPACE, UNDER_THRESHOLD,
                                                      OVER_THRESHOLD, HEALTH_PAGE));
    for (const char* title : {"no namespaces", "two namespaces", "namespaces in the upper bytes"}) {
        EXPECT_THAT(section(title),
                    ElementsAre(SENSOR, IDENTIFY_CONTROLLER, UNDER_THRESHOLD, OVER_THRESHOLD, HEALTH_PAGE))
            << title;
    }
}

}  // namespace
