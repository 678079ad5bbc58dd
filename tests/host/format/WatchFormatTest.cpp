#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Instances.h"
#include "format/WatchFormat.h"
#include "text/Utf8.h"

namespace {

using host::Charset;
using host::Picture;
using host::pictureOf;
using host::plainRound;
using host::Sensor;
using host::WatchRound;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

// Of 100 °C at most.
Sensor heatedSensor(const std::string& name, int reading) {
    return Sensor::of(sensorOf(
        name, reading, 2, 0,
        {{"LowerThresholdNonCritical", 0}, {"UpperThresholdNonCritical", 80}, {"UpperThresholdCritical", 100}}));
}

WatchRound watchRoundOf(std::vector<Sensor> sensors) {
    WatchRound round;
    round.round.sensors = std::move(sensors);
    round.head = "12:00  round 1";
    round.note = "Chip library: none";
    return round;
}

std::vector<std::string> linesIn(const WatchRound& round, std::size_t columns, std::size_t lines,
                                 std::size_t first = 0) {
    return pictureOf(round, {columns, lines}, first, {}).lines;
}

TEST(PlainRoundTest, SensorsInTheirOrderWithStateAndBarOrReason) {
    const WatchRound round = watchRoundOf(
        {heatedSensor("Cool", 50), Sensor::withoutReading("Gone", "it is not there"), heatedSensor("Hot", 101)});
    EXPECT_EQ(plainRound(round, {}),
              "12:00  round 1  Chip library: none\n"
              "3 sensors: 1 past a limit, 1 without a reading\n"
              "Sensor  Reading  State          Between its limits\n"
              "Cool      50 °C  ok             [:-----------|-----:----!]\n"
              "Gone          -  no reading     it is not there\n"
              "Hot      101 °C  critical high  [:-----------------:---->]\n"
              "\n");
}

TEST(PlainRoundTest, FailedRoundShowsItsStatus) {
    WatchRound round = watchRoundOf({});
    round.round.status = {CMPI_RC_ERR_FAILED, "why\x1b"};
    EXPECT_THAT(plainRound(round, {}), HasSubstr("\nStatus 1 CMPI_RC_ERR_FAILED: why\\x1b; 0 sensors\n"));
    EXPECT_THAT(plainRound(round, {Charset::Utf8, true}), HasSubstr("\n\x1b[31mStatus 1"));
}

TEST(PlainRoundTest, AsciiThroughout) {
    WatchRound round = watchRoundOf({heatedSensor("\u00c4", 1)});
    round.note = "/\u00fc";
    const std::string text = plainRound(round, {Charset::Ascii, false});
    EXPECT_THAT(text, HasSubstr("12:00  round 1  /\\xc3\\xbc\n"));
    EXPECT_THAT(text, HasSubstr("\\xc3\\x84   1 degC  ok"));
}

TEST(PlainRoundTest, ColourByGravity) {
    const std::string text = plainRound(watchRoundOf({heatedSensor("A", 50), heatedSensor("B", 90),
                                                      heatedSensor("C", 101), Sensor::withoutReading("D", "why")}),
                                        {Charset::Utf8, true});
    EXPECT_THAT(text, HasSubstr("\nA "));
    EXPECT_THAT(text, HasSubstr("\n\x1b[33mB "));
    EXPECT_THAT(text, HasSubstr("\n\x1b[31mC "));
    EXPECT_THAT(text, HasSubstr("\n\x1b[35mD "));
}

TEST(PictureTest, AllInTheirOrderWhereThereIsRoom) {
    const auto lines =
        linesIn(watchRoundOf({heatedSensor("A", 50), heatedSensor("B", 101), heatedSensor("C", 90)}), 80, 9);
    ASSERT_EQ(lines.size(), 6U);
    EXPECT_EQ(lines[3].front(), 'A');
    EXPECT_EQ(lines[5].front(), 'C');
    EXPECT_THAT(lines[1], Not(HasSubstr("shown")));
}

TEST(PictureTest, WorstFirstWhereThereIsNoRoom) {
    const WatchRound round =
        watchRoundOf({heatedSensor("A", 50), heatedSensor("B", 90), Sensor::withoutReading("C", "why"),
                      heatedSensor("D", 101), heatedSensor("E", 90), heatedSensor("F", 51)});
    const auto lines = linesIn(round, 80, 6);
    EXPECT_EQ(lines[0], "6 sensors: 3 past a limit, 1 without a reading; shown: 1-4");
    ASSERT_EQ(lines.size(), 5U);
    EXPECT_EQ(lines[1].substr(0, 1) + lines[2][0] + lines[3][0] + lines[4][0], "DCBE");
}

TEST(PictureTest, IsMovedNoFartherThanThereAreSensors) {
    std::vector<Sensor> sensors;
    for (int i = 10; i < 40; ++i) sensors.push_back(heatedSensor("S" + std::to_string(i), 50));
    const Picture below = pictureOf(watchRoundOf(sensors), {80, 14}, 1000, {});
    EXPECT_EQ(below.room, 10U);
    EXPECT_EQ(below.first, 20U);
    EXPECT_THAT(below.lines[1], HasSubstr("; shown: 21-30"));
    EXPECT_EQ(below.lines.back().substr(0, 3), "S39");
    EXPECT_EQ(pictureOf(watchRoundOf(sensors), {80, 14}, 3, {}).first, 3U);
}

TEST(PictureTest, GetsNarrowerInSteps) {
    const WatchRound round = watchRoundOf({heatedSensor("A sensor with a name(00000001)", 50)});
    const auto line = [&](std::size_t columns) { return linesIn(round, columns, 24).back(); };
    EXPECT_EQ(line(80), "A sensor with a name(00000001)    50 °C  ok     [:-----------|-----:----!]");
    EXPECT_EQ(line(70), "A sensor with a name(00...    50 °C  ok     [:-----------|-----:----!]");
    EXPECT_EQ(line(52), "A sensor ...    50 °C  ok     [:---------|----:---!]");
    EXPECT_EQ(line(40), "A sensor ...    50 °C  ok     [:---|-:!]");
    EXPECT_EQ(line(39), "A sensor with a name...    50 °C  ok");
    EXPECT_EQ(line(22), "A s...    50 °C  ok");
    EXPECT_EQ(line(16), "A se...    50 °C");
    EXPECT_EQ(line(7), "  50 °C");
    EXPECT_EQ(line(3), " 50");
    EXPECT_EQ(line(1), "#");
}

TEST(PictureTest, HeadIsCutBetweenWords) {
    WatchRound round = watchRoundOf({heatedSensor("A", 50)});
    round.note = "Chip library: simulated, /a/long/path/libzelchip.so.0";
    const auto lines = linesIn(round, 40, 24);
    EXPECT_THAT(lines, ElementsAre("12:00  round 1", "Chip library: simulated,...", "1 sensor, all well",
                                   HasSubstr("Sensor"), HasSubstr("50 °C")));
}

TEST(PictureTest, NamesOfWideCharactersMoveNothing) {
    const auto lines = linesIn(watchRoundOf({heatedSensor("\u6e29\u5ea6", 50)}), 80, 24);
    EXPECT_THAT(lines.back(), HasSubstr("\u6e29\u5ea6\x1b[7G    50 °C"));
}

TEST(DrawnTest, LinesReplaceTheLastOnes) {
    EXPECT_EQ(host::drawn({{"a", "b"}, 0, 0}), "\x1b[H\x1b[Ka\n\x1b[Kb\n\x1b[J");
}

// Whatever the size: as many lines as there are, each as wide, and no number that is another one.
TEST(PictureTest, FitsEverySize) {
    std::vector<Sensor> sensors;
    for (int i = 0; i < 40; ++i) sensors.push_back(heatedSensor("Sensor number " + std::to_string(i), 12345));
    const WatchRound round = watchRoundOf(sensors);
    for (std::size_t columns = 1; columns <= 120; ++columns) {
        for (std::size_t lines = 1; lines <= 50; ++lines) {
            const Picture picture = pictureOf(round, {columns, lines}, 0, {});
            ASSERT_LE(picture.lines.size(), std::max<std::size_t>(1, lines - 1));
            for (const std::string& line : picture.lines) ASSERT_LE(host::columnsOf(line), columns) << line;
        }
    }
}

}  // namespace
