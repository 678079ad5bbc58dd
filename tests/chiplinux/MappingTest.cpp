// What a measurement becomes, without a system.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "Mapping.h"

namespace {

constexpr Quantity ALL[] = {Quantity::Temperature, Quantity::Voltage,  Quantity::Current,
                            Quantity::Fan,         Quantity::Humidity, Quantity::Power};

Limits everyLimit() {
    Limits limits;
    limits.minimum = 10;
    limits.maximum = 20.5;
    limits.lowerCritical = 5;
    limits.critical = 30;
    limits.emergency = 40;
    limits.maximumHysteresis = 18.25;
    limits.criticalHysteresis = 26;
    return limits;
}

struct Codes {
    Quantity quantity;
    unsigned sensorType;
    std::string otherType;
    unsigned baseUnits;
    int modifier;
};

TEST(MappingTest, EachQuantityHasItsTypeUnitsAndModifier) {
    const Codes all[] = {{Quantity::Temperature, 2, "", 2, -3}, {Quantity::Voltage, 3, "", 5, -3},
                         {Quantity::Current, 4, "", 6, -3},     {Quantity::Fan, 5, "", 19, 0},
                         {Quantity::Humidity, 9, "", 65, -3},   {Quantity::Power, 1, "Power", 7, -3}};
    for (const Codes& codes : all) {
        SCOPED_TRACE(codes.sensorType);
        const CSensorInformation information = describe(codes.quantity, {}, "Label");
        EXPECT_EQ(information.name, "Label");
        EXPECT_EQ(information.sensorType, codes.sensorType);
        EXPECT_EQ(information.otherSensorTypeDescription, codes.otherType);
        EXPECT_EQ(information.baseUnits, codes.baseUnits);
        EXPECT_EQ(information.rateUnits, 0);
        EXPECT_EQ(information.unitModifier, codes.modifier);
        EXPECT_TRUE(information.isLinear);
    }
}

TEST(MappingTest, WhatNoDriverGivesIsNotAvailable) {
    for (const Quantity quantity : ALL) {
        const CSensorInformation information = describe(quantity, everyLimit(), "");
        EXPECT_EQ(information.accuracy, NOT_AVAILABLE);
        EXPECT_EQ(information.resolution, NOT_AVAILABLE);
        EXPECT_EQ(information.maxReadable, NOT_AVAILABLE);
        EXPECT_EQ(information.minReadable, NOT_AVAILABLE);
        EXPECT_EQ(information.nominalReading, NOT_AVAILABLE);
        EXPECT_EQ(information.lowerThresholdFatal, NOT_AVAILABLE);
    }
}

TEST(MappingTest, LimitsAreScaledAsTheReading) {
    const CSensorInformation scaled = describe(Quantity::Temperature, everyLimit(), "");
    EXPECT_EQ(scaled.lowerThresholdNonCritical, 10000);
    EXPECT_EQ(scaled.lowerThresholdCritical, 5000);
    EXPECT_EQ(scaled.upperThresholdNonCritical, 20500);
    EXPECT_EQ(scaled.upperThresholdCritical, 30000);
    EXPECT_EQ(scaled.upperThresholdFatal, 40000);
    EXPECT_EQ(scaled.hysteresis, 2250);
    const CSensorInformation whole = describe(Quantity::Fan, everyLimit(), "");
    EXPECT_EQ(whole.lowerThresholdNonCritical, 10);
    EXPECT_EQ(whole.upperThresholdNonCritical, 21);
}

TEST(MappingTest, LimitsThatAreNotThereAreNotAvailable) {
    const CSensorInformation information = describe(Quantity::Temperature, {}, "");
    EXPECT_EQ(information.lowerThresholdNonCritical, NOT_AVAILABLE);
    EXPECT_EQ(information.lowerThresholdCritical, NOT_AVAILABLE);
    EXPECT_EQ(information.upperThresholdNonCritical, NOT_AVAILABLE);
    EXPECT_EQ(information.upperThresholdCritical, NOT_AVAILABLE);
    EXPECT_EQ(information.upperThresholdFatal, NOT_AVAILABLE);
    EXPECT_EQ(information.hysteresis, NOT_AVAILABLE);
}

Limits between(double minimum, double maximum) {
    Limits limits;
    limits.minimum = minimum;
    limits.maximum = maximum;
    return limits;
}

// The two non-critical thresholds in the sensor's units.
std::pair<int, int> thresholds(Quantity quantity, double minimum, double maximum) {
    const CSensorInformation information = describe(quantity, between(minimum, maximum), "");
    return {information.lowerThresholdNonCritical, information.upperThresholdNonCritical};
}

constexpr std::pair<int, int> NEITHER{NOT_AVAILABLE, NOT_AVAILABLE};

TEST(MappingTest, LimitsThatCrossOrMeetAreBothDropped) {
    for (const Quantity quantity : ALL) {
        EXPECT_EQ(thresholds(quantity, 0, 0), NEITHER);
        EXPECT_EQ(thresholds(quantity, 50, 50), NEITHER);
        EXPECT_EQ(thresholds(quantity, 50.001, 50), NEITHER);
        EXPECT_NE(thresholds(quantity, 49, 50).first, NOT_AVAILABLE);
        EXPECT_NE(thresholds(quantity, 49, 50).second, NOT_AVAILABLE);
    }
}

TEST(MappingTest, CriticalLimitsThatCrossOrMeetAreBothDropped) {
    Limits limits;
    limits.lowerCritical = 3.3;
    limits.critical = 3.3;
    const CSensorInformation information = describe(Quantity::Voltage, limits, "");
    EXPECT_EQ(information.lowerThresholdCritical, NOT_AVAILABLE);
    EXPECT_EQ(information.upperThresholdCritical, NOT_AVAILABLE);
}

TEST(MappingTest, TemperatureLimitsBelowAbsoluteZeroOrThatNothingSurvivesAreDropped) {
    EXPECT_EQ(thresholds(Quantity::Temperature, -273, 70), (std::pair{NOT_AVAILABLE, 70000}));
    EXPECT_EQ(thresholds(Quantity::Temperature, -273.15, 70), (std::pair{NOT_AVAILABLE, 70000}));
    EXPECT_EQ(thresholds(Quantity::Temperature, -272.9, 70), (std::pair{-272900, 70000}));
    EXPECT_EQ(thresholds(Quantity::Temperature, -10, 1000), (std::pair{-10000, NOT_AVAILABLE}));
    EXPECT_EQ(thresholds(Quantity::Temperature, -10, 999.9), (std::pair{-10000, 999900}));
    EXPECT_EQ(thresholds(Quantity::Temperature, 1000, 1001), NEITHER);
}

TEST(MappingTest, UpperTemperatureLimitsOfNoDegreeOrLessAreDropped) {
    EXPECT_EQ(thresholds(Quantity::Temperature, -10, 0), (std::pair{-10000, NOT_AVAILABLE}));
    EXPECT_EQ(thresholds(Quantity::Temperature, -10, -1), (std::pair{-10000, NOT_AVAILABLE}));
    Limits limits;
    limits.critical = 0;
    limits.emergency = -128;
    const CSensorInformation information = describe(Quantity::Temperature, limits, "");
    EXPECT_EQ(information.upperThresholdCritical, NOT_AVAILABLE);
    EXPECT_EQ(information.upperThresholdFatal, NOT_AVAILABLE);
}

TEST(MappingTest, FanLimitsThatNoFanHasAreDropped) {
    EXPECT_EQ(thresholds(Quantity::Fan, -1, 3000), (std::pair{NOT_AVAILABLE, 3000}));
    EXPECT_EQ(thresholds(Quantity::Fan, 0, 3000), (std::pair{NOT_AVAILABLE, 3000}));
    EXPECT_EQ(thresholds(Quantity::Fan, 300, 1350000), (std::pair{300, NOT_AVAILABLE}));
    EXPECT_EQ(thresholds(Quantity::Fan, 1, 100000), (std::pair{1, 100000}));
}

TEST(MappingTest, OtherLimitsMayBeNegative) {
    EXPECT_EQ(thresholds(Quantity::Voltage, -13.2, -10.8), (std::pair{-13200, -10800}));
    EXPECT_EQ(thresholds(Quantity::Current, -1, 0), (std::pair{-1000, 0}));
}

TEST(MappingTest, LimitsBeyond32BitsAreNotAvailable) {
    EXPECT_EQ(thresholds(Quantity::Voltage, -2147483.648, 2147483.647), (std::pair{NOT_AVAILABLE, 2147483647}));
    EXPECT_EQ(thresholds(Quantity::Power, 1, 2147483.6476), (std::pair{1000, NOT_AVAILABLE}));
}

TEST(MappingTest, HysteresisIsTheDistanceAtTheMaximumElseAtTheCriticalLimit) {
    Limits limits = everyLimit();
    limits.maximumHysteresis.reset();
    EXPECT_EQ(describe(Quantity::Temperature, limits, "").hysteresis, 4000);
    limits = everyLimit();
    limits.maximumHysteresis = 21;  // where the alarm would never end
    EXPECT_EQ(describe(Quantity::Temperature, limits, "").hysteresis, 4000);
    limits = everyLimit();
    limits.maximum = 0;  // dropped, and so is its distance
    EXPECT_EQ(describe(Quantity::Temperature, limits, "").hysteresis, 4000);
    limits.critical.reset();
    EXPECT_EQ(describe(Quantity::Temperature, limits, "").hysteresis, NOT_AVAILABLE);
}

TEST(MappingTest, ReadingsAreRoundedToTheNearest) {
    EXPECT_EQ(scaledReading(Quantity::Temperature, 25.5), 25500);
    EXPECT_EQ(scaledReading(Quantity::Temperature, -25.5004), -25500);
    EXPECT_EQ(scaledReading(Quantity::Voltage, 0.0005), 1);
    EXPECT_EQ(scaledReading(Quantity::Voltage, 0.0004), 0);
    EXPECT_EQ(scaledReading(Quantity::Fan, 1318.4), 1318);
    EXPECT_EQ(scaledReading(Quantity::Humidity, 49.664), 49664);
    EXPECT_EQ(scaledReading(Quantity::Power, 43.21), 43210);
    EXPECT_EQ(scaledReading(Quantity::Current, -0.25), -250);
}

TEST(MappingTest, ReadingsBeyond32BitsAreNotAvailable) {
    EXPECT_EQ(scaledReading(Quantity::Voltage, 2147483.647), 2147483647);
    EXPECT_EQ(scaledReading(Quantity::Voltage, 2147483.648), NOT_AVAILABLE);
    EXPECT_EQ(scaledReading(Quantity::Voltage, -2147483.647), -2147483647);
    EXPECT_EQ(scaledReading(Quantity::Voltage, -2147483.648), NOT_AVAILABLE);
    EXPECT_EQ(scaledReading(Quantity::Fan, 4294967296.0), NOT_AVAILABLE);
    EXPECT_EQ(scaledReading(Quantity::Power, 1e300), NOT_AVAILABLE);
    EXPECT_EQ(scaledReading(Quantity::Power, std::numeric_limits<double>::infinity()), NOT_AVAILABLE);
    EXPECT_EQ(scaledReading(Quantity::Power, -std::numeric_limits<double>::infinity()), NOT_AVAILABLE);
    EXPECT_EQ(scaledReading(Quantity::Power, std::nan("")), NOT_AVAILABLE);
}

TEST(MappingTest, FanWithoutACountIsNotAvailable) {
    EXPECT_EQ(scaledReading(Quantity::Fan, -1), NOT_AVAILABLE);
    EXPECT_EQ(scaledReading(Quantity::Fan, 0), 0);
    EXPECT_EQ(scaledReading(Quantity::Temperature, -1), -1000);
}

}  // namespace
