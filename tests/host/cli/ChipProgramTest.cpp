// Whose readings the program shows: a terminal's, or a simulated one's.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <nlohmann/json.hpp>

#include "ProgramRun.h"
#include "Sandbox.h"
#include "Scenarios.h"
#include "TemporaryDirectory.h"

namespace {

namespace fs = std::filesystem;
using nlohmann::json;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

const std::string SIMULATED_CHIP = fs::path(CHIP).lexically_normal();

class ChipProgramTest : public testing::Test {
  protected:
    void SetUp() override { REQUIRE_SANDBOX(); }

    // A tree as installed, with or without a simulated chip library; gives the program.
    std::string install(bool withSimulator) const {
        const fs::path prefix = m_directory.path("prefix");
        const auto place = [&prefix](const fs::path& file, const fs::path& directoryFromProgram) {
            const fs::path directory = (prefix / "bin" / directoryFromProgram).lexically_normal();
            fs::create_directories(directory);
            fs::copy_file(file, directory / file.filename());
        };
        place(ZELHOST, "");
        place(PROVIDER, LIBRARIES_FROM_PROGRAM);
        if (withSimulator) place(CHIP, fs::path(LIBRARIES_FROM_PROGRAM) / "zelsensors");
        return prefix / "bin/zelhost";
    }
    static std::string plainDirectory() { return fs::path(PLAIN_CHIP).parent_path(); }
    // The loader then finds the chip library that is no simulated one.
    static std::string terminal() { return "LD_LIBRARY_PATH=" + plainDirectory(); }

    TemporaryDirectory m_directory;
};

TEST_F(ChipProgramTest, InstalledProgramTakesTheSystemsLibrary) {
    const ProgramEnd end = runProgram({"instances"}, {terminal()}, install(true));
    EXPECT_EQ(end.exitCode, 0) << end.errors;
    EXPECT_THAT(end.output, HasSubstr("\nReal(00000001) "));
    EXPECT_THAT(end.output, EndsWith("\nChip library: " + plainDirectory() + "/libzelchip.so.0\n"));
    EXPECT_EQ(end.errors, "");
}

TEST_F(ChipProgramTest, WhereThereIsNoOtherTheSimulatedOnePlaysAndSaysSo) {
    const ProgramEnd end = runProgram({"instances"}, {}, install(true));
    EXPECT_EQ(end.exitCode, 0) << end.errors;
    EXPECT_THAT(end.output, HasSubstr("\nChip library: simulated, " + m_directory.path("prefix")));
    EXPECT_EQ(end.errors, "zelhost: this system has no libzelchip.so.0; what follows is simulated\n");
}

TEST_F(ChipProgramTest, DoctorMissesTheSystemsLibraryWhereTheSimulatedOnePlays) {
    const ProgramEnd end = runProgram({"doctor"}, {}, install(true));
    EXPECT_EQ(end.exitCode, 1) << end.errors;
    EXPECT_THAT(end.output, HasSubstr("the system has none, so one is simulated"));
    EXPECT_THAT(end.output, HasSubstr("1. install the chip library: "));
}

TEST_F(ChipProgramTest, SimulatedOneThatIsAskedForPlaysOnATerminalToo) {
    const std::string program = install(true);
    const std::string scenario = m_directory.write("scenario.toml", TWO_SENSORS);
    const ProgramEnd byScenario = runProgram({"names", "--scenario", scenario}, {terminal()}, program);
    EXPECT_THAT(byScenario.output, HasSubstr("\nCPU(00000001)\n")) << byScenario.errors;
    EXPECT_EQ(byScenario.errors, "");
    const ProgramEnd byWord = runProgram({"names", "--chip", "simulated"}, {terminal()}, program);
    EXPECT_THAT(byWord.output, HasSubstr("\nCPU Temperature(00000010)\n")) << byWord.errors;
    EXPECT_EQ(byWord.errors, "");
}

TEST_F(ChipProgramTest, SystemsLibraryThatCannotBeLoadedIsNotReplaced) {
    const std::string broken = m_directory.write("libzelchip.so.0", "no library");
    const std::string program = install(true);
    const ProgramEnd end =
        runProgram({"names"}, {"LD_LIBRARY_PATH=" + fs::path(broken).parent_path().string()}, program);
    EXPECT_EQ(end.exitCode, 3);
    EXPECT_EQ(end.output, "");
    EXPECT_EQ(end.errors, "zelhost: the chip library cannot be loaded: " + broken + ": file too short\n");
}

TEST_F(ChipProgramTest, SystemsLibraryIsNeverReplacedWhereItIsAskedFor) {
    for (const std::string& program : {install(true), std::string()}) {
        const ProgramEnd end = runProgram({"names", "--chip", "system"}, {}, program);
        EXPECT_EQ(end.exitCode, 3);
        EXPECT_EQ(
            end.errors,
            "zelhost: the chip library cannot be loaded: libzelchip.so.0: cannot open shared object file: No such "
            "file or directory\n");
    }
    EXPECT_THAT(runProgram({"names", "--chip", "system"}, {terminal()}).output, HasSubstr("\nReal(00000001)\n"));
}

TEST_F(ChipProgramTest, WithoutASimulatorThereIsNothingToSimulateWith) {
    const std::string program = install(false);
    const ProgramEnd asked = runProgram({"names", "--chip", "simulated"}, {}, program);
    EXPECT_EQ(asked.exitCode, 2);
    EXPECT_EQ(asked.errors,
              "zelhost: there is no simulated chip library beside zelhost; install it, or name one with --chip\n");
}

TEST_F(ChipProgramTest, ProviderThatNeedsNoChipRunsWithoutOne) {
    const ProgramEnd end =
        runProgram({"names", "--provider", TEST_PROVIDER, "--provider-name", "Unready"}, {}, install(false));
    EXPECT_EQ(end.exitCode, 1);
    EXPECT_THAT(end.errors, StartsWith("zelhost: the provider answered 16 "));
}

TEST_F(ChipProgramTest, BuildTreeSimulatesAlsoOnATerminal) {
    const ProgramEnd end = runProgram({"instances"}, {terminal()});
    EXPECT_THAT(end.output, EndsWith("\nChip library: simulated, " + SIMULATED_CHIP + "\n"));
    EXPECT_EQ(end.errors, "");
}

TEST_F(ChipProgramTest, LibraryItselfSaysWhetherItIsSimulated) {
    const fs::path disguised = m_directory.path("libreal.so");
    fs::copy_file(CHIP, disguised);
    EXPECT_THAT(runProgram({"instances", "--chip", disguised}).output,
                EndsWith("\nChip library: simulated, " + disguised.string() + "\n"));
    const fs::path named = m_directory.path("simulated-libzelchip.so.0");
    fs::copy_file(PLAIN_CHIP, named);
    EXPECT_THAT(runProgram({"instances", "--chip", named}).output,
                EndsWith("\nChip library: " + named.string() + "\n"));
}

TEST_F(ChipProgramTest, ScenarioNeedsALibraryThatPlaysIt) {
    const ProgramEnd end = runProgram({"names", "--chip", PLAIN_CHIP, "--scenario", "healthy"});
    EXPECT_EQ(end.exitCode, 2);
    EXPECT_EQ(end.errors, "zelhost: a scenario needs a simulated chip library, and " PLAIN_CHIP " is none\n");
    EXPECT_EQ(runProgram({"names", "--chip", PLAIN_CHIP}, {"ZELCHIP_SCENARIO=/nowhere"}).exitCode, 0);
}

TEST_F(ChipProgramTest, JsonOfEveryCommandSaysIt) {
    for (const Arguments& command :
         {Arguments{"names"}, Arguments{"instances"}, Arguments{"get", "Real(00000001)"}, Arguments{"log"},
          Arguments{"sensors"}, Arguments{"watch", "--count", "1"}, Arguments{"create"}, Arguments{"modify", "x"},
          Arguments{"delete", "x"}, Arguments{"query", "x"}, Arguments{"verify"}}) {
        for (const bool isSimulated : {true, false}) {
            Arguments arguments{"--format", "json", "--chip", isSimulated ? CHIP : PLAIN_CHIP};
            arguments.insert(arguments.end(), command.begin(), command.end());
            const json document = json::parse(runProgram(arguments).output, nullptr, false);
            ASSERT_TRUE(document.is_object()) << command.front();
            const json& chip = document.contains("chip") ? document["chip"] : document;
            EXPECT_EQ(chip.value("simulated", json()), isSimulated) << command.front();
        }
    }
}

TEST_F(ChipProgramTest, MofSaysItInAComment) {
    EXPECT_THAT(runProgram({"names", "--format", "mof"}).output,
                StartsWith("// Chip library: simulated, " + SIMULATED_CHIP + "\ninstance of "));
    EXPECT_THAT(runProgram({"names", "--format", "mof", "--chip", PLAIN_CHIP}).output,
                StartsWith("// Chip library: " PLAIN_CHIP "\ninstance of "));
}

TEST_F(ChipProgramTest, SimulatedRunLeavesTheTerminalsLogAlone) {
    const std::string log = "/var/log/tarn/tarn.log";
    EXPECT_EQ(runProgram({"instances"}).exitCode, 0);
    EXPECT_EQ(runProgram({"instances", "--scenario", "no-driver"}).exitCode, 1);
    EXPECT_FALSE(fs::exists(log));
    EXPECT_EQ(runProgram({"instances", "--chip", PLAIN_CHIP}).exitCode, 0);
    EXPECT_THAT(sandbox::readLog(), HasSubstr("\tInfo \t"));
}

TEST_F(ChipProgramTest, ScenarioInTheLogsDirectoryIsStillRead) {
    const std::string file = "/var/log/tarn/mine.toml";
    std::ofstream(file) << TWO_SENSORS;
    EXPECT_THAT(runProgram({"names", "--scenario", file}).output, HasSubstr("\nCPU(00000001)\n"));
}

}  // namespace
