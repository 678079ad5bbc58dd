#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>
#include <set>

#include "Instances.h"
#include "format/SensorsTable.h"
#include "text/Utf8.h"

namespace {

using broker::Value;
using host::Charset;
using host::columnsOf;
using host::Sensor;
using host::sensorsTable;
using host::TableLayout;
using testing::HasSubstr;
using testing::Not;

Sensor fan(int reading) {
    return Sensor::of(sensorOf("CPU Fan(00000040)", reading, 19, 0,
                               {{"LowerThresholdNonCritical", 1200}, {"LowerThresholdFatal", 600}}));
}

std::vector<Sensor> three() {
    return {Sensor::of(sensorOf("Power Supply Temperature(00000013)", 8710, 2, -2, {{"UpperThresholdCritical", 8500}})),
            fan(1199), Sensor::withoutReading("Board(00000011)", "the provider answered 1 CMPI_RC_ERR_FAILED")};
}

std::vector<std::string> linesOf(const std::string& text) {
    std::istringstream stream(text);
    std::vector<std::string> lines;
    for (std::string line; std::getline(stream, line);) lines.push_back(line);
    return lines;
}

TEST(SensorsTableTest, ShowsReadingsStatesLimitsAndReasons) {
    EXPECT_EQ(
        sensorsTable(three(), {}),
        "Sensor                               Reading  State          Lower limits (n/c/f)  Upper limits (n/c/f)\n"
        "Power Supply Temperature(00000013)  87.10 °C  critical high  -                     - / 85.00 / -\n"
        "CPU Fan(00000040)                   1199 rpm  low            1200 / - / 600        -\n"
        "Board(00000011)                            -  no reading     -                     -\n"
        "\n"
        "Board(00000011): no reading; the provider answered 1 CMPI_RC_ERR_FAILED\n");
}

TEST(SensorsTableTest, WithoutHeaderColumnsAreAsWideAsTheirCells) {
    EXPECT_EQ(sensorsTable({fan(1300)}, {Charset::Utf8, 0, false, false}),
              "CPU Fan(00000040)  1300 rpm  ok  1200 / - / 600  -\n");
}

TEST(SensorsTableTest, LineHasTheColourOfItsState) {
    const std::string text = sensorsTable(three(), {Charset::Utf8, 0, true, true});
    EXPECT_THAT(text, HasSubstr("\n\x1b[31mPower Supply Temperature(00000013)  87.10 °C  critical high"));
    EXPECT_THAT(text, HasSubstr("\x1b[0m\n\x1b[33mCPU Fan(00000040)"));
    EXPECT_THAT(text, HasSubstr("\x1b[35mBoard(00000011)"));
    EXPECT_THAT(sensorsTable({fan(1300)}, {Charset::Utf8, 0, true, true}), Not(HasSubstr("\x1b")));
}

TEST(SensorsTableTest, NameShrinksFirst) {
    EXPECT_EQ(linesOf(sensorsTable(three(), {Charset::Utf8, 100, true, false}))[1],
              "Power Supply Temperature(000...  87.10 °C  critical high  -                     - / 85.00 / -");
}

TEST(SensorsTableTest, LimitsGoBeforeNamesGetTooShortTheLowerOnesFirst) {
    const std::vector<std::string> at80 = linesOf(sensorsTable(three(), {Charset::Utf8, 80, true, false}));
    EXPECT_EQ(at80[0], "Sensor                              Reading  State          Upper limits (n/c/f)");
    EXPECT_EQ(at80[1], "Power Supply Temperature(00000...  87.10 °C  critical high  - / 85.00 / -");
    EXPECT_EQ(linesOf(sensorsTable(three(), {Charset::Utf8, 40, true, false}))[1],
              "Power Supply...  87.10 °C  critical high");
}

TEST(SensorsTableTest, OneLineIsTakenWhereTheShortestNameJustFits) {
    const auto at = [](std::size_t columns) {
        return sensorsTable({three()[0]}, {Charset::Utf8, columns, false, false});
    };
    EXPECT_EQ(at(37), "Power Sup...  87.10 °C  critical high\n");
    EXPECT_EQ(at(36), "Power Supply Temperature(00000013)\n  87.10 °C  critical high\n");
}

TEST(SensorsTableTest, NamesSendNothingToTheTerminal) {
    EXPECT_EQ(sensorsTable({Sensor::withoutReading("A\x1b[31m", "it is gone")}, {Charset::Utf8, 0, false, false}),
              "A\\x1b[31m  -  no reading  -  -\n"
              "\n"
              "A\\x1b[31m: no reading; it is gone\n");
}

TEST(SensorsTableTest, WhereOneLineIsTooNarrowASensorTakesSeveral) {
    EXPECT_EQ(sensorsTable({three()[0]}, {Charset::Utf8, 30, false, false}),
              "Power Supply Temperature(00000\n  87.10 °C  critical high\n");
    EXPECT_EQ(sensorsTable({three()[0]}, {Charset::Utf8, 20, false, false}),
              "Power Supply Tempera\n  87.10 °C\n  critical high\n");
}

// Every number, with its sign, point and all digits, that stands in the text.
std::multiset<std::string> numbersIn(const std::string& text) {
    std::multiset<std::string> numbers;
    std::istringstream stream(text);
    for (std::string word; stream >> word;) {
        if (word.find_first_not_of("-.0123456789") == std::string::npos && word != "-") numbers.insert(word);
    }
    return numbers;
}

// Whether each cell stands whole in the line, after its name, in the order of the columns.
bool holdsCells(const std::string& line, const std::vector<std::string>& cells) {
    std::size_t from = 0;
    for (const std::string& cell : cells) {
        const std::size_t at = line.find(cell, from);
        const std::size_t end = at + cell.size();
        if (at == std::string::npos || (at > 0 && line[at - 1] != ' ' && line[at - 1] != '\n')) return false;
        if (end < line.size() && line[end] != ' ' && line[end] != '\n') return false;
        from = end;
    }
    return true;
}

Sensor randomSensor(std::mt19937& random) {
    const auto number = [&random] { return static_cast<int>(random() >> (random() % 32)) - 1000; };
    broker::Instance instance = sensorOf(std::string(1 + random() % 40, 'n'), number(), random() % 8 == 0 ? 99 : 5,
                                         static_cast<int>(random() % 12) - 6);
    for (const char* limit : {"LowerThresholdNonCritical", "LowerThresholdCritical", "UpperThresholdFatal"}) {
        if (random() % 2 == 0) instance.properties.push_back({limit, Value::ofSigned(number())});
    }
    return Sensor::of(instance);
}

class WidthTest : public testing::TestWithParam<std::size_t> {};

// Columns may go as a whole; what is shown of a sensor, its reading and state always, is shown whole.
TEST_P(WidthTest, NoNumberIsCut) {
    std::mt19937 random(7);
    for (int i = 0; i < 300; ++i) {
        const Sensor sensor = randomSensor(random);
        for (const Charset charset : {Charset::Utf8, Charset::Ascii}) {
            const std::string text = sensorsTable({sensor}, {charset, GetParam(), false, false});
            const std::string reading = host::shownIn(charset, sensor.withUnit(sensor.reading));
            const std::vector<std::string> least{reading, sensor.stateWord()};
            std::vector<std::string> withUpper = least;
            withUpper.push_back(upperLimits(sensor));
            std::vector<std::string> all = least;
            all.push_back(lowerLimits(sensor));
            all.push_back(upperLimits(sensor));
            std::multiset<std::string> shown = numbersIn(text);
            const bool isWhole = holdsCells(text, all) || holdsCells(text, withUpper) || holdsCells(text, least);
            EXPECT_TRUE(isWhole) << text;
            std::multiset<std::string> known;
            for (const std::string& cell : all) known.merge(numbersIn(cell));
            for (const std::string& each : shown) EXPECT_TRUE(known.count(each) > 0) << each << " in\n" << text;
            for (const std::string& line : linesOf(text)) {
                const bool isOneNumber = line == "  " + reading;
                const bool mayBeTooLong = isOneNumber || line == "  " + sensor.stateWord();
                EXPECT_TRUE(mayBeTooLong || columnsOf(line) <= GetParam()) << line;
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Columns, WidthTest, testing::Values(10, 20, 40, 60, 80, 200));

TEST(SensorsTableTest, ReasonsAreWrappedBetweenWords) {
    EXPECT_EQ(sensorsTable({three()[2]}, {Charset::Utf8, 40, false, false}),
              "Board(00000011)  -  no reading  -  -\n"
              "\n"
              "Board(00000011): no reading; the\n"
              "  provider answered 1 CMPI_RC_ERR_FAILED\n");
}

}  // namespace
