#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <stdexcept>
#include <string>
#include <vector>

#include "Instances.h"
#include "PluginOutput.h"
#include "format/PerformanceData.h"
#include "format/PluginFormat.h"

namespace {

using host::Charset;
using host::EventLogState;
using host::performanceData;
using host::performanceLabel;
using host::performanceRange;
using host::pluginAnswer;
using host::PluginAnswer;
using host::PluginFindings;
using host::PluginRules;
using host::PluginState;
using host::Sensor;
using testing::HasSubstr;
using testing::StartsWith;

using Numbers = std::vector<std::pair<std::string, int>>;

constexpr unsigned short DEGREES = 2;

Sensor sensor(const std::string& name, int reading, const Numbers& more = {}, unsigned short unit = DEGREES,
              int modifier = 0) {
    return Sensor::of(sensorOf(name, reading, unit, modifier, more));
}

const Numbers LIMITS{{"UpperThresholdNonCritical", 80}, {"UpperThresholdCritical", 90}, {"UpperThresholdFatal", 100}};

PluginAnswer answerFor(std::vector<Sensor> sensors, const PluginRules& rules = {}) {
    PluginFindings findings;
    findings.round.sensors = std::move(sensors);
    return pluginAnswer(findings, rules, Charset::Utf8);
}

PluginState stateFor(std::vector<Sensor> sensors, const PluginRules& rules = {}) {
    const PluginAnswer answer = answerFor(std::move(sensors), rules);
    readPluginOutput(answer.text);
    return answer.state;
}

TEST(PluginAnswerTest, WholeText) {
    PluginFindings findings;
    findings.round.sensors = {sensor("Fine(00000001)", 50, LIMITS), sensor("Hot(00000002)", 85, LIMITS),
                              sensor("Hotter(00000003)", 95, LIMITS), Sensor::withoutReading("Gone(00000004)", "why")};
    findings.eventLog = EventLogState{true, true, 3};
    findings.ignored = 2;
    findings.note = "Chip library: none";
    const PluginAnswer answer = pluginAnswer(findings, {}, Charset::Utf8);
    EXPECT_EQ(answer.state, PluginState::Critical);
    EXPECT_EQ(answer.text,
              "SENSORS CRITICAL: Hotter(00000003) 95 °C critical high, Gone(00000004) no reading, Hot(00000002) 85 °C "
              "high, others: 1 (4 sensors, 2 ignored, event log: 3 lines, full) | 'Fine(00000001)'=50;~:80;~:90 "
              "'Hot(00000002)'=85;~:80;~:90 'Hotter(00000003)'=95;~:80;~:90 'Gone(00000004)'=U event-log-lines=3;;;0\n"
              "[CRITICAL] Hotter(00000003): 95 °C, critical high; upper limits (n/c/f) 80 / 90 / 100\n"
              "[UNKNOWN] Gone(00000004): no reading; why\n"
              "[WARNING] Hot(00000002): 85 °C, high; upper limits (n/c/f) 80 / 90 / 100\n"
              "[WARNING] event log: 3 lines, full\n"
              "Chip library: none\n");
    EXPECT_EQ(readPluginOutput(answer.text).data.size(), 5U);
}

TEST(PluginAnswerTest, AllWellIsOneLine) {
    EXPECT_EQ(answerFor({sensor("A", 50)}).text, "SENSORS OK: 1 sensor | A=50\n");
}

TEST(PluginAnswerTest, StateFollowsTheWorstSensor) {
    const Sensor fine = sensor("A", 50, LIMITS);
    const Sensor high = sensor("B", 85, LIMITS);
    const Sensor critical = sensor("C", 95, LIMITS);
    const Sensor fatal = sensor("D", 105, LIMITS);
    const Sensor gone = Sensor::withoutReading("E", "why");
    EXPECT_EQ(stateFor({fine}), PluginState::Ok);
    EXPECT_EQ(stateFor({fine, high}), PluginState::Warning);
    EXPECT_EQ(stateFor({fine, high, gone}), PluginState::Unknown);
    EXPECT_EQ(stateFor({fine, high, gone, critical}), PluginState::Critical);
    EXPECT_EQ(stateFor({gone, fatal}), PluginState::Critical);
}

TEST(PluginAnswerTest, WarningsAreChosen) {
    const PluginRules onCritical{true, false};
    EXPECT_EQ(stateFor({sensor("A", 95, LIMITS)}, onCritical), PluginState::Warning);
    EXPECT_EQ(stateFor({sensor("A", 105, LIMITS)}, onCritical), PluginState::Critical);
    EXPECT_EQ(stateFor({Sensor::withoutReading("A", "why")}, onCritical), PluginState::Unknown);
    EXPECT_EQ(stateFor({Sensor::withoutReading("A", "why")}, {false, true}), PluginState::Warning);
    const PluginOutput output = readPluginOutput(answerFor({sensor("A", 5, LIMITS)}, onCritical).text);
    EXPECT_EQ(output.data.front().warning, "~:80");
    EXPECT_EQ(output.data.front().critical, "~:100");
}

TEST(PluginAnswerTest, NothingToLookAtIsUnknown) {
    EXPECT_THAT(answerFor({}).text, StartsWith("SENSORS UNKNOWN: there are no sensors\n"));
    PluginFindings findings;
    findings.ignored = 1;
    EXPECT_THAT(pluginAnswer(findings, {}, Charset::Utf8).text,
                StartsWith("SENSORS UNKNOWN: all sensors are ignored\n"));
    findings.round.status.rc = CMPI_RC_ERR_FAILED;
    const PluginAnswer failed = pluginAnswer(findings, {}, Charset::Utf8);
    EXPECT_EQ(failed.state, PluginState::Unknown);
    EXPECT_THAT(failed.text, StartsWith("SENSORS UNKNOWN: names: the provider answered 1 CMPI_RC_ERR_FAILED\n"));
}

TEST(PluginAnswerTest, EventLog) {
    PluginFindings findings;
    findings.round.sensors = {sensor("A", 5)};
    const auto answerWith = [&findings](const EventLogState& log) {
        findings.eventLog = log;
        return pluginAnswer(findings, {}, Charset::Utf8);
    };
    EXPECT_EQ(answerWith({true, false, 1}).text,
              "SENSORS OK: 1 sensor, event log: 1 line | A=5 event-log-lines=1;;;0\n");
    EXPECT_EQ(answerWith({true, true, 1}).state, PluginState::Warning);
    EXPECT_EQ(answerWith({false, false, 0}).state, PluginState::Warning);
    EXPECT_THAT(answerWith({false, false, 0}).text, HasSubstr("event log: 0 lines, not valid"));
    findings.eventLog.reset();
    findings.eventLogFailure = broker::Status{CMPI_RC_ERR_FAILED, std::nullopt};
    EXPECT_EQ(pluginAnswer(findings, {}, Charset::Utf8).state, PluginState::Unknown);
}

TEST(PluginAnswerTest, NamesAndReasonsBreakNothing) {
    const std::vector<std::string> names{"a b",
                                         "a'b",
                                         "a\"b",
                                         "a|b",
                                         "a=b",
                                         "a\nb",
                                         "a\xff"
                                         "b",
                                         "'=1;2 x",
                                         "",
                                         "\u6e29",
                                         "a;b",
                                         "a\\b"};
    std::vector<Sensor> sensors;
    for (const std::string& name : names) {
        sensors.push_back(sensor(name, 85, LIMITS));
        sensors.push_back(Sensor::withoutReading("gone " + name, "a reason | with " + name));
    }
    const PluginAnswer answer = answerFor(sensors);
    const PluginOutput output = readPluginOutput(answer.text);
    EXPECT_EQ(output.data.size(), sensors.size());
    EXPECT_EQ(output.details.size(), sensors.size());
    for (const char* label : {"a b", "a\\x27b", "a\\x22b", "a\\x7cb", "a\\x3db", "a\\x0ab", "a\\xffb",
                              "\\x27\\x3d1;2 x", "(no name)", "\u6e29", "a;b", "a\\b"}) {
        EXPECT_EQ(output.dataOf.count(label), 1U) << label;
    }
    EXPECT_THAT(answer.text, HasSubstr("a\\x7cb: 85 °C"));
}

TEST(PluginAnswerTest, TextIsAsciiWhereLettersAre) {
    PluginFindings findings;
    findings.round.sensors = {sensor("A", 85, LIMITS)};
    EXPECT_THAT(pluginAnswer(findings, {}, Charset::Ascii).text, StartsWith("SENSORS WARNING: A 85 degC high "));
}

TEST(PluginAnswerTest, FailureBeforeAnythingWasAsked) {
    const PluginAnswer answer = host::unknownAnswer("a | b\nc", Charset::Utf8);
    EXPECT_EQ(answer.state, PluginState::Unknown);
    EXPECT_EQ(answer.text, "SENSORS UNKNOWN: a \\x7c b\\x0ac\n");
    readPluginOutput(answer.text);
}

TEST(PerformanceLabelTest, IsQuotedWhereItIsNotAWord) {
    EXPECT_EQ(performanceLabel("fan_1-a.b"), "fan_1-a.b");
    EXPECT_EQ(performanceLabel("CPU(00000001)"), "'CPU(00000001)'");
}

TEST(PerformanceRangeTest, Sides) {
    const Sensor volts = sensor("A", 5000, {}, 5, -3);
    EXPECT_EQ(performanceRange(volts, {4750, 5250}), "4.750:5.250");
    EXPECT_EQ(performanceRange(volts, {4750, std::nullopt}), "4.750:");
    EXPECT_EQ(performanceRange(volts, {std::nullopt, 5250}), "~:5.250");
    EXPECT_EQ(performanceRange(volts, {std::nullopt, std::nullopt}), "");
    EXPECT_EQ(performanceRange(volts, {5250, 4750}), "");
    EXPECT_EQ(performanceRange(volts, {-1, 0}), "-0.001:0.000");
}

// Each reading alerts by the range exactly where the model has it past the limit, whether the limit counts or not.
TEST(PerformanceRangeTest, AlertsAsTheModelDoes) {
    constexpr int SWITCH = 7;
    for (const int type : {2, SWITCH}) {
        for (int reading = -6; reading <= 6; ++reading) {
            const Sensor each =
                sensor("A", reading,
                       {{"SensorType", type}, {"LowerThresholdNonCritical", -3}, {"UpperThresholdNonCritical", 3}});
            const std::string range = performanceRange(each, {each.lowerNonCritical, each.upperNonCritical});
            EXPECT_EQ(alerts(range, reading), each.isProblem()) << type << ' ' << reading << ' ' << range;
        }
    }
}

TEST(PerformanceRangeTest, LimitsAtTheEndOfNumbers) {
    Sensor each = sensor("A", 0, {{"SensorType", 7}});
    EXPECT_EQ(performanceRange(each, {std::nullopt, std::numeric_limits<std::int64_t>::min()}), "");
    EXPECT_EQ(performanceRange(each, {std::numeric_limits<std::int64_t>::max(), std::nullopt}), "");
}

TEST(PerformanceDataTest, UnitsOfTheGuidelinesAlone) {
    const auto dataOf = [](unsigned short unit) { return performanceData(sensor("A", 5, {}, unit), {}, {}); };
    EXPECT_EQ(dataOf(21), "A=5s");
    EXPECT_EQ(dataOf(65), "A=5%");
    EXPECT_EQ(dataOf(61), "A=5B");
    EXPECT_EQ(dataOf(19), "A=5");
    EXPECT_EQ(dataOf(DEGREES), "A=5");
}

TEST(PerformanceDataTest, ValuesAreExact) {
    EXPECT_EQ(performanceData(sensor("A", -2147483647, {}, DEGREES, -18), {}, {}), "A=-0.000000002147483647");
    EXPECT_EQ(performanceData(sensor("A", 7, {}, DEGREES, 18), {}, {}), "A=7000000000000000000");
    EXPECT_EQ(performanceData(sensor("A", 7, {{"MaxReadable", 9}}, DEGREES, 19), {}, {}), "A=U");
    EXPECT_EQ(performanceData(sensor("A", 7, {{"MinReadable", -9}, {"MaxReadable", 9}}), {}, {}), "A=7;;;-9;9");
}

TEST(PluginOutputTest, StrictReaderRefuses) {
    for (const char* output : {"", "SENSORS OK: x", "SENSORS FINE: x\n", "SENSORS OK: x|A=1\n",
                               "SENSORS OK: x | A B=1\n", "SENSORS OK: x | A=1 A=2\n", "SENSORS OK: x | A=1rpm\n",
                               "SENSORS OK: x | A=1;5:3\n", "SENSORS OK: x | A=1 | B=2\n", "SENSORS OK: x\na | b=1\n",
                               "SENSORS OK: x | 'a=1\n", "SENSORS OK: x | A=1e3\n", "SENSORS OK: x | A=\n",
                               "SENSORS OK: x | A=1;;;low\n", "SENSORS OK: \x01 | A=1\n"}) {
        EXPECT_THROW(readPluginOutput(output), std::runtime_error) << output;
    }
}

}  // namespace
