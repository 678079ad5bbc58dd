#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <string>

#include "PluginOutput.h"
#include "ProgramRun.h"
#include "Sandbox.h"
#include "Scenarios.h"
#include "TemporaryDirectory.h"

namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

enum ExitStatus { Ok = 0, Warning = 1, Critical = 2, Unknown = 3 };

// Three sensors: past a non-critical threshold, past a critical one, and without a reading.
constexpr const char* THREE_STATES = R"(
model = "none"

[[sensor]]
handle = 1
name = "Warm"
sensor-type = "temperature"
base-units = "degrees-c"
upper-threshold-non-critical = 50
reading = 51

[[sensor]]
handle = 2
name = "Hot|=' \n"
sensor-type = "temperature"
base-units = "degrees-c"
upper-threshold-critical = 60
reading = 61

[[sensor]]
handle = 3
name = "Gone"
sensor-type = "tachometer"
base-units = "rpm"
reading = -2147483648

[event-log]
lines = ["one", "two"]
full = true
)";

class CheckProgramTest : public testing::Test {
  protected:
    void SetUp() override { REQUIRE_SANDBOX(); }

    ProgramEnd check(Arguments arguments, const std::vector<std::string>& environment = {}) {
        arguments.insert(arguments.begin(), "check");
        return runProgram(arguments, environment);
    }
    ProgramEnd checkThree(Arguments arguments) {
        arguments.insert(arguments.end(), {"--scenario", m_scenario});
        return check(arguments);
    }
    // The exit status, where the output keeps to the guidelines and says the same.
    int statusOf(const ProgramEnd& end) {
        static const std::vector<std::string> words{"OK", "WARNING", "CRITICAL", "UNKNOWN"};
        const PluginOutput output = readPluginOutput(end.output);
        EXPECT_THAT(output.text, StartsWith("SENSORS " + words.at(static_cast<std::size_t>(end.exitCode)) + ": "));
        return end.exitCode;
    }

    TemporaryDirectory m_directory;
    std::string m_scenario = m_directory.write("three.toml", THREE_STATES);
};

TEST_F(CheckProgramTest, WorstStateDecides) {
    const ProgramEnd end = checkThree({});
    EXPECT_EQ(statusOf(end), Critical);
    const PluginOutput output = readPluginOutput(end.output);
    EXPECT_EQ(output.text,
              "SENSORS CRITICAL: Hot\\x7c=' \\x0a(00000002) 61 °C critical high, Gone(00000003) no reading, "
              "Warm(00000001) 51 °C high (3 sensors)");
    ASSERT_EQ(output.data.size(), 3U);
    EXPECT_EQ(output.data[0].label, "Warm(00000001)");
    EXPECT_EQ(output.data[0].value, "51");
    EXPECT_EQ(output.data[0].warning, "~:50");
    EXPECT_EQ(output.data[1].label, "Hot\\x7c\\x3d\\x27 \\x0a(00000002)");
    EXPECT_EQ(output.data[1].critical, "~:60");
    EXPECT_EQ(output.data[2].value, "U");
    EXPECT_THAT(output.details,
                ElementsAre(StartsWith("[CRITICAL] Hot"), StartsWith("[UNKNOWN] Gone(00000003): no reading; "),
                            StartsWith("[WARNING] Warm"), StartsWith("Chip library: simulated, ")));
    EXPECT_EQ(end.errors, "");
}

TEST_F(CheckProgramTest, IgnoredSensorsDecideNothing) {
    EXPECT_EQ(statusOf(checkThree({"--ignore", "hot*"})), Unknown);
    EXPECT_EQ(statusOf(checkThree({"--ignore", "hot*", "--ignore", "0x3"})), Warning);
    const ProgramEnd all = checkThree({"--ignore", "*"});
    EXPECT_EQ(statusOf(all), Unknown);
    EXPECT_THAT(all.output, StartsWith("SENSORS UNKNOWN: all sensors are ignored\n"));
    EXPECT_EQ(statusOf(checkThree({"--ignore", "nothing is called so"})), Critical);
}

TEST_F(CheckProgramTest, WarningsInPlaceOfWorse) {
    EXPECT_EQ(statusOf(checkThree({"--warn-on", "critical"})), Unknown);
    EXPECT_EQ(statusOf(checkThree({"--warn-on", "critical", "--warn-on", "no-reading"})), Warning);
    EXPECT_EQ(statusOf(checkThree({"--warn-on", "no-reading"})), Critical);
}

TEST_F(CheckProgramTest, AllWellIsOk) {
    const std::string fine = m_directory.write("fine.toml", R"(
[[sensor]]
handle = 1
name = "Fine"
sensor-type = "voltage"
base-units = "volts"
unit-modifier = -3
lower-threshold-critical = 4500
upper-threshold-critical = 5500
min-readable = 0
max-readable = 6800
reading = 5039
)");
    const ProgramEnd end = check({"--scenario", fine});
    EXPECT_EQ(statusOf(end), Ok);
    EXPECT_THAT(end.output,
                StartsWith("SENSORS OK: 1 sensor | 'Fine(00000001)'=5.039;;4.500:5.500;0.000;6.800\nChip library: "));
}

TEST_F(CheckProgramTest, EventLogOnlyWhereItIsWanted) {
    const ProgramEnd end = checkThree({"--ignore", "hot*", "--ignore", "gone", "--ignore", "warm", "--event-log"});
    EXPECT_EQ(statusOf(end), Unknown);
    EXPECT_THAT(end.output, HasSubstr("\n[WARNING] event log: 2 lines, full\n"));
    EXPECT_EQ(readPluginOutput(end.output).dataOf.at("event-log-lines").value, "2");
    EXPECT_EQ(checkThree({}).output.find("event log"), std::string::npos);
}

TEST_F(CheckProgramTest, SimulatedTerminalIsNoAnswerUnlessAskedFor) {
    const ProgramEnd end = check({}, {"ZELCHIP_SCENARIO=" + m_scenario});
    EXPECT_EQ(statusOf(end), Unknown);
    EXPECT_THAT(end.output, StartsWith("SENSORS UNKNOWN: the chip library is a simulated one"));
    EXPECT_EQ(end.output.find('|'), std::string::npos);
}

TEST_F(CheckProgramTest, FailedSensorIsUnknown) {
    const std::string scenario = m_directory.write("failing.toml", FAILING_SENSOR);
    const ProgramEnd end = check({"--scenario", scenario});
    EXPECT_EQ(statusOf(end), Unknown);
    EXPECT_THAT(end.output, StartsWith("SENSORS UNKNOWN: Failing(00000002) no reading (3 sensors) | "
                                       "'Good(00000001)'=7 'Failing(00000002)'=U 'Slow(00000003)'=9\n"));
    EXPECT_EQ(statusOf(check({"--scenario", scenario, "--warn-on", "no-reading"})), Warning);
}

TEST_F(CheckProgramTest, WhateverGoesWrongIsUnknownWithItsReason) {
    const std::string broken = m_directory.write("broken.toml", "seed = -1\n");
    const auto reasonFor = [this](const Arguments& arguments) {
        const ProgramEnd end = check(arguments);
        EXPECT_EQ(statusOf(end), Unknown) << testing::PrintToString(arguments);
        return readPluginOutput(end.output).text;
    };
    EXPECT_THAT(reasonFor({"--scenario", m_scenario, "--provider", "/no|where"}), HasSubstr("/no\\x7cwhere"));
    EXPECT_THAT(reasonFor({"--scenario", m_scenario, "--provider-output", "/no/where"}), HasSubstr("/no/where"));
    EXPECT_THAT(reasonFor({"--scenario", m_scenario, "--namespace", "x"}),
                HasSubstr("3 CMPI_RC_ERR_INVALID_NAMESPACE"));
    EXPECT_THAT(reasonFor({"--scenario", "/no/where"}), HasSubstr("/no/where"));
    EXPECT_THAT(reasonFor({"--scenario", broken}), HasSubstr("broken.toml:1: 'seed' in the file is -1, expected"));
    EXPECT_THAT(reasonFor({"--scenario", m_scenario, "--ignore", ""}), HasSubstr("may mean several sensors"));
    EXPECT_THAT(reasonFor({"--bogus"}), EndsWith(": there is no option --bogus"));
    EXPECT_THAT(reasonFor({"--warn-on", "x"}), EndsWith(": --warn-on: 'x' is not one of critical, no-reading"));
    EXPECT_THAT(reasonFor({"--warn-on"}), EndsWith(": --warn-on needs a value"));
    EXPECT_THAT(reasonFor({"--format", "json"}), EndsWith(": check has the format of monitoring plugins alone"));
    EXPECT_THAT(reasonFor({"--interval", "1"}), EndsWith(": check has no option --interval"));
    EXPECT_THAT(reasonFor({"x"}), EndsWith(": check: there is an argument too many: x"));
}

TEST_F(CheckProgramTest, EveryShippedScenarioGivesAnAnswer) {
    for (const char* scenario : {"healthy", "overheating", "dying-sensor", "grebel-drives", "no-driver"}) {
        const ProgramEnd end = check({"--scenario", scenario, "--event-log"});
        statusOf(end);
        EXPECT_EQ(end.exitCode == Unknown, std::string(scenario) == "no-driver") << scenario << end.output;
    }
}

TEST_F(CheckProgramTest, OutputThatCannotBeWrittenIsUnknown) {
    const int full = open("/dev/full", O_WRONLY | O_CLOEXEC);
    ASSERT_GE(full, 0);
    EXPECT_EQ(waitForProgram(startProgram({"check", "--scenario", m_scenario}, {full, -1, {}})), Unknown);
    close(full);
}

}  // namespace
