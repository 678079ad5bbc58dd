// `zelhost scenario`: which scenarios there are, and what is wrong with one.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "ProgramRun.h"
#include "Scenarios.h"
#include "TemporaryDirectory.h"

namespace {

namespace fs = std::filesystem;
using testing::EndsWith;

class ScenarioProgramTest : public testing::Test {
  protected:
    TemporaryDirectory m_directory;
};

TEST_F(ScenarioProgramTest, ListShowsEverySuppliedScenario) {
    const ProgramEnd end = runProgram({"scenario", "list"});
    EXPECT_EQ(end.exitCode, 0);
    EXPECT_EQ(end.output,
              "Scenario          What it shows\n"
              "dying-sensor      A fan whose tachometer gives way\n"
              "grebel-drives     A Grebel terminal\n"
              "healthy           A healthy terminal\n"
              "no-driver         The kernel's service driver is missing\n"
              "overheating       A terminal that runs hot in a closed cabinet\n"
              "thousand-sensors  One thousand alike sensors, to see how things go with many\n");
    EXPECT_EQ(end.errors, "");
}

TEST_F(ScenarioProgramTest, ListOfAProgramAloneHasNoDirectory) {
    const fs::path program = m_directory.path("zelhost");
    fs::copy_file(ZELHOST, program);
    const ProgramEnd end = runProgram({"scenario", "list"}, {}, program);
    EXPECT_EQ(end.exitCode, 2);
    EXPECT_EQ(end.errors, "zelhost: there is no directory of scenarios beside zelhost\n");
}

TEST_F(ScenarioProgramTest, CheckNeedsNeitherProviderNorChip) {
    const fs::path program = m_directory.path("zelhost");
    fs::copy_file(ZELHOST, program);
    const std::string good = m_directory.write("good.toml", TWO_SENSORS);
    const ProgramEnd end = runProgram({"scenario", "check", good}, {}, program);
    EXPECT_EQ(end.exitCode, 0);
    EXPECT_EQ(end.output, good + ": no mistakes\n");
    EXPECT_EQ(end.errors, "");
}

TEST_F(ScenarioProgramTest, CheckShowsEveryMistakeOfEveryFile) {
    const std::string good = m_directory.write("good.toml", "");
    const std::string bad = m_directory.write("bad.toml", "model = 1\nseed = -1\n\"\\u001b\" = 2\n");
    const std::string worse = m_directory.write("worse.toml", "seed = \n");
    const std::string lost = m_directory.path("lost.toml");
    const ProgramEnd end = runProgram({"scenario", "check", bad, good, worse, lost});
    EXPECT_EQ(end.exitCode, 2);
    EXPECT_EQ(
        end.output.substr(0, end.output.find(worse)),
        bad + ":1: 'model' in the file is an integer, expected one of none, grebel, zan\n" + bad +
            ":2: 'seed' in the file is -1, expected an integer from 0 to 4294967295\n" + bad +
            ":3: unknown key '?' in the file, expected one of model, seed, recording, sensor, event-log, fault\n" +
            good + ": no mistakes\n");
    EXPECT_THAT(end.output, EndsWith(", expected valid TOML\n" + lost +
                                     ": cannot be read (No such file or directory), expected a scenario file\n"));
    EXPECT_EQ(end.errors, "");
}

TEST_F(ScenarioProgramTest, SuppliedScenariosHaveNoMistakes) {
    Arguments arguments{"scenario", "check"};
    for (const auto& entry : fs::directory_iterator(SCENARIOS)) arguments.push_back(entry.path());
    EXPECT_GT(arguments.size(), 2U);
    EXPECT_EQ(runProgram(arguments).exitCode, 0);
}

TEST_F(ScenarioProgramTest, WrongUsage) {
    const auto complaint = [](const Arguments& arguments) {
        const ProgramEnd end = runProgram(arguments);
        EXPECT_EQ(end.exitCode, 2);
        EXPECT_EQ(end.output, "");
        return end.errors.substr(0, end.errors.find('\n'));
    };
    EXPECT_EQ(complaint({"scenario"}), "zelhost: scenario: ACTION is missing");
    EXPECT_EQ(complaint({"scenario", "chek"}), "zelhost: scenario: there is no action chek; did you mean check?");
    EXPECT_EQ(complaint({"scenario", "check"}), "zelhost: scenario check: FILE is missing");
    EXPECT_EQ(complaint({"scenario", "list", "x"}), "zelhost: scenario list: there is an argument too many: x");
    EXPECT_EQ(complaint({"scenario", "list", "--format", "json"}), "zelhost: scenario has no format but the table");
}

}  // namespace
