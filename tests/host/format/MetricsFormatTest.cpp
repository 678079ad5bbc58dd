#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <limits>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "Instances.h"
#include "MetricsReader.h"
#include "format/MetricsFormat.h"

namespace {

using host::EventLog;
using host::MetricsChoice;
using host::MetricsRound;
using host::Sensor;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using Families = std::vector<MetricsFamily>;

constexpr unsigned short CELSIUS = 2;
constexpr unsigned short FAHRENHEIT = 3;
constexpr unsigned short KELVIN = 4;
constexpr unsigned short VOLTS = 5;
constexpr unsigned short PERCENT = 65;

MetricsRound metricsRoundOf(const std::vector<broker::Instance>& sensors) {
    MetricsRound round;
    for (const broker::Instance& sensor : sensors) round.sensors.sensors.push_back(Sensor::of(sensor));
    round.eventLog.log = EventLog{true, false, {"a", "b"}};
    round.eventLog.newLines = 7;
    return round;
}

std::string metricsText(const MetricsRound& round, const MetricsChoice& choice) {
    return host::MetricsPages(choice).next(round);
}

Families pageOf(const MetricsRound& round, const MetricsChoice& choice = {}) {
    return readMetrics(metricsText(round, choice));
}

// What the page says of the one sensor "S" in the family; empty for nothing.
std::string valueOf(const broker::Instance& sensor, const std::string& family) {
    return sampleIn(pageOf(metricsRoundOf({sensor})), family, {{"sensor", "S"}}).value;
}

std::set<std::string> namesIn(const Families& families) {
    std::set<std::string> names;
    for (const MetricsFamily& family : families) names.insert(family.name);
    return names;
}

// How the page shows a sensor of that name.
std::string labelOf(const std::string& name) {
    return pageOf(metricsRoundOf({sensorOf(name, 1, CELSIUS, 0)})).front().samples.at(0).labels.at("sensor");
}

TEST(MetricsFormatTest, WholePage) {
    MetricsRound round =
        metricsRoundOf({sensorOf("CPU(00000001)", 4250, CELSIUS, -2, {{"UpperThresholdCritical", 4200}})});
    round.sensorsDuration = std::chrono::milliseconds(250);
    round.eventLogDuration = std::chrono::milliseconds(2);
    EXPECT_EQ(
        metricsText(round, {true, true}),
        "# HELP zelsensors_temperature_celsius Temperature that a sensor reads.\n"
        "# TYPE zelsensors_temperature_celsius gauge\n"
        "zelsensors_temperature_celsius{sensor=\"CPU(00000001)\"} 42.5\n"
        "# HELP zelsensors_temperature_threshold_celsius Threshold of a temperature.\n"
        "# TYPE zelsensors_temperature_threshold_celsius gauge\n"
        "zelsensors_temperature_threshold_celsius{sensor=\"CPU(00000001)\",bound=\"upper\",level=\"critical\"} 42\n"
        "# HELP zelsensors_sensor_severity The gravest threshold that a reading is past: 0 none, 1 non-critical, "
        "2 critical, 3 fatal.\n"
        "# TYPE zelsensors_sensor_severity gauge\n"
        "zelsensors_sensor_severity{sensor=\"CPU(00000001)\"} 2\n"
        "# HELP zelsensors_sensor_past_threshold The severity of the sensors that are past a threshold, and of no "
        "others.\n"
        "# TYPE zelsensors_sensor_past_threshold gauge\n"
        "zelsensors_sensor_past_threshold{sensor=\"CPU(00000001)\"} 2\n"
        "# HELP zelsensors_severity The gravest severity of all sensors.\n"
        "# TYPE zelsensors_severity gauge\n"
        "zelsensors_severity 2\n"
        "# HELP zelsensors_sensors Sensors that the provider names.\n"
        "# TYPE zelsensors_sensors gauge\n"
        "zelsensors_sensors 1\n"
        "# HELP zelsensors_sensors_failed Of these, the sensors without a reading.\n"
        "# TYPE zelsensors_sensors_failed gauge\n"
        "zelsensors_sensors_failed 0\n"
        "# HELP zelsensors_event_log_valid Whether the event log is valid.\n"
        "# TYPE zelsensors_event_log_valid gauge\n"
        "zelsensors_event_log_valid 1\n"
        "# HELP zelsensors_event_log_full Whether the event log is full.\n"
        "# TYPE zelsensors_event_log_full gauge\n"
        "zelsensors_event_log_full 0\n"
        "# HELP zelsensors_event_log_lines Lines in the event log.\n"
        "# TYPE zelsensors_event_log_lines gauge\n"
        "zelsensors_event_log_lines 2\n"
        "# HELP zelsensors_event_log_new_lines_total Lines that came into the event log since the program started.\n"
        "# TYPE zelsensors_event_log_new_lines_total counter\n"
        "zelsensors_event_log_new_lines_total 7\n"
        "# HELP zelsensors_scrape_success Whether the provider answered without an error.\n"
        "# TYPE zelsensors_scrape_success gauge\n"
        "zelsensors_scrape_success{collector=\"sensors\"} 1\n"
        "zelsensors_scrape_success{collector=\"event_log\"} 1\n"
        "# HELP zelsensors_scrape_status CIM status of the provider's answer; 0 is success.\n"
        "# TYPE zelsensors_scrape_status gauge\n"
        "zelsensors_scrape_status{collector=\"sensors\"} 0\n"
        "zelsensors_scrape_status{collector=\"event_log\"} 0\n"
        "# HELP zelsensors_scrape_duration_seconds Time that the provider took to answer.\n"
        "# TYPE zelsensors_scrape_duration_seconds gauge\n"
        "zelsensors_scrape_duration_seconds{collector=\"sensors\"} 0.25\n"
        "zelsensors_scrape_duration_seconds{collector=\"event_log\"} 0.002\n"
        "# HELP zelsensors_build_info Always 1; the version of zelhost, and whose chip library is read.\n"
        "# TYPE zelsensors_build_info gauge\n"
        "zelsensors_build_info{version=\"" ZELHOST_VERSION "\",chip=\"simulated\"} 1\n");
}

TEST(MetricsFormatTest, EachQuantityHasItsFamily) {
    const std::map<unsigned short, std::string> families{{CELSIUS, "temperature_celsius"},
                                                         {VOLTS, "voltage_volts"},
                                                         {6, "current_amperes"},
                                                         {7, "power_watts"},
                                                         {19, "fan_speed_rpm"}};
    for (const auto& [unit, family] : families) {
        EXPECT_EQ(valueOf(sensorOf("S", 1234, unit, -3), "zelsensors_" + family), "1.234") << family;
    }
}

TEST(MetricsFormatTest, OtherQuantitiesNameTheirUnit) {
    const Families page =
        pageOf(metricsRoundOf({sensorOf("S", 55, PERCENT, 0, {{"LowerThresholdFatal", 5}}), sensorOf("Plain", 3, 0, 0),
                               sensorOf("Rate", 9, VOLTS, 0, {{"RateUnits", 3}})}));
    EXPECT_EQ(sampleIn(page, "zelsensors_sensor_value", {{"sensor", "S"}, {"unit", "%"}}).value, "55");
    EXPECT_EQ(sampleIn(page, "zelsensors_sensor_value", {{"sensor", "Plain"}, {"unit", ""}}).value, "3");
    EXPECT_EQ(sampleIn(page, "zelsensors_sensor_value", {{"sensor", "Rate"}, {"unit", "V/s"}}).value, "9");
    EXPECT_EQ(
        sampleIn(page, "zelsensors_sensor_threshold_value", {{"sensor", "S"}, {"bound", "lower"}, {"level", "fatal"}})
            .value,
        "5");
    EXPECT_EQ(namesIn(page).count("zelsensors_voltage_volts"), 0U);
}

TEST(MetricsFormatTest, AllTemperaturesAreInCelsius) {
    EXPECT_EQ(valueOf(sensorOf("S", 2120, FAHRENHEIT, -1), "zelsensors_temperature_celsius"), "100");
    EXPECT_EQ(valueOf(sensorOf("S", 1005, FAHRENHEIT, -1), "zelsensors_temperature_celsius"), "38.0555555555556");
    EXPECT_EQ(valueOf(sensorOf("S", 29815, KELVIN, -2), "zelsensors_temperature_celsius"), "25");
    EXPECT_EQ(valueOf(sensorOf("S", 27315, KELVIN, -2), "zelsensors_temperature_celsius"), "0");
    const Families page = pageOf(metricsRoundOf({sensorOf("S", 300, KELVIN, 0, {{"UpperThresholdCritical", 373}})}));
    EXPECT_EQ(sampleIn(page, "zelsensors_temperature_threshold_celsius",
                       {{"sensor", "S"}, {"bound", "upper"}, {"level", "critical"}})
                  .value,
              "99.85");
}

TEST(MetricsFormatTest, ValuesAreExactAsDecimals) {
    EXPECT_EQ(valueOf(sensorOf("S", 2147483647, VOLTS, -9), "zelsensors_voltage_volts"), "2.147483647");
    EXPECT_EQ(valueOf(sensorOf("S", -2147483647, VOLTS, -3), "zelsensors_voltage_volts"), "-2147483.647");
    EXPECT_EQ(valueOf(sensorOf("S", 1, VOLTS, -1), "zelsensors_voltage_volts"), "0.1");
    EXPECT_EQ(valueOf(sensorOf("S", 9985, VOLTS, -2), "zelsensors_voltage_volts"), "99.85");
    EXPECT_EQ(valueOf(sensorOf("S", 100000, VOLTS, 0), "zelsensors_voltage_volts"), "100000");
    EXPECT_EQ(valueOf(sensorOf("S", 5, VOLTS, 25), "zelsensors_voltage_volts"), "5e+25");
    EXPECT_EQ(valueOf(sensorOf("S", 0, VOLTS, 2147483647), "zelsensors_voltage_volts"), "0");
}

TEST(MetricsFormatTest, NumberBeyondADoubleIsLeftOut) {
    for (const int modifier : {400, -400, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
        const Families page = pageOf(metricsRoundOf({sensorOf("S", 5, VOLTS, modifier)}));
        EXPECT_EQ(namesIn(page).count("zelsensors_voltage_volts"), 0U) << modifier;
        EXPECT_EQ(sampleIn(page, "zelsensors_sensor_severity", {{"sensor", "S"}}).value, "0") << modifier;
    }
}

TEST(MetricsFormatTest, SixThresholdsOrNone) {
    const MetricsRound round = metricsRoundOf({sensorOf("S", 50, CELSIUS, 0,
                                                        {{"LowerThresholdFatal", 1},
                                                         {"LowerThresholdCritical", 2},
                                                         {"LowerThresholdNonCritical", 3},
                                                         {"UpperThresholdNonCritical", 97},
                                                         {"UpperThresholdCritical", 98},
                                                         {"UpperThresholdFatal", 99}})});
    const Families page = pageOf(round);
    std::vector<std::string> shown;
    for (const MetricsSample& sample : page.at(1).samples) {
        shown.push_back(sample.labels.at("bound") + ' ' + sample.labels.at("level") + ' ' + sample.value);
    }
    EXPECT_THAT(shown, ElementsAre("lower noncritical 3", "lower critical 2", "lower fatal 1", "upper noncritical 97",
                                   "upper critical 98", "upper fatal 99"));
    EXPECT_THAT(metricsText(round, {false, false}), Not(HasSubstr("threshold_celsius")));
    EXPECT_THAT(metricsText(round, {false, false}), HasSubstr("zelsensors_temperature_celsius{sensor=\"S\"} 50\n"));
}

TEST(MetricsFormatTest, OnlyWhatIsPastAThresholdIsShownAsSuch) {
    const Families page = pageOf(metricsRoundOf({sensorOf("Within", 50, CELSIUS, 0, {{"UpperThresholdFatal", 50}}),
                                                 sensorOf("Past", 51, CELSIUS, 0, {{"UpperThresholdFatal", 50}})}));
    EXPECT_EQ(sampleIn(page, "zelsensors_sensor_past_threshold", {{"sensor", "Within"}}).value, "");
    EXPECT_EQ(sampleIn(page, "zelsensors_sensor_past_threshold", {{"sensor", "Past"}}).value, "3");
}

TEST(MetricsFormatTest, TerminalIsAsGraveAsItsGravestSensor) {
    const broker::Instance within = sensorOf("Within", 50, CELSIUS, 0, {{"UpperThresholdFatal", 50}});
    const broker::Instance past = sensorOf("Past", 51, CELSIUS, 0, {{"UpperThresholdCritical", 50}});
    const auto severityOf = [](const MetricsRound& round) {
        return sampleIn(pageOf(round), "zelsensors_severity").value;
    };
    EXPECT_EQ(severityOf(metricsRoundOf({within})), "0");
    EXPECT_EQ(severityOf(metricsRoundOf({past, within})), "2");
    // Nobody knows.
    EXPECT_EQ(severityOf(metricsRoundOf({})), "");
    MetricsRound unread;
    unread.sensors.sensors.push_back(Sensor::withoutReading("Failed", "why"));
    EXPECT_EQ(severityOf(unread), "");
}

TEST(MetricsFormatTest, SensorWithoutAReadingHasNoValueAndNoSeverity) {
    MetricsRound round = metricsRoundOf(
        {sensorOf("S", 5, VOLTS, 0), sensorOf("None", -2147483647 - 1, VOLTS, 0, {{"UpperThresholdFatal", 9}})});
    round.sensors.sensors.push_back(Sensor::withoutReading("Failed", "why"));
    const Families page = pageOf(round);
    EXPECT_EQ(sampleIn(page, "zelsensors_sensors").value, "3");
    EXPECT_EQ(sampleIn(page, "zelsensors_sensors_failed").value, "2");
    for (const char* name : {"None", "Failed"}) {
        EXPECT_EQ(sampleIn(page, "zelsensors_voltage_volts", {{"sensor", name}}).value, "");
        EXPECT_EQ(sampleIn(page, "zelsensors_sensor_severity", {{"sensor", name}}).value, "");
    }
    EXPECT_EQ(sampleIn(page, "zelsensors_voltage_threshold_volts",
                       {{"sensor", "None"}, {"bound", "upper"}, {"level", "fatal"}})
                  .value,
              "9");
}

TEST(MetricsFormatTest, FailureOfTheSensorsLeavesTheirReadingsOut) {
    MetricsRound round = metricsRoundOf({sensorOf("S", 5, VOLTS, 0)});
    round.sensors.status.rc = CMPI_RC_ERR_METHOD_NOT_AVAILABLE;
    const Families page = pageOf(round);
    EXPECT_EQ(namesIn(page),
              (std::set<std::string>{"zelsensors_event_log_valid", "zelsensors_event_log_full",
                                     "zelsensors_event_log_lines", "zelsensors_event_log_new_lines_total",
                                     "zelsensors_scrape_success", "zelsensors_scrape_status",
                                     "zelsensors_scrape_duration_seconds", "zelsensors_build_info"}));
    EXPECT_EQ(sampleIn(page, "zelsensors_scrape_success", {{"collector", "sensors"}}).value, "0");
    EXPECT_EQ(sampleIn(page, "zelsensors_scrape_status", {{"collector", "sensors"}}).value, "16");
    EXPECT_EQ(sampleIn(page, "zelsensors_scrape_success", {{"collector", "event_log"}}).value, "1");
    EXPECT_EQ(sampleIn(page, "zelsensors_build_info", {{"version", ZELHOST_VERSION}, {"chip", "system"}}).value, "1");
}

TEST(MetricsFormatTest, FailureOfTheEventLogLeavesItOut) {
    MetricsRound round = metricsRoundOf({});
    round.eventLog.log.reset();
    round.eventLog.status.rc = CMPI_RC_ERR_FAILED;
    const Families page = pageOf(round);
    EXPECT_EQ(namesIn(page), (std::set<std::string>{"zelsensors_sensors", "zelsensors_sensors_failed",
                                                    "zelsensors_scrape_success", "zelsensors_scrape_status",
                                                    "zelsensors_scrape_duration_seconds", "zelsensors_build_info"}));
    EXPECT_EQ(sampleIn(page, "zelsensors_scrape_success", {{"collector", "event_log"}}).value, "0");
    EXPECT_EQ(sampleIn(page, "zelsensors_scrape_status", {{"collector", "event_log"}}).value, "1");
}

TEST(MetricsFormatTest, UnknownStateOfTheEventLogIsLeftOut) {
    MetricsRound round = metricsRoundOf({});
    round.eventLog.log = EventLog{};
    round.eventLog.newLines.reset();
    const std::set<std::string> names = namesIn(pageOf(round));
    EXPECT_EQ(names.count("zelsensors_event_log_lines"), 1U);
    for (const char* name : {"valid", "full", "new_lines_total"}) {
        EXPECT_EQ(names.count(std::string("zelsensors_event_log_") + name), 0U) << name;
    }
}

TEST(MetricsFormatTest, NamesAreShownWhole) {
    EXPECT_EQ(labelOf("a \"quoted\" back\\slash"), "a \"quoted\" back\\slash");
    EXPECT_EQ(labelOf("Grün 温度 {a=\"b\"} # HELP"), "Grün 温度 {a=\"b\"} # HELP");
    EXPECT_EQ(labelOf(std::string(10240, 'x')), std::string(10240, 'x'));
    EXPECT_EQ(labelOf(""), "");
}

TEST(MetricsFormatTest, ControlCharactersAndWhatIsNoUtf8AreEscaped) {
    EXPECT_EQ(labelOf("a\nb\x1b[2J\x7f"), "a\\x0ab\\x1b[2J\\x7f");
    EXPECT_EQ(labelOf("\xff\xc3(\xed\xa0\x80"), "\\xff\\xc3(\\xed\\xa0\\x80");
}

TEST(MetricsFormatTest, DifferentNamesStayDifferent) {
    EXPECT_EQ(labelOf("\xff"), "\\xff");
    EXPECT_EQ(labelOf("\\xff"), "\\x5cxff");
    EXPECT_EQ(labelOf("\\x5cxff"), "\\x5cx5cxff");
    EXPECT_EQ(labelOf("\\xFf\\xg0\\x1"), "\\x5cxFf\\xg0\\x1");
    const Families page = pageOf(metricsRoundOf({sensorOf("\xff", 1, VOLTS, 0), sensorOf("\\xff", 2, VOLTS, 0)}));
    EXPECT_EQ(page.front().samples.size(), 2U);
}

TEST(MetricsFormatTest, OfSensorsWithTheSameNameTheFirstIsShown) {
    const Families page = pageOf(metricsRoundOf({sensorOf("S", 1, VOLTS, 0), sensorOf("S", 2, CELSIUS, 0)}));
    EXPECT_EQ(sampleIn(page, "zelsensors_voltage_volts", {{"sensor", "S"}}).value, "1");
    EXPECT_EQ(namesIn(page).count("zelsensors_temperature_celsius"), 0U);
    EXPECT_EQ(sampleIn(page, "zelsensors_sensors").value, "1");
}

TEST(MetricsFormatTest, LaterPageShowsItsOwnRoundAlone) {
    host::MetricsPages pages({});
    const MetricsRound first =
        metricsRoundOf({sensorOf("S", 1, VOLTS, 0, {{"UpperThresholdFatal", 9}}), sensorOf("T", 1, 2, 0)});
    MetricsRound failed = first;
    failed.sensors.status.rc = CMPI_RC_ERR_FAILED;
    const MetricsRound moved =
        metricsRoundOf({sensorOf("S", 2, VOLTS, 0, {{"UpperThresholdFatal", 9}}), sensorOf("T", 1, 2, 0)});
    const MetricsRound other = metricsRoundOf({sensorOf("S2", 10, VOLTS, 0, {{"UpperThresholdCritical", 9}})});
    for (const MetricsRound& round : {first, first, moved, failed, moved, other, first}) {
        EXPECT_EQ(pages.next(round), metricsText(round, {}));
    }
}

// The rows of the table of docs/metrics.md.
std::vector<std::vector<std::string>> documentedRows() {
    std::vector<std::vector<std::string>> rows;
    std::ifstream document(METRICS_DOCUMENT);
    for (std::string line; std::getline(document, line);) {
        if (line.rfind("| `zelsensors_", 0) != 0) continue;
        std::vector<std::string> cells;
        std::istringstream text(line.substr(2));
        for (std::string cell; std::getline(text, cell, '|');) {
            const std::size_t begin = cell.find_first_not_of(' ');
            cells.push_back(begin == std::string::npos ? ""
                                                       : cell.substr(begin, cell.find_last_not_of(' ') - begin + 1));
        }
        rows.push_back(cells);
    }
    return rows;
}

// A round that has a series of every family.
MetricsRound fullRound() {
    std::vector<broker::Instance> sensors;
    for (const unsigned short unit : {CELSIUS, VOLTS, static_cast<unsigned short>(6), static_cast<unsigned short>(7),
                                      static_cast<unsigned short>(19), PERCENT}) {
        sensors.push_back(sensorOf(std::to_string(unit), 10, unit, 0, {{"UpperThresholdFatal", 9}}));
    }
    return metricsRoundOf(sensors);
}

std::string labelsIn(const MetricsFamily& family) {
    std::string text;
    for (const auto& [label, value] : family.samples.front().labels) {
        text += (text.empty() ? "`" : ", `") + label + '`';
    }
    return text;
}

TEST(MetricsFormatTest, DocumentAndPageHaveTheSameFamilies) {
    std::vector<std::vector<std::string>> shown;
    for (const MetricsFamily& family : pageOf(fullRound())) {
        shown.push_back({'`' + family.name + '`', family.type, labelsIn(family), family.help});
    }
    std::vector<std::vector<std::string>> documented;
    for (const std::vector<std::string>& row : documentedRows()) {
        ASSERT_EQ(row.size(), 5U) << row.at(0);
        const std::string& unit = row[2];
        const std::string ending = row[0].substr(0, row[0].size() - 1);
        const bool endsInUnit =
            ending.size() > unit.size() && ending.substr(ending.size() - unit.size() - 1) == '_' + unit;
        EXPECT_TRUE(unit == "-" || endsInUnit) << row[0] << " in " << unit;
        documented.push_back({row[0], row[1], row[3], row[4]});
    }
    EXPECT_EQ(documented, shown);
}

}  // namespace
