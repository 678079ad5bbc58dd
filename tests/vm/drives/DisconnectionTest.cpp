// The connection to the first of two scripted drives breaks.
#include "Guest.h"
#include "Recovery.h"

namespace {

using testing::ElementsAre;

class DisconnectionTest : public GuestTest {
  protected:
    static void SetUpTestSuite() { boot({"disconnection"}); }
};

TEST_F(DisconnectionTest, BetweenTwoReadingsShowsZeroUntilTheDriveIsBack) {
    EXPECT_THAT(section("between two readings"),
                ElementsAre("SSD1: 28", "SSD1: 0", NOT_OPENED, NOT_OPENED_ON_STANDARD_ERROR, "SSD2: 47", OTHERS));
    EXPECT_THAT(section("connected again"), ElementsAre("SSD1: 28", OTHERS));
}

TEST_F(DisconnectionTest, DuringAReadingReadsAsZeroKelvin) {
    EXPECT_THAT(section("during a reading"),
                ElementsAre("SSD1: 65263", "SSD1: 0", NOT_OPENED, NOT_OPENED_ON_STANDARD_ERROR, OTHERS));
    EXPECT_THAT(section("connected once more"), ElementsAre("SSD1: 29"));
}

TEST_F(DisconnectionTest, DuringTheIdentificationLeavesTheDriveOutUntilTheNextStart) {
    EXPECT_THAT(section("during identification"), ElementsAre(FIRST_UNREAD, INTERRUPTED, NOT_IDENTIFIED, NOT_OPENED,
                                                              NOT_OPENED_ON_STANDARD_ERROR, OTHERS));
    EXPECT_THAT(section("after a new start"), ElementsAre(FIRST, SECOND, OTHERS));
}

}  // namespace
