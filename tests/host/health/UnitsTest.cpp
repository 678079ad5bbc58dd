#include <gtest/gtest.h>

#include <string>

#include "health/Units.h"
#include "text/Charset.h"

namespace {

using host::unitText;

TEST(UnitsTest, CodesOfATerminalsSensorsHaveTheirUnits) {
    EXPECT_EQ(unitText(2, 0), "°C");
    EXPECT_EQ(unitText(5, 0), "V");
    EXPECT_EQ(unitText(6, 0), "A");
    EXPECT_EQ(unitText(7, 0), "W");
    EXPECT_EQ(unitText(19, 0), "rpm");
    EXPECT_EQ(unitText(20, 0), "Hz");
}

// A list that lost or gained an entry shifts these.
TEST(UnitsTest, CodesAlongTheListHaveTheirUnits) {
    EXPECT_EQ(unitText(15, 0), "kPa");
    EXPECT_EQ(unitText(25, 0), "weeks");
    EXPECT_EQ(unitText(35, 0), "fl oz");
    EXPECT_EQ(unitText(40, 0), "g");
    EXPECT_EQ(unitText(49, 0), "Ω");
    EXPECT_EQ(unitText(54, 0), "dB");
    EXPECT_EQ(unitText(60, 0), "bits");
    EXPECT_EQ(unitText(65, 0), "%");
    EXPECT_EQ(unitText(66, 0), "Pa");
}

TEST(UnitsTest, UnknownAndOtherHaveNoText) {
    EXPECT_EQ(unitText(0, 0), "");
    EXPECT_EQ(unitText(1, 0), "");
}

TEST(UnitsTest, CodeBeyondTheListIsShownAsItIs) {
    EXPECT_EQ(unitText(67, 0), "unit 67");
    EXPECT_EQ(unitText(65535, 0), "unit 65535");
    EXPECT_EQ(unitText(-1, 0), "unit -1");
}

TEST(UnitsTest, AllCanBeShownInAscii) {
    for (int base = 0; base <= 66; ++base) {
        for (int rate = 0; rate <= 9; ++rate) {
            const std::string shown = host::shownIn(host::Charset::Ascii, unitText(base, rate));
            EXPECT_EQ(shown.find('\\'), std::string::npos) << shown;
        }
    }
    EXPECT_EQ(host::shownIn(host::Charset::Ascii, unitText(49, 1)), "ohm/us");
}

TEST(UnitsTest, RateFollowsTheUnit) {
    EXPECT_EQ(unitText(2, 4), "°C/min");
    EXPECT_EQ(unitText(38, 9), "rev/year");
    EXPECT_EQ(unitText(5, 10), "V/rate 10");
}

}  // namespace
