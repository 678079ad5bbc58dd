#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <string>
#include <type_traits>
#include <vector>

#include "CimText.h"
#include "FakeClock.h"
#include "FullLog.h"
#include "LogLines.h"
#include "OutputCapture.h"
#include "Sandbox.h"
#include "SensorProperties.h"
#include "TQS_NumericSensor.h"
#include "broker/Broker.h"

namespace {

// All 26 properties, each with a value of its own.
TQS_NumericSensor makeFullSensor() {
    TQS_NumericSensor sensor(0x1a);
    sensor.setAccuracy(-1);
    sensor.setBaseUnits(2);
    sensor.setCaption("Temperature(0000001a)");
    sensor.setCurrentReading(-4);
    sensor.setDescription("CPU(0000001a): Temperature sensor");
    sensor.setDeviceID("0000001a");
    sensor.setHysteresis(4294967295U);
    sensor.setIsLinear(true);
    sensor.setLowerThresholdCritical(10);
    sensor.setLowerThresholdFatal(-11);
    sensor.setLowerThresholdNonCritical(12);
    sensor.setMaxReadable(INT_MAX);
    sensor.setMinReadable(INT_MIN + 1);
    sensor.setName("CPU(0000001a)");
    sensor.setNominalReading(16);
    sensor.setOtherSensorTypeDescription("other");
    sensor.setRateUnits(65535);
    sensor.setResolution(19);
    sensor.setSensorType(32768);
    sensor.setUnitModifier(-3);
    sensor.setUpperThresholdCritical(24);
    sensor.setUpperThresholdFatal(25);
    sensor.setUpperThresholdNonCritical(26);
    return sensor;
}

const SensorValues FULL_VALUES = {{"Accuracy", "-1"},
                                  {"BaseUnits", "2"},
                                  {"Caption", "Temperature(0000001a)"},
                                  {"CurrentReading", "-4"},
                                  {"Description", "CPU(0000001a): Temperature sensor"},
                                  {"DeviceID", "0000001a"},
                                  {"Hysteresis", "4294967295"},
                                  {"IsLinear", "true"},
                                  {"LowerThresholdCritical", "10"},
                                  {"LowerThresholdFatal", "-11"},
                                  {"LowerThresholdNonCritical", "12"},
                                  {"MaxReadable", "2147483647"},
                                  {"MinReadable", "-2147483647"},
                                  {"Name", "CPU(0000001a)"},
                                  {"NominalReading", "16"},
                                  {"OtherSensorTypeDescription", "other"},
                                  {"RateUnits", "65535"},
                                  {"Resolution", "19"},
                                  {"SensorType", "32768"},
                                  {"UnitModifier", "-3"},
                                  {"UpperThresholdCritical", "24"},
                                  {"UpperThresholdFatal", "25"},
                                  {"UpperThresholdNonCritical", "26"}};

class NumericSensorClockTest : public testing::Test {
  protected:
    NumericSensorClockTest() { fakeclock::set({1000, 500}); }
    ~NumericSensorClockTest() override { fakeclock::useReal(); }
};

class NumericSensorModelTest : public testing::Test {
  protected:
    broker::Broker m_broker;
    broker::Request m_request{m_broker};

    broker::Instance instanceOf(const TQS_NumericSensor& sensor) {
        return broker::copyOut(sensor.getInstance(m_broker.handle()));
    }
};

}  // namespace

TEST(NumericSensorTest, KeepsItsHandleAndNameAndStartsAsAChipSensor) {
    TQS_NumericSensor sensor(0xfffffffe);
    EXPECT_EQ(sensor.getHandle(), 0xfffffffe);
    EXPECT_STREQ(sensor.getName(), "");
    EXPECT_FALSE(sensor.isAdditional);
    sensor.setName("CPU");
    sensor.isAdditional = true;
    const TQS_NumericSensor copy = sensor;
    EXPECT_STREQ(copy.getName(), "CPU");
    EXPECT_TRUE(copy.isAdditional);
    EXPECT_TRUE(std::has_virtual_destructor_v<TQS_NumericSensor>);
}

TEST_F(NumericSensorClockTest, UpdateIntervalIsBroughtIntoItsLimits) {
    struct Case {
        int asked;
        int got;
    };
    const OutputCapture chatter(STDERR_FILENO);
    for (const Case one : {Case{499, 500},
                           {500, 500},
                           {1234, 1234},
                           {2500, 2500},
                           {2501, 2500},
                           {-1, 500},
                           {INT_MIN, 500},
                           {INT_MAX, 2500}}) {
        TQS_NumericSensor sensor(1);
        sensor.setUpdateInterval(one.asked);
        fakeclock::advanceMilliseconds(one.got - 1);
        EXPECT_FALSE(sensor.needsReading()) << one.asked;
        fakeclock::advanceMilliseconds(1);
        EXPECT_TRUE(sensor.needsReading()) << one.asked;
    }
}

TEST_F(NumericSensorClockTest, ReadingIsDueAfterOneThousandMilliseconds) {
    TQS_NumericSensor sensor(1);
    OutputCapture chatter(STDERR_FILENO);

    fakeclock::advanceMilliseconds(999);
    EXPECT_FALSE(sensor.needsReading());
    EXPECT_EQ(chatter.take(),
              "now=1000:999500us, prev=1000:500us\n"
              "no need to read - diff is 999, update interval is 1000\n");
    fakeclock::advanceMilliseconds(1);
    EXPECT_TRUE(sensor.needsReading());
    EXPECT_EQ(chatter.take(),
              "now=1001:500us, prev=1000:500us\n"
              "read sensor - diff was 1000, update interval is 1000\n");
    fakeclock::advanceMilliseconds(999);
    EXPECT_FALSE(sensor.needsReading());
    EXPECT_EQ(chatter.take(),
              "now=1001:999500us, prev=1001:500us\n"
              "no need to read - diff is 999, update interval is 1000\n");
}

TEST_F(NumericSensorClockTest, SensorJustBuiltNeedsNoReadingYet) {
    TQS_NumericSensor sensor(1);
    const OutputCapture chatter(STDERR_FILENO);
    EXPECT_FALSE(sensor.needsReading());
    fakeclock::advanceMilliseconds(1000);
    EXPECT_TRUE(sensor.needsReading());
}

TEST_F(NumericSensorClockTest, ClockSetBackHoldsReadingsUpUntilItHasCaughtUp) {
    TQS_NumericSensor sensor(1);
    OutputCapture chatter(STDERR_FILENO);
    fakeclock::set({400, 500});
    EXPECT_FALSE(sensor.needsReading());
    EXPECT_EQ(chatter.take(),
              "now=400:500us, prev=1000:500us\n"
              "no need to read - diff is -600000, update interval is 1000\n");
    fakeclock::set({1001, 499});
    EXPECT_FALSE(sensor.needsReading());
    fakeclock::set({1001, 500});
    EXPECT_TRUE(sensor.needsReading());
}

TEST_F(NumericSensorClockTest, ClockFailingAtConstructionLeavesNoLastReading) {
    fakeclock::failWith(EINVAL);
    TQS_NumericSensor sensor(1);
    OutputCapture chatter(STDERR_FILENO);
    fakeclock::set({0, 999999});
    EXPECT_FALSE(sensor.needsReading());
    EXPECT_EQ(chatter.take(),
              "now=0:999999us, prev=0:0us\n"
              "no need to read - diff is 999, update interval is 1000\n");
}

TEST_F(NumericSensorClockTest, ClockFailingLaterIsLoggedAndMakesAReadingDue) {
    REQUIRE_SANDBOX();
    const std::string standardError = runWithFullLog([] {
        TQS_NumericSensor sensor(1);
        fakeclock::failWith(EINVAL);
        OutputCapture chatter(STDERR_FILENO);
        EXPECT_TRUE(sensor.needsReading());
        EXPECT_EQ(chatter.take(), "");
        // The last read time has stayed.
        fakeclock::set({1000, 999999});
        EXPECT_FALSE(sensor.needsReading());
        EXPECT_THAT(chatter.take(), testing::StartsWith("now=1000:999999us, prev=1000:500us\n"));
    });
    const std::vector<LogLine> lines = loggedLines();
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(lines[0].level, "Error");
    EXPECT_EQ(lines[0].message, "gettimeofday failed, errno=22");
}

TEST(NumericSensorTest, TimeDifferenceIsInWholeMilliseconds) {
    struct Case {
        timeval later;
        timeval earlier;
        int difference;
    };
    for (const Case& one : {
             Case{{5, 999}, {4, 2}, 1000},             // 0.997 ms beyond the second are cut off
             Case{{5, 0}, {5, 0}, 0},                  //
             Case{{5, 0}, {4, 999999}, 0},             // one microsecond
             Case{{0, 0}, {0, 1}, -1},                 // rounded away from zero below it
             Case{{4, 0}, {5, 0}, -1000},              //
             Case{{2147484, 0}, {0, 0}, -2147483296},  // beyond 31 bits
             Case{{4294968, 0}, {0, 0}, 704},          // beyond 32 bits
             Case{{4294967296, 1000}, {0, 0}, 1},      // seconds beyond 32 bits
         }) {
        EXPECT_EQ(TQS_NumericSensor::tvdiff_ms(&one.later, &one.earlier), one.difference)
            << one.later.tv_sec << " - " << one.earlier.tv_sec;
    }
}

TEST_F(NumericSensorModelTest, PathHasTheNameAsItsOnlyKey) {
    const TQS_NumericSensor sensor = makeFullSensor();
    const broker::ObjectPath path = broker::copyOut(sensor.getObjectPath(m_broker.handle()));
    EXPECT_EQ(describe(path), "root/cimv2:TQS_NumericSensor Name=chars 'CPU(0000001a)'");
    EXPECT_EQ(instanceOf(sensor).path, path);
}

TEST_F(NumericSensorModelTest, InstanceHasAllPropertiesInAlphabeticalOrder) {
    EXPECT_EQ(describe(instanceOf(makeFullSensor()).properties), sensorProperties(FULL_VALUES));
}

TEST_F(NumericSensorModelTest, EachNumberIsLeftOutByItself) {
    using Setter = void (*)(TQS_NumericSensor&);
    struct Case {
        const char* property;
        Setter clear;
    };
    for (const Case& one : {
             Case{"Accuracy", [](TQS_NumericSensor& s) { s.setAccuracy(INT_MIN); }},
             Case{"Hysteresis", [](TQS_NumericSensor& s) { s.setHysteresis(0x80000000U); }},
             Case{"LowerThresholdCritical", [](TQS_NumericSensor& s) { s.setLowerThresholdCritical(INT_MIN); }},
             Case{"LowerThresholdFatal", [](TQS_NumericSensor& s) { s.setLowerThresholdFatal(INT_MIN); }},
             Case{"LowerThresholdNonCritical", [](TQS_NumericSensor& s) { s.setLowerThresholdNonCritical(INT_MIN); }},
             Case{"MaxReadable", [](TQS_NumericSensor& s) { s.setMaxReadable(INT_MIN); }},
             Case{"MinReadable", [](TQS_NumericSensor& s) { s.setMinReadable(INT_MIN); }},
             Case{"NominalReading", [](TQS_NumericSensor& s) { s.setNominalReading(INT_MIN); }},
             Case{"Resolution", [](TQS_NumericSensor& s) { s.setResolution(0x80000000U); }},
             Case{"UpperThresholdCritical", [](TQS_NumericSensor& s) { s.setUpperThresholdCritical(INT_MIN); }},
             Case{"UpperThresholdFatal", [](TQS_NumericSensor& s) { s.setUpperThresholdFatal(INT_MIN); }},
             Case{"UpperThresholdNonCritical", [](TQS_NumericSensor& s) { s.setUpperThresholdNonCritical(INT_MIN); }},
         }) {
        TQS_NumericSensor sensor = makeFullSensor();
        one.clear(sensor);
        SensorValues values = FULL_VALUES;
        EXPECT_EQ(values.erase(one.property), 1U);
        EXPECT_EQ(describe(instanceOf(sensor).properties), sensorProperties(values));
    }
}

TEST_F(NumericSensorModelTest, UnsetNumbersCountAsNotReported) {
    EXPECT_EQ(instanceOf(TQS_NumericSensor(1)).properties.size(), 14U);
}

TEST_F(NumericSensorModelTest, ReadingAndUnitModifierArePublishedWhateverTheyHold) {
    TQS_NumericSensor sensor = makeFullSensor();
    sensor.setCurrentReading(INT_MIN);
    sensor.setUnitModifier(INT_MIN);
    SensorValues values = FULL_VALUES;
    values["CurrentReading"] = values["UnitModifier"] = "-2147483648";
    EXPECT_EQ(describe(instanceOf(sensor).properties), sensorProperties(values));
}

TEST_F(NumericSensorModelTest, EmptyTextsArePublishedAsEmptyTexts) {
    TQS_NumericSensor sensor = makeFullSensor();
    sensor.setCaption("");
    sensor.setDescription("");
    sensor.setDeviceID("");
    sensor.setName("");
    sensor.setOtherSensorTypeDescription("");
    SensorValues values = FULL_VALUES;
    for (const char* text : {"Caption", "Description", "DeviceID", "Name", "OtherSensorTypeDescription"})
        values[text] = "";
    const broker::Instance instance = instanceOf(sensor);
    EXPECT_EQ(describe(instance.properties), sensorProperties(values));
    EXPECT_EQ(describe(instance.path), "root/cimv2:TQS_NumericSensor Name=chars ''");
    EXPECT_EQ(broker::copyOut(sensor.getObjectPath(m_broker.handle())), instance.path);
}

TEST_F(NumericSensorModelTest, RefusedPropertyIsThrownAtOnce) {
    const TQS_NumericSensor sensor = makeFullSensor();
    const Strings properties = sensorProperties(FULL_VALUES);
    for (unsigned nth = 1; nth <= properties.size(); ++nth) {
        m_broker.startRecording();
        m_broker.planFault("setProperty", nth, broker::Fault::Refuse, CMPI_RC_ERR_TYPE_MISMATCH);
        EXPECT_EQ(thrownCode([&] { sensor.getInstance(m_broker.handle()); }), CMPI_RC_ERR_TYPE_MISMATCH) << nth;
        EXPECT_EQ(describe(m_broker.recordedCalls()).back(), "setProperty " + properties[nth - 1]);
    }
}

TEST_F(NumericSensorModelTest, RefusedPathIsThrown) {
    const TQS_NumericSensor sensor = makeFullSensor();
    m_broker.planFault("newObjectPath", 1, broker::Fault::Refuse, CMPI_RC_ERR_INVALID_CLASS);
    m_broker.planFault("newObjectPath", 2, broker::Fault::Refuse, CMPI_RC_ERR_INVALID_NAMESPACE);
    EXPECT_EQ(thrownCode([&] { sensor.getObjectPath(m_broker.handle()); }), CMPI_RC_ERR_INVALID_CLASS);
    EXPECT_EQ(thrownCode([&] { sensor.getInstance(m_broker.handle()); }), CMPI_RC_ERR_INVALID_NAMESPACE);
}

TEST_F(NumericSensorModelTest, RefusedInstanceIsThrown) {
    const TQS_NumericSensor sensor = makeFullSensor();
    m_broker.planFault("newInstance", 1, broker::Fault::Refuse, CMPI_RC_ERR_INVALID_CLASS);
    m_broker.startRecording();
    EXPECT_EQ(thrownCode([&] { sensor.getInstance(m_broker.handle()); }), CMPI_RC_ERR_INVALID_CLASS);
    EXPECT_EQ(m_broker.recordedCalls().size(), 3U);
}

TEST_F(NumericSensorModelTest, RefusedKeyIsNotNoticed) {
    const TQS_NumericSensor sensor = makeFullSensor();
    m_broker.planFault("addKey", 1, broker::Fault::Refuse);
    m_broker.planFault("addKey", 2, broker::Fault::Refuse);
    EXPECT_EQ(describe(broker::copyOut(sensor.getObjectPath(m_broker.handle()))), "root/cimv2:TQS_NumericSensor");
    EXPECT_EQ(describe(instanceOf(sensor).properties), sensorProperties(FULL_VALUES));
    EXPECT_EQ(m_broker.faultsLeft(), 0U);
}
