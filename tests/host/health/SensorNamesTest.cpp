#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "health/SensorNames.h"

namespace {

using host::labelOf;
using host::NameMatch;
using host::namesMeantBy;
using testing::ElementsAre;
using testing::IsEmpty;

const std::vector<std::string> NAMES{
    "CPU Fan(00000040)", "CPU Temperature(00000010)", "Fan(0000001a)",  "fan(0000001b)",
    "No handle",         "Fan(2)(deadbeef)",          "+5 V(00000022)", "Größe(00000060)"};

std::vector<std::size_t> meantBy(const std::string& word) {
    const NameMatch match = namesMeantBy(word, NAMES);
    EXPECT_FALSE(match.isAmbiguous) << word;
    return match.places;
}

TEST(SensorNamesTest, LabelIsTheNameWithoutItsHandle) {
    EXPECT_EQ(labelOf("CPU Fan(00000040)"), "CPU Fan");
    EXPECT_EQ(labelOf("Fan(2)(deadbeef)"), "Fan(2)");
    EXPECT_EQ(labelOf("(00000001)"), "");
    for (const char* bare : {"Fan(2)", "Fan(0000004g)", "Fan 00000040)", "Fan(00000040", "00000040", ""}) {
        EXPECT_EQ(labelOf(bare), bare);
    }
}

TEST(SensorNamesTest, WholeNameMeansItselfEvenWhereAnotherDiffersInCase) {
    EXPECT_THAT(meantBy("Fan(0000001a)"), ElementsAre(2));
    EXPECT_THAT(meantBy("cpu fan(00000040)"), ElementsAre(0));
    EXPECT_THAT(meantBy("no HANDLE"), ElementsAre(4));
}

TEST(SensorNamesTest, LabelMeansAllThatBearIt) {
    EXPECT_THAT(meantBy("cpu fan"), ElementsAre(0));
    EXPECT_THAT(meantBy("FAN"), ElementsAre(2, 3));
    EXPECT_THAT(meantBy("+5 v"), ElementsAre(6));
}

TEST(SensorNamesTest, LabelThatBeginsAnotherMeansItsOwnSensorInAnyCase) {
    const std::vector<std::string> names{"CPU Fan(00000040)", "CPU Fan 2(00000041)"};
    for (const char* word : {"CPU Fan", "cpu FAN", "cpu fan(00000040)"}) {
        const NameMatch match = namesMeantBy(word, names);
        EXPECT_FALSE(match.isAmbiguous) << word;
        EXPECT_THAT(match.places, ElementsAre(0)) << word;
    }
}

TEST(SensorNamesTest, HandleIsTakenAsShownAndAsANumber) {
    EXPECT_THAT(meantBy("0000001a"), ElementsAre(2));
    EXPECT_THAT(meantBy("DEADBEEF"), ElementsAre(5));
    EXPECT_THAT(meantBy("0x1A"), ElementsAre(2));
    EXPECT_THAT(meantBy("0x00000040"), ElementsAre(0));
    EXPECT_THAT(meantBy("1a"), IsEmpty());
    EXPECT_THAT(meantBy("0x1c"), IsEmpty());
    EXPECT_THAT(meantBy("0x"), IsEmpty());
    EXPECT_THAT(meantBy("0x10000001a"), IsEmpty());
}

TEST(SensorNamesTest, BeginningOfOneNameMeansIt) {
    EXPECT_THAT(meantBy("cpu t"), ElementsAre(1));
    EXPECT_THAT(meantBy("fan(2"), ElementsAre(5));
    EXPECT_THAT(meantBy("PU"), IsEmpty());
}

TEST(SensorNamesTest, BeginningOfSeveralNamesIsAmbiguous) {
    for (const auto& [word, places] : std::map<std::string, std::vector<std::size_t>>{
             {"cpu", {0, 1}}, {"fa", {2, 3, 5}}, {"fan(0", {2, 3}}, {"", {0, 1, 2, 3, 4, 5, 6, 7}}}) {
        const NameMatch match = namesMeantBy(word, NAMES);
        EXPECT_TRUE(match.isAmbiguous) << word;
        EXPECT_EQ(match.places, places) << word;
    }
}

TEST(SensorNamesTest, PatternFitsWholeNamesAndLabels) {
    EXPECT_THAT(meantBy("*"), ElementsAre(0, 1, 2, 3, 4, 5, 6, 7));
    EXPECT_THAT(meantBy("*fan"), ElementsAre(0, 2, 3));
    EXPECT_THAT(meantBy("*FAN*"), ElementsAre(0, 2, 3, 5));
    EXPECT_THAT(meantBy("?an"), ElementsAre(2, 3));
    EXPECT_THAT(meantBy("*(0000001?)"), ElementsAre(1, 2, 3));
    EXPECT_THAT(meantBy("f?"), IsEmpty());
    EXPECT_THAT(meantBy("*a*a*a*a"), IsEmpty());
    EXPECT_THAT(meantBy("c*t*e"), ElementsAre(1));
}

TEST(SensorNamesTest, QuestionMarkIsOneCharacterWhateverItsBytes) {
    EXPECT_THAT(meantBy("Gr??e"), ElementsAre(7));
    EXPECT_THAT(meantBy("Gr????e"), IsEmpty());
}

}  // namespace
