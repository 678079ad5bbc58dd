// Each rule by which a reading means something else than it says, on both sides of its edge.
#include <gtest/gtest.h>

#include <random>

#include "Instances.h"
#include "NaiveSensor.h"
#include "health/Sensor.h"

namespace {

using broker::Instance;
using broker::Value;
using host::Number;
using host::Sensor;
using host::Severity;

constexpr const char* DRIVES_SENSOR = "SSD1 Temperature(00000001)";

// As the provider publishes a drive's sensor.
Instance driveOf(int reading, int lowerCritical = -5, int upperCritical = 70) {
    Instance drive = sensorOf(DRIVES_SENSOR, reading, 0, 0,
                              {{"LowerThresholdCritical", lowerCritical},
                               {"UpperThresholdCritical", upperCritical},
                               {"LowerThresholdNonCritical", 0},
                               {"LowerThresholdFatal", 0},
                               {"UpperThresholdNonCritical", 0},
                               {"UpperThresholdFatal", 0},
                               {"MinReadable", 0},
                               {"MaxReadable", 0}});
    drive.properties.push_back({"DeviceID", Value::ofText("1")});
    drive.properties.push_back({"SensorType", Value::ofUnsigned(0, CMPI_uint16)});
    return drive;
}

Instance typed(int type, int reading, const std::vector<std::pair<std::string, int>>& limits) {
    Instance sensor = sensorOf("S(00000050)", reading, 0, 0, limits);
    sensor.properties.push_back({"SensorType", Value::ofUnsigned(static_cast<unsigned>(type), CMPI_uint16)});
    return sensor;
}

std::string wordOf(int type, int reading, const std::vector<std::pair<std::string, int>>& limits) {
    return Sensor::of(typed(type, reading, limits)).stateWord();
}

TEST(InterpretationTest, DriveReadingsAbove32767AreNegative) {
    EXPECT_EQ(Sensor::of(driveOf(32767)).reading, 32767);
    EXPECT_EQ(Sensor::of(driveOf(32768)).reading, -32768);
    EXPECT_EQ(Sensor::of(driveOf(65535)).reading, -1);
    EXPECT_EQ(Sensor::of(driveOf(65535)).rawReading, 65535);
    EXPECT_EQ(Sensor::of(driveOf(65530)).stateWord(), "critical low");
    EXPECT_EQ(Sensor::of(driveOf(65531)).stateWord(), "ok");
}

TEST(InterpretationTest, DriveReadingsOf0And0KelvinAreNone) {
    for (const int reading : {0, 65263}) {
        const Sensor drive = Sensor::of(driveOf(reading));
        EXPECT_EQ(drive.reading, std::nullopt);
        EXPECT_EQ(drive.rawReading, reading);
        EXPECT_EQ(drive.stateWord(), "no reading");
        EXPECT_NE(drive.reason, "");
        EXPECT_TRUE(drive.isProblem());
    }
    EXPECT_EQ(Sensor::of(driveOf(1)).reading, 1);
    EXPECT_EQ(Sensor::of(driveOf(65262)).reading, -274);
    EXPECT_EQ(Sensor::of(driveOf(65264)).reading, -272);
}

TEST(InterpretationTest, DriveIsATemperatureWithItsCriticalLimitsAlone) {
    const Sensor drive = Sensor::of(driveOf(28));
    EXPECT_TRUE(drive.isDrive);
    EXPECT_EQ(drive.kind(), "temperature");
    EXPECT_EQ(drive.withUnit(drive.reading), "28 °C");
    EXPECT_EQ(drive.stateWord(), "ok");
    EXPECT_EQ(drive.lowerCritical, -5);
    EXPECT_EQ(drive.upperCritical, 70);
    for (const Number& none : {drive.lowerNonCritical, drive.lowerFatal, drive.upperNonCritical, drive.upperFatal,
                               drive.minReadable, drive.maxReadable}) {
        EXPECT_EQ(none, std::nullopt);
    }
    EXPECT_EQ(Sensor::of(driveOf(71)).stateWord(), "critical high");
}

TEST(InterpretationTest, DriveLimitOf0KelvinIsNone) {
    EXPECT_EQ(Sensor::of(driveOf(28, -273, -273)).stateWord(), "ok");
    EXPECT_EQ(Sensor::of(driveOf(28, -273, 60)).lowerCritical, std::nullopt);
    EXPECT_EQ(Sensor::of(driveOf(28, -272, 0)).lowerCritical, -272);
    EXPECT_EQ(Sensor::of(driveOf(28, -273, 0)).stateWord(), "critical high");
}

TEST(InterpretationTest, DriveIsRecognisedByNameDeviceAndType) {
    EXPECT_TRUE(host::isNameOfDriveSensor("SSD10 Temperature(0000000a)"));
    for (const char* other : {"SSD0 Temperature(00000000)", "SSD11 Temperature(0000000b)", "SSD1 Temperature(00000002)",
                              "SSD1 Temperature(0000001)", "ssd1 Temperature(00000001)", "SSD1 Temperature", ""}) {
        EXPECT_FALSE(host::isNameOfDriveSensor(other)) << other;
    }
    for (const auto& [property, value] : std::map<std::string, Value>{
             {"DeviceID", Value::ofText("00000001")}, {"SensorType", Value::ofUnsigned(2, CMPI_uint16)}}) {
        Instance chip = driveOf(65535);
        for (broker::NamedValue& each : chip.properties) {
            if (each.name == property) each.value = value;
        }
        EXPECT_EQ(Sensor::of(chip).reading, 65535) << property;
    }
    EXPECT_EQ(Sensor::of(typed(2, 65263, {})).reading, 65263);
    EXPECT_EQ(Sensor::of(typed(2, 0, {})).reading, 0);
}

TEST(InterpretationTest, NotAvailableIsNoReadingOfAnySensor) {
    constexpr int notAvailable = -2147483647 - 1;
    for (const Instance& instance : {typed(2, notAvailable, {}), typed(7, notAvailable, {}), driveOf(notAvailable)}) {
        const Sensor sensor = Sensor::of(instance);
        EXPECT_EQ(sensor.stateWord(), "no reading");
        EXPECT_EQ(sensor.reason, "the chip has no reading");
        EXPECT_EQ(sensor.rawReading, notAvailable);
    }
    Instance wide = typed(2, 0, {});
    wide.properties[1].value = Value::ofUnsigned(0x80000000U, CMPI_uint32);
    EXPECT_EQ(Sensor::of(wide).stateWord(), "no reading");
    EXPECT_EQ(Sensor::of(typed(2, notAvailable + 1, {})).reading, notAvailable + 1);
    EXPECT_EQ(Sensor::of(typed(2, 2147483647, {})).reading, 2147483647);
    EXPECT_EQ(Sensor::of(typed(2, -5, {{"LowerThresholdFatal", notAvailable}})).lowerFatal, std::nullopt);
}

TEST(InterpretationTest, WhatHasTwoStatesIsPastALimitThatItEquals) {
    for (int type = 0; type <= 17; ++type) {
        const bool hasTwoStates = type == 7 || type == 8 || type == 11 || type == 16;
        EXPECT_EQ(wordOf(type, 1, {{"UpperThresholdCritical", 1}}), hasTwoStates ? "critical high" : "ok") << type;
        EXPECT_EQ(wordOf(type, 0, {{"LowerThresholdCritical", 0}}), hasTwoStates ? "critical low" : "ok") << type;
        EXPECT_EQ(wordOf(type, 0, {{"UpperThresholdCritical", 1}}), "ok") << type;
        EXPECT_EQ(wordOf(type, 2, {{"UpperThresholdCritical", 1}}), "critical high") << type;
        EXPECT_EQ(wordOf(type, 1, {{"LowerThresholdCritical", 0}}), "ok") << type;
    }
}

TEST(InterpretationTest, KindIsAWord) {
    EXPECT_EQ(Sensor::of(typed(5, 0, {})).kind(), "fan");
    EXPECT_EQ(Sensor::of(typed(16, 0, {})).kind(), "intrusion");
    EXPECT_EQ(Sensor::of(typed(17, 0, {})).kind(), "type-17");
    EXPECT_EQ(Sensor::of(typed(65535, 0, {})).kind(), "type-65535");
}

TEST(InterpretationTest, RawNumbersStayAsGiven) {
    const Sensor raw = Sensor::asGiven(driveOf(65263));
    EXPECT_EQ(raw.reading, 65263);
    EXPECT_EQ(raw.upperFatal, 0);
    EXPECT_EQ(raw.unit, "");
}

// Random sensors, near all edges, against a reading of the rules that shares nothing with the model.
TEST(InterpretationTest, AgreesWithANaiveReadingForRandomSensors) {
    std::mt19937 random(20261122);
    for (int i = 0; i < 200000; ++i) {
        const NaiveSensor naive = NaiveSensor::made([&random](unsigned count) { return random() % count; });
        const std::string difference = naive.differenceFrom(Sensor::of(naive.instance()));
        ASSERT_EQ(difference, "") << "sensor " << i;
    }
}

}  // namespace
