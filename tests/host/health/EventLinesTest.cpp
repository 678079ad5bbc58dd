#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdlib.h>

#include "health/EventLines.h"

namespace {

using broker::Value;
using host::Answer;
using host::dateIn;
using host::hasOwnNumber;
using host::LineFilter;
using host::momentIn;
using host::withLines;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(EventLinesTest, FirstDateOfALine) {
    EXPECT_EQ(dateIn("0001 2026-02-09 07:42:10 System: power on"), "2026-02-09 07:42:10");
    EXPECT_EQ(dateIn("2026-02-09T07:42:10Z power on"), "2026-02-09 07:42:10");
    EXPECT_EQ(dateIn("power on at 2026-02-09 07:42"), "2026-02-09 07:42:00");
    EXPECT_EQ(dateIn("[2026-02-09 07:42] since 2026-01-01 00:00"), "2026-02-09 07:42:00");
}

TEST(EventLinesTest, WhatIsNoDate) {
    for (const char* line : {"", "power on", "2026-02-09", "07:42:10", "12026-02-09 07:42:10", "2026-02-30 07:42:10",
                             "2026-13-01 07:42:10", "2026-02-09 24:00:00", "2026-02-09 07:60:00", "2026-02-09  07:42",
                             "09/02/2026 07:42:10", "2026-02-09 07:421"}) {
        EXPECT_EQ(dateIn(line), std::nullopt) << line;
    }
}

TEST(EventLinesTest, NumberOfALinesOwn) {
    EXPECT_TRUE(hasOwnNumber("0001 2026-02-09"));
    EXPECT_TRUE(hasOwnNumber("7 "));
    for (const char* line : {"", "7", "2026-02-09 07:42:10", " 7 x", "x 7", "7\tx"})
        EXPECT_FALSE(hasOwnNumber(line)) << line;
}

TEST(EventLinesTest, Moments) {
    EXPECT_EQ(momentIn("2026-02-09", 0), "2026-02-09 00:00:00");
    EXPECT_EQ(momentIn("2026-02-09 07:42", 0), "2026-02-09 07:42:00");
    EXPECT_EQ(momentIn("2026-02-09T07:42:10", 0), "2026-02-09 07:42:10");
    setenv("TZ", "UTC-2", 1);
    tzset();
    constexpr std::time_t now = 1'000'000'000;  // 2001-09-09 01:46:40 UTC, two hours later here
    EXPECT_EQ(momentIn("0s", now), "2001-09-09 03:46:40");
    EXPECT_EQ(momentIn("40s", now), "2001-09-09 03:46:00");
    EXPECT_EQ(momentIn("46m", now), "2001-09-09 03:00:40");
    EXPECT_EQ(momentIn("3h", now), "2001-09-09 00:46:40");
    EXPECT_EQ(momentIn("9d", now), "2001-08-31 03:46:40");
    EXPECT_EQ(momentIn("1w", now), "2001-09-02 03:46:40");
}

TEST(EventLinesTest, WhatIsNoMoment) {
    for (const char* word : {"", "now", "2", "h", "-2h", "2 h", "2H", "2y", "1.5h", "99999999s", "2026-02",
                             "2026-02-30", "2026-02-09 ", "2026-02-09 07", "2026-02-09 24:00", "yesterday"}) {
        EXPECT_EQ(momentIn(word, 0), std::nullopt) << word;
    }
}

class LineFilterTest : public testing::Test {
  protected:
    // The places and the texts that are left of four lines.
    static Answer answerTo(const LineFilter& filter) {
        std::vector<Value> lines;
        for (const char* line : {"1 2026-02-01 00:00:00 Fan slow", "2 2026-02-02 00:00:00 fan stopped", "no date",
                                 "3 2026-02-01 12:00:00 Power"}) {
            lines.push_back(Value::ofText(line, CMPI_chars));
        }
        Answer answer;
        answer.reply.instances.push_back({{}, {{"LogLines", Value::ofArray(lines, CMPI_chars)}}});
        return withLines(answer, filter);
    }
    static std::vector<std::size_t> placesWith(const LineFilter& filter) {
        const Answer answer = answerTo(filter);
        EXPECT_EQ(answer.reply.instances[0].findProperty("LogLines")->elements.size(), answer.lines->places.size());
        EXPECT_EQ(answer.lines->total, 4U);
        return answer.lines->places;
    }
};

TEST_F(LineFilterTest, WithoutAWishAllLinesAreLeft) {
    EXPECT_THAT(placesWith({}), ElementsAre(1, 2, 3, 4));
}

TEST_F(LineFilterTest, SinceTakesEachLineByItsOwnDateAndThoseWithoutOne) {
    EXPECT_THAT(placesWith({"2026-02-01 12:00:00", "", std::nullopt}), ElementsAre(2, 3, 4));
    EXPECT_THAT(placesWith({"2026-02-01 12:00:01", "", std::nullopt}), ElementsAre(2, 3));
    EXPECT_THAT(placesWith({"2027-01-01 00:00:00", "", std::nullopt}), ElementsAre(3));
}

TEST_F(LineFilterTest, MatchIgnoresTheCaseOfLetters) {
    EXPECT_THAT(placesWith({std::nullopt, "FAN s", std::nullopt}), ElementsAre(1, 2));
    EXPECT_THAT(placesWith({std::nullopt, "fan.*", std::nullopt}), IsEmpty());
}

TEST_F(LineFilterTest, LastCountsWhatTheOthersLeave) {
    EXPECT_THAT(placesWith({std::nullopt, "", 3}), ElementsAre(2, 3, 4));
    EXPECT_THAT(placesWith({std::nullopt, "", 9}), ElementsAre(1, 2, 3, 4));
    EXPECT_THAT(placesWith({"2026-02-02 00:00:00", "fan", 1}), ElementsAre(2));
    EXPECT_EQ(answerTo({std::nullopt, "fan", 1}).reply.instances[0].findProperty("LogLines")->elements[0].text,
              "2 2026-02-02 00:00:00 fan stopped");
}

}  // namespace
