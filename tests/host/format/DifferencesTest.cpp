// What is different between scenarios that a test makes up.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "JsonKeys.h"
#include "format/Differences.h"

namespace {

using host::Difference;
using host::differencesBetween;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

ScenarioContents fan() {
    ScenarioSensor sensor;
    sensor.handle = 0x40;
    sensor.name = "Fan";
    sensor.baseUnits = 19;  // revolutions a minute
    sensor.numbers = {{"accuracy", 100}, {"lower-threshold-critical", 900}};
    sensor.lowest = 1200;
    sensor.highest = 1300;
    ScenarioContents contents;
    contents.sensors.push_back(sensor);
    return contents;
}

class DifferencesTest : public testing::Test {
  protected:
    ScenarioSensor& changed() { return m_after.sensors.front(); }
    Difference onlyOne() const {
        const std::vector<Difference> differences = differencesBetween(m_before, m_after);
        EXPECT_THAT(differences, SizeIs(1));
        return differences.empty() ? Difference() : differences.front();
    }

    ScenarioContents m_before = fan();
    ScenarioContents m_after = fan();
};

TEST_F(DifferencesTest, SameContentsHaveNone) {
    EXPECT_THAT(differencesBetween(m_before, m_after), IsEmpty());
}

TEST_F(DifferencesTest, LimitIsInTheSensorsUnits) {
    changed().numbers[1].second = 600;
    EXPECT_EQ(onlyOne().what, "lower-threshold-critical");
    EXPECT_EQ(onlyOne().before, "900 rpm");
    EXPECT_EQ(onlyOne().after, "600 rpm");
}

TEST_F(DifferencesTest, AccuracyIsANumber) {
    changed().numbers[0].second = 50;
    EXPECT_EQ(onlyOne().what, "accuracy");
    EXPECT_EQ(onlyOne().after, "50");
}

TEST_F(DifferencesTest, LimitThatWentHasNothingAfterwards) {
    changed().numbers.pop_back();
    EXPECT_EQ(onlyOne().before, "900 rpm");
    EXPECT_EQ(onlyOne().after, "");
}

TEST_F(DifferencesTest, SensorIsTheSameUnderAnotherName) {
    changed().name = "Blower";
    EXPECT_EQ(onlyOne().sensor, "Fan(00000040)");
    EXPECT_EQ(onlyOne().what, "name");
    EXPECT_EQ(onlyOne().after, "Blower");
}

TEST_F(DifferencesTest, SensorWithAnotherHandleIsAnotherOne) {
    changed().handle = 0x41;
    const std::vector<Difference> differences = differencesBetween(m_before, m_after);
    ASSERT_THAT(differences, SizeIs(2));
    EXPECT_EQ(differences[0].sensor, "Fan(00000040)");
    EXPECT_EQ(differences[0].before, "1200 to 1300 rpm");
    EXPECT_EQ(differences[1].sensor, "Fan(00000041)");
    EXPECT_EQ(differences[1].before, "");
}

TEST_F(DifferencesTest, WhatDescribesASensorIsCompared) {
    changed().isLinear = false;
    EXPECT_EQ(onlyOne().what, "is-linear");
    changed() = fan().sensors.front();
    changed().otherSensorTypeDescription = "Louder";
    EXPECT_EQ(onlyOne().what, "other-sensor-type-description");
    EXPECT_EQ(onlyOne().after, "Louder");
}

TEST_F(DifferencesTest, ControlCharactersDoNotReachATerminal) {
    m_after.eventLog = {"\x1b[2J"};
    EXPECT_THAT(host::differencesText({onlyOne()}, host::Charset::Utf8), HasSubstr("\\x1b[2J"));
}

TEST_F(DifferencesTest, KeysAreExactlyThoseDocumented) {
    m_after.eventLog = {"line"};
    const nlohmann::json document = nlohmann::json::parse(host::differencesJson({onlyOne()}));
    EXPECT_EQ(keysIn(document), documentedKeys(DOCS "/json.md", "zelhost diff"));
}

}  // namespace
