#include <gtest/gtest.h>

#include <limits>

#include "Instances.h"
#include "health/Sensor.h"

namespace {

using broker::Value;
using host::limitsBar;
using host::Sensor;
using host::Severity;

Sensor viewOf(int reading, const std::vector<std::pair<std::string, int>>& limits) {
    return Sensor::of(sensorOf("S", reading, 2, 0, limits));
}

const std::vector<std::pair<std::string, int>> ALL_THRESHOLDS{{"LowerThresholdFatal", 0},
                                                              {"LowerThresholdCritical", 10},
                                                              {"LowerThresholdNonCritical", 20},
                                                              {"UpperThresholdNonCritical", 80},
                                                              {"UpperThresholdCritical", 90},
                                                              {"UpperThresholdFatal", 100},
                                                              {"MinReadable", -1000},
                                                              {"MaxReadable", 1000}};

std::string wordAt(int reading) {
    return viewOf(reading, ALL_THRESHOLDS).stateWord();
}

TEST(SensorTest, ReadingComesWithItsUnit) {
    const Sensor view = Sensor::of(sensorOf("CPU", 4250, 2, -2));
    EXPECT_EQ(view.name, "CPU");
    EXPECT_EQ(view.withUnit(view.reading), "42.50 °C");
    EXPECT_EQ(view.scaled(std::nullopt), "-");
}

TEST(SensorTest, UnknownUnitLeavesTheBareNumber) {
    const Sensor view = Sensor::of(sensorOf("S", 1, 0, 0));
    EXPECT_EQ(view.withUnit(view.reading), "1");
}

TEST(SensorTest, InstanceWithoutReadingIsNoSensor) {
    EXPECT_FALSE(host::isSensor(instanceOf("TQS_SystemEventLog", "L", {})));
    EXPECT_FALSE(host::isSensor(instanceOf("X", "S", {{"CurrentReading", Value::null(CMPI_sint32)}})));
    EXPECT_FALSE(host::isSensor(instanceOf("X", "S", {{"CurrentReading", Value::ofText("42")}})));
}

TEST(SensorTest, NumberBeyondSixtyFourBitsWithSignIsNone) {
    EXPECT_EQ(host::numberIn(Value::ofUnsigned(7, CMPI_uint64)), 7);
    EXPECT_EQ(host::numberIn(Value::ofUnsigned(std::numeric_limits<std::uint64_t>::max(), CMPI_uint64)), std::nullopt);
    EXPECT_EQ(host::numberIn(Value::ofBoolean(true)), std::nullopt);
}

TEST(SensorStateTest, ReadingOnAThresholdIsNotPastIt) {
    EXPECT_EQ(wordAt(80), "ok");
    EXPECT_EQ(wordAt(20), "ok");
    EXPECT_EQ(wordAt(90), "high");
    EXPECT_EQ(wordAt(0), "critical low");
}

TEST(SensorStateTest, GravestThresholdDecides) {
    EXPECT_EQ(wordAt(81), "high");
    EXPECT_EQ(wordAt(91), "critical high");
    EXPECT_EQ(wordAt(101), "fatal high");
    EXPECT_EQ(wordAt(19), "low");
    EXPECT_EQ(wordAt(9), "critical low");
    EXPECT_EQ(wordAt(-1), "fatal low");
}

TEST(SensorStateTest, AbsentThresholdsAreNeverPassed) {
    EXPECT_EQ(viewOf(2000000000, {}).stateWord(), "ok");
    EXPECT_EQ(viewOf(5, {{"UpperThresholdFatal", 4}}).stateWord(), "fatal high");
    EXPECT_EQ(viewOf(-2147483647, {{"LowerThresholdCritical", -5}}).state.severity, Severity::Critical);
}

TEST(LimitsBarTest, ShowsThresholdsAndReading) {
    EXPECT_EQ(limitsBar(viewOf(50, ALL_THRESHOLDS), 21), "[!-!-:-----|-----:-!-!]");
}

TEST(LimitsBarTest, ReadingBeyondAnEndPointsOutwards) {
    EXPECT_EQ(limitsBar(viewOf(-7, ALL_THRESHOLDS), 21), "[<-!-:-----------:-!-!]");
    EXPECT_EQ(limitsBar(viewOf(500, ALL_THRESHOLDS), 21), "[!-!-:-----------:-!->]");
}

TEST(LimitsBarTest, ReadingHidesAMarkInItsPlace) {
    EXPECT_EQ(limitsBar(viewOf(80, ALL_THRESHOLDS), 21), "[!-!-:-----------|-!-!]");
    EXPECT_EQ(limitsBar(viewOf(100, ALL_THRESHOLDS), 21), "[!-!-:-----------:-!-|]");
}

TEST(LimitsBarTest, ReadableRangeStandsInForThresholds) {
    EXPECT_EQ(limitsBar(viewOf(5, {{"MinReadable", 0}, {"MaxReadable", 10}}), 11), "[-----|-----]");
    EXPECT_EQ(limitsBar(viewOf(5, {{"MinReadable", 0}, {"UpperThresholdNonCritical", 10}, {"MaxReadable", 90}}), 11),
              "[-----|----:]");
}

TEST(LimitsBarTest, NoneWithoutLimitsOnBothSides) {
    EXPECT_EQ(limitsBar(viewOf(5, {}), 11), "");
    EXPECT_EQ(limitsBar(viewOf(5, {{"MinReadable", 0}}), 11), "");
    EXPECT_EQ(limitsBar(viewOf(5, {{"UpperThresholdFatal", 9}}), 11), "");
}

TEST(LimitsBarTest, NoneForLimitsInTheWrongOrder) {
    EXPECT_EQ(limitsBar(viewOf(5, {{"MinReadable", 10}, {"MaxReadable", 0}}), 11), "");
    EXPECT_EQ(limitsBar(viewOf(5, {{"MinReadable", 5}, {"MaxReadable", 5}}), 11), "");
}

TEST(LimitsBarTest, WidestRangeDoesNotOverflow) {
    EXPECT_EQ(limitsBar(viewOf(0, {{"MinReadable", -2147483647}, {"MaxReadable", 2147483647}}), 3), "[-|-]");
}

}  // namespace
