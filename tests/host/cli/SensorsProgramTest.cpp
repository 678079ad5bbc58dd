#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "ProgramRun.h"
#include "Sandbox.h"
#include "Scenarios.h"
#include "TemporaryDirectory.h"

namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

// A sensor in each state, the gravest in the middle.
constexpr const char* STATES = R"(
[[sensor]]
handle = 0x10
name = "CPU Fan"
sensor-type = "tachometer"
base-units = "rpm"
lower-threshold-non-critical = 1200
reading = 1100
[[sensor]]
handle = 0x11
name = "CPU Temperature"
sensor-type = "temperature"
base-units = "degrees-c"
unit-modifier = -1
upper-threshold-fatal = 1000
reading = 1001
[[sensor]]
handle = 0x12
name = "Cover"
sensor-type = "switch"
upper-threshold-critical = 1
reading = 1
[[sensor]]
handle = 0x13
name = "Board"
reading = -2147483648
[[sensor]]
handle = 0x14
name = "Battery"
sensor-type = "voltage"
base-units = "volts"
reading = 3
)";

class SensorsProgramTest : public testing::Test {
  protected:
    void SetUp() override { REQUIRE_SANDBOX(); }

    ProgramEnd run(Arguments arguments, const std::string& scenario = STATES,
                   const std::vector<std::string>& environment = {}) const {
        const Arguments first{"sensors", "--scenario", m_directory.write("scenario.toml", scenario)};
        arguments.insert(arguments.begin(), first.begin(), first.end());
        return runProgram(arguments, environment);
    }

    // The first column of CSV without titles.
    std::string namesOf(Arguments arguments) const {
        arguments.insert(arguments.end(), {"--format", "csv", "--no-header"});
        const ProgramEnd end = run(arguments);
        EXPECT_EQ(end.exitCode, 0) << end.errors;
        std::istringstream lines(end.output);
        std::string names;
        for (std::string line; std::getline(lines, line);) names += line.substr(0, line.find('(')) + ';';
        return names;
    }

    TemporaryDirectory m_directory;
};

TEST_F(SensorsProgramTest, TableSaysStatesReasonsAndTheChipLibrary) {
    const ProgramEnd end = run({});
    EXPECT_EQ(end.exitCode, 0);
    EXPECT_EQ(end.errors, "");
    EXPECT_THAT(
        end.output,
        StartsWith("Sensor                      Reading  State          Lower limits (n/c/f)  Upper limits (n/c/f)\n"
                   "CPU Fan(00000010)          1100 rpm  low            1200 / - / -          -\n"
                   "CPU Temperature(00000011)  100.1 °C  fatal high     -                     - / - / 100.0\n"
                   "Cover(00000012)                   1  critical high  -                     - / 1 / -\n"
                   "Board(00000013)                   -  no reading     -                     -\n"
                   "Battery(00000014)               3 V  ok             -                     -\n"
                   "\n"
                   "Board(00000013): no reading; the chip has no reading\n"
                   "\n"
                   "Chip library: simulated, "));
}

TEST_F(SensorsProgramTest, ProblemsAreWhatIsPastALimitOrHasNoReading) {
    EXPECT_EQ(namesOf({"--problems"}), "CPU Fan;CPU Temperature;Cover;Board;");
    EXPECT_EQ(namesOf({"--problems", "--type", "switch"}), "Cover;");
    EXPECT_EQ(run({"--problems", "battery", "--no-header"}).output, "No sensor to show.\n");
}

TEST_F(SensorsProgramTest, WorstComeFirst) {
    EXPECT_EQ(namesOf({"--sort", "severity"}), "CPU Temperature;Cover;Board;CPU Fan;Battery;");
}

TEST_F(SensorsProgramTest, NamesChooseSensorsInTheirOrder) {
    EXPECT_EQ(namesOf({"battery", "cpu*", "0x11", "bo"}), "Battery;CPU Fan;CPU Temperature;Board;");
}

TEST_F(SensorsProgramTest, AmbiguousBeginningIsWrongUsageAndListsTheCandidates) {
    const ProgramEnd end = run({"cpu"});
    EXPECT_EQ(end.exitCode, 2);
    EXPECT_EQ(end.output, "");
    EXPECT_EQ(end.errors, "zelhost: cpu may mean several: CPU Fan(00000010), CPU Temperature(00000011)\n");
}

TEST_F(SensorsProgramTest, UnknownNameIsAnErrorWithWhatIsNear) {
    const ProgramEnd end = run({"battery", "Bord"});
    EXPECT_EQ(end.exitCode, 1);
    EXPECT_EQ(end.output, "");
    EXPECT_EQ(end.errors, "zelhost: nothing is named Bord; did you mean Board?\n");
}

TEST_F(SensorsProgramTest, UnknownNameThatStandsWithinOthersSuggestsThem) {
    EXPECT_EQ(run({"temp"}).errors, "zelhost: nothing is named temp; did you mean CPU Temperature(00000011)?\n");
    EXPECT_EQ(run({"000001"}).errors, "zelhost: nothing is named 000001; did you mean '*000001*'?\n");
    EXPECT_EQ(run({"e"}).errors, "zelhost: nothing is named e\n");
    EXPECT_EQ(run({"*tempo"}).errors, "zelhost: nothing is named *tempo\n");
}

TEST_F(SensorsProgramTest, ColourIsForTerminalsUnlessAskedForElsewhere) {
    EXPECT_EQ(run({}).output.find('\x1b'), std::string::npos);
    EXPECT_THAT(run({"--color", "always"}, STATES, {"NO_COLOR=1"}).output,
                HasSubstr("\n\x1b[1;31mCPU Temperature(00000011)"));
    EXPECT_EQ(run({"--color", "never"}).output.find('\x1b'), std::string::npos);
}

TEST_F(SensorsProgramTest, JsonNamesTheChipLibraryAndTheTime) {
    const nlohmann::json document = nlohmann::json::parse(run({"--format", "json", "cover"}).output);
    EXPECT_EQ(document["chip"]["simulated"], true);
    EXPECT_THAT(document["chip"]["library"], EndsWith("libzelchip.so.0"));
    EXPECT_EQ(document["sensors"].size(), 1U);
    EXPECT_EQ(document["sensors"][0]["severity"], "critical");
}

TEST_F(SensorsProgramTest, FailedStartIsReported) {
    const std::string fault = "\n[[fault]]\noperation = \"initialise\"\nstatus = 5\n";
    const ProgramEnd lost = run({}, STATES + fault);
    EXPECT_EQ(lost.exitCode, 1);
    EXPECT_EQ(lost.output, "");
    EXPECT_THAT(lost.errors, StartsWith("zelhost: the provider answered 16 CMPI_RC_ERR_METHOD_NOT_AVAILABLE\n"));
}

}  // namespace
