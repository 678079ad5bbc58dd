// What `zelhost doctor` finds about a terminal's chip library, a simulated one, and the provider's settings. What it
// finds on a Linux machine is in tests/chiplinux.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <sstream>

#include "ProgramRun.h"
#include "Sandbox.h"
#include "Scenarios.h"
#include "TemporaryDirectory.h"

namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

class DoctorProgramTest : public testing::Test {
  protected:
    void SetUp() override { REQUIRE_SANDBOX(); }

    // The lines, each with its columns set one blank apart.
    static std::vector<std::string> linesOf(const std::string& text) {
        std::vector<std::string> lines;
        std::istringstream stream(text);
        for (std::string line; std::getline(stream, line);) {
            std::string narrow;
            for (const char c : line)
                if (c != ' ' || narrow.empty() || narrow.back() != ' ') narrow += c;
            lines.push_back(narrow);
        }
        return lines;
    }

    // Of the real program on the plain chip library.
    static std::vector<std::string> settingsRows() {
        std::vector<std::string> rows;
        for (const std::string& line : linesOf(runProgram({"doctor", "--chip", PLAIN_CHIP}).output))
            if (line.rfind("settings ", 0) == 0 || line.rfind("log ", 0) == 0) rows.push_back(line);
        return rows;
    }

    TemporaryDirectory m_directory;
};

const std::string SIMULATED_LIBRARY = fs::path(CHIP).lexically_normal();
const std::string LINUX_CHIP = (fs::path(CHIP).parent_path() / "../chiplinux/libzelchip.so.0").lexically_normal();

TEST_F(DoctorProgramTest, NothingIsToBeDoneWhereAllIsWell) {
    const ProgramEnd end = runProgram({"doctor", "--chip", PLAIN_CHIP});
    EXPECT_EQ(end.exitCode, 0);
    EXPECT_EQ(end.errors, "");
    EXPECT_THAT(
        linesOf(end.output),
        ElementsAre("About Which Found", std::string("chip library " PLAIN_CHIP " it answers"),
                    "chip library " + LINUX_CHIP + " it is not asked; --chip linux asks it",
                    "chip library " + SIMULATED_LIBRARY + " it is not asked; --chip simulated asks it",
                    "provider TQS_NumericSensor 1 sensor", "provider TQS_SystemEventLog 1 line, not valid",
                    "log /var/log/tarn/tarn.log it is made when the first line comes",
                    "settings /etc/tarn/log.conf there is none: the defaults count",
                    "settings /etc/tarn/sensor.conf there is none: the defaults count", "", "Nothing is to be done."));
}

TEST_F(DoctorProgramTest, SimulatedTerminalIsReportedAsOne) {
    const std::string scenario = m_directory.write("scenario.toml", TWO_SENSORS);
    const ProgramEnd end = runProgram({"doctor", "--scenario", scenario});
    EXPECT_EQ(end.exitCode, 0) << end.output;
    const auto lines = linesOf(end.output);
    EXPECT_EQ(lines.at(1), "chip library " + SIMULATED_LIBRARY + " it answers; its terminal is simulated");
    EXPECT_THAT(lines, testing::Contains("scenario " + scenario + " it is played"));
    EXPECT_THAT(lines, testing::Contains("log - that of a simulated terminal is kept in memory"));
    EXPECT_FALSE(fs::exists("/var/log/tarn/tarn.log"));
}

TEST_F(DoctorProgramTest, MistakesOfAScenarioAreFindings) {
    const std::string scenario = m_directory.write("scenario.toml", "[[sensor]]\nhandle = 1\n");
    const ProgramEnd end = runProgram({"doctor", "--scenario", scenario});
    EXPECT_EQ(end.exitCode, 1);
    EXPECT_THAT(end.output, HasSubstr(scenario + ":1: "));
    EXPECT_THAT(end.output, HasSubstr("To do:\n1. mend the scenario, or name another one with --scenario\n"));
}

TEST_F(DoctorProgramTest, ChipLibraryThatIsMissingOrBrokenIsAFinding) {
    const ProgramEnd missing = runProgram({"doctor", "--chip", "system"});
    EXPECT_EQ(missing.exitCode, 1);
    EXPECT_THAT(linesOf(missing.output).at(1),
                "chip library - the chip library cannot be loaded: libzelchip.so.0: cannot open shared object file: No "
                "such file or directory");
    EXPECT_THAT(missing.output, HasSubstr("\n1. install the chip library: a terminal's own comes with the terminal; on "
                                          "any other machine the package zelsensors-linux brings one\n"));
    const std::string broken = m_directory.write("libzelchip.so.0", "no library");
    const ProgramEnd end = runProgram({"doctor"}, {"LD_LIBRARY_PATH=" + fs::path(broken).parent_path().string()});
    EXPECT_EQ(end.exitCode, 1);
    EXPECT_THAT(linesOf(end.output),
                testing::Contains("chip library libzelchip.so.0 the system's cannot be loaded: the chip library cannot "
                                  "be loaded: " +
                                  broken + ": file too short"));
}

TEST_F(DoctorProgramTest, SystemsLibraryIsSeenWhereItIsNotAsked) {
    const std::string directory = fs::path(PLAIN_CHIP).parent_path();
    const ProgramEnd end = runProgram({"doctor"}, {"LD_LIBRARY_PATH=" + directory});
    EXPECT_THAT(linesOf(end.output),
                testing::Contains(std::string("chip library " PLAIN_CHIP " it is not asked; --chip system asks it")));
    EXPECT_THAT(linesOf(end.output), testing::Contains("provider TQS_NumericSensor 14 sensors"));
}

TEST_F(DoctorProgramTest, StartThatFailsIsReportedWithItsErrors) {
    const ProgramEnd end = runProgram({"doctor", "--chip", PLAIN_CHIP}, {"PLAIN_CHIP_FAILS=1"});
    EXPECT_EQ(end.exitCode, 1);
    EXPECT_THAT(end.output, HasSubstr("0 sensors; it answers 16 CMPI_RC_ERR_METHOD_NOT_AVAILABLE"));
    EXPECT_THAT(end.output, HasSubstr("Initialise Service Driver failed - sscode=0x00010002"));
    EXPECT_THAT(
        end.output,
        testing::EndsWith("\nTo do:\n1. the provider's start failed: zelhost names, with the same options, shows its "
                          "own lines; docs/operations.md says what they mean\n"));
}

TEST_F(DoctorProgramTest, MistakesInTheSettingsAreReportedByLine) {
    sandbox::writeLogConfiguration("# a comment\nlevel=3\nLevel=9\n\nMaxLength\nLevel=3");
    sandbox::writeSensorConfiguration("NvmeReadings=yes\n");
    EXPECT_THAT(settingsRows(),
                ElementsAre("log /var/log/tarn/tarn.log it is made when the first line comes",
                            "settings /etc/tarn/log.conf line 2: no such key: \"level\"",
                            "settings /etc/tarn/log.conf line 3: no value of Level: \"9\"",
                            "settings /etc/tarn/log.conf line 5: no key=value",
                            "settings /etc/tarn/log.conf line 6: no newline ends it, and so its last character is lost",
                            "settings /etc/tarn/sensor.conf line 1: no value of NvmeReadings: \"yes\""));
    const ProgramEnd end = runProgram({"doctor"});
    EXPECT_EQ(end.exitCode, 1);
    EXPECT_THAT(end.output, HasSubstr("\nTo do:\n1. mend /etc/tarn/log.conf, line 2\n"));
    sandbox::writeLogConfiguration("Level=3\n");
    sandbox::writeSensorConfiguration("NvmeReadings=1\n");
    EXPECT_THAT(settingsRows(),
                ElementsAre("log /var/log/tarn/tarn.log it is written", "settings /etc/tarn/log.conf it is read",
                            "settings /etc/tarn/sensor.conf it is read"));
}

TEST_F(DoctorProgramTest, LogThatGetsNoMoreLinesIsAFinding) {
    const auto row = [](const std::string& settings) {
        sandbox::writeLogConfiguration(settings);
        return settingsRows().at(0);
    };
    EXPECT_EQ(row("Level=0\n"), "log - it is off");
    EXPECT_EQ(row("IsConsole=1\n"), "log - it goes to standard error");
    EXPECT_EQ(row("FileName=/nowhere/at/all.log\n"),
              "log /nowhere/at/all.log it cannot be written: the directory /nowhere/at: No such file or directory");
    const std::string full = m_directory.write("full.log", std::string(4096, 'x'));
    EXPECT_EQ(row("FileName=" + full + "\nMaxLength=1\n"),
              "log " + full + " it has grown to MaxLength, and nothing is added to it");
}

TEST_F(DoctorProgramTest, JsonHasTheSame) {
    const ProgramEnd end = runProgram({"doctor", "--chip", "system", "--format", "json"});
    EXPECT_EQ(end.exitCode, 1);
    const auto document = nlohmann::json::parse(end.output, nullptr, false);
    ASSERT_TRUE(document.is_object());
    EXPECT_EQ(document["format"], 1);
    EXPECT_EQ(document["command"], "doctor");
    const auto& first = document["findings"][0];
    EXPECT_EQ(first["about"], "chip library");
    EXPECT_EQ(first["which"], "-");
    EXPECT_EQ(first["advice"], document["todo"][0]);
    EXPECT_TRUE(document["findings"].back()["advice"].is_null());
}

TEST_F(DoctorProgramTest, OtherMachinesAreNotExamined) {
    const ProgramEnd end = runProgram({"doctor", "--server", "http://till17"});
    EXPECT_EQ(end.exitCode, 2);
    EXPECT_THAT(end.errors, HasSubstr("doctor looks at the machine that it runs on, not at a --server"));
}

}  // namespace
