#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <sstream>

#include "FileContents.h"
#include "MemoryFile.h"
#include "ProgramRun.h"
#include "Sandbox.h"
#include "Scenarios.h"
#include "TemporaryDirectory.h"

namespace {

using nlohmann::json;
using testing::ContainsRegex;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

// Runs the program with a scenario of known readings.
class ProgramTest : public testing::Test {
  protected:
    void SetUp() override { REQUIRE_SANDBOX(); }

    ProgramEnd run(Arguments arguments, const std::string& scenario = TWO_SENSORS) const {
        const Arguments chosen{"--scenario", m_directory.write("scenario.toml", scenario)};
        arguments.insert(arguments.begin(), chosen.begin(), chosen.end());
        return runProgram(arguments);
    }

    TemporaryDirectory m_directory;
};

// The start fails.
constexpr const char* NO_DRIVER = "[[fault]]\noperation = \"initialise\"\nstatus = 0x00010002\n";

json jsonIn(const ProgramEnd& end) {
    return json::parse(end.output, nullptr, false);
}

TEST_F(ProgramTest, WithoutOptionsTheOwnTreeIsUsed) {
    const ProgramEnd end = runProgram({"instances"});
    EXPECT_EQ(end.exitCode, 0);
    EXPECT_THAT(end.output, HasSubstr("CPU Temperature(00000010)"));
    EXPECT_THAT(end.output,
                HasSubstr("\nChip library: simulated, " + std::filesystem::path(CHIP).lexically_normal().string()));
    EXPECT_EQ(end.errors, "");
}

TEST_F(ProgramTest, NamesTable) {
    const ProgramEnd end = run({"names"});
    EXPECT_EQ(end.exitCode, 0);
    EXPECT_EQ(end.output, "Name\nCPU(00000001)\nBad\\x1b[2J(0000001a)\n");
    EXPECT_EQ(end.errors, "");
}

TEST_F(ProgramTest, InstancesTable) {
    const ProgramEnd end = run({"instances"});
    EXPECT_EQ(end.exitCode, 0);
    EXPECT_THAT(end.output,
                StartsWith("Sensor                 Reading  State         Lower limits (n/c/f)  Upper limits (n/c/f)\n"
                           "CPU(00000001)         42.00 °C  ok            -                     80.00 / - / -\n"
                           "Bad\\x1b[2J(0000001a)   2.999 V  critical low  - / 3.000 / -         -\n"));
    EXPECT_EQ(end.errors, "");
}

TEST_F(ProgramTest, InstancesAsJson) {
    const ProgramEnd end = run({"instances", "--format", "json"});
    EXPECT_EQ(end.exitCode, 0);
    const json document = jsonIn(end);
    ASSERT_TRUE(document.is_object()) << end.output;
    EXPECT_EQ(document["status"], json::parse(R"({"rc": 0, "name": "CMPI_RC_OK"})"));
    ASSERT_EQ(document["instances"].size(), 2U);
    const json& properties = document["instances"][0]["properties"];
    EXPECT_EQ(properties["CurrentReading"], 4200);
    EXPECT_EQ(properties["UnitModifier"], -2);
    EXPECT_EQ(properties["Name"], "CPU(00000001)");
    EXPECT_EQ(properties["UpperThresholdNonCritical"], 8000);
    EXPECT_FALSE(properties.contains("UpperThresholdCritical"));
    EXPECT_EQ(document["instances"][1]["path"]["keys"]["Name"], "Bad\x1b[2J(0000001a)");
}

TEST_F(ProgramTest, InstanceAsMof) {
    const ProgramEnd end = run({"get", "Bad\x1b[2J(0000001a)", "--format", "mof"});
    EXPECT_EQ(end.exitCode, 0);
    EXPECT_THAT(end.output,
                StartsWith("// Chip library: simulated, " + std::filesystem::path(CHIP).lexically_normal().string() +
                           "\ninstance of TQS_NumericSensor {\n"));
    EXPECT_THAT(end.output, HasSubstr("    CurrentReading = 2999;\n"));
    EXPECT_THAT(end.output, HasSubstr("    Name = \"Bad\\x001B[2J(0000001a)\";\n"));
    EXPECT_THAT(end.output, EndsWith("};\n"));
}

TEST_F(ProgramTest, OneInstanceAsTable) {
    const ProgramEnd end = run({"get", "CPU(00000001)"});
    EXPECT_EQ(end.exitCode, 0);
    EXPECT_THAT(end.output, StartsWith("root/cimv2:TQS_NumericSensor.Name=\"CPU(00000001)\"\n"));
    EXPECT_THAT(end.output, ContainsRegex("\nCurrentReading +sint32 +4200 \\(42\\.00 °C\\)\n"));
    EXPECT_THAT(end.output, HasSubstr("\nBetween its limits: [-"));
}

TEST_F(ProgramTest, UnknownNameIsAnError) {
    const ProgramEnd end = run({"get", "CPU2"});
    EXPECT_EQ(end.exitCode, 1);
    EXPECT_EQ(end.output, "");
    EXPECT_EQ(end.errors,
              "zelhost: the provider answered 1 CMPI_RC_ERR_FAILED\n"
              "zelhost: nothing is named CPU2; did you mean CPU?\n");
}

TEST_F(ProgramTest, GetUnderstandsLabelsHandlesBeginningsAndPatterns) {
    for (const char* word : {"cpu", "00000001", "0x1", "c", "*1)"}) {
        const ProgramEnd end = run({"get", word});
        EXPECT_EQ(end.exitCode, 0) << word << end.errors;
        EXPECT_THAT(end.output, StartsWith("root/cimv2:TQS_NumericSensor.Name=\"CPU(00000001)\"\n"));
    }
    const ProgramEnd several = run({"get", "*"});
    EXPECT_EQ(several.exitCode, 2);
    EXPECT_EQ(several.output, "");
    EXPECT_EQ(several.errors, "zelhost: * may mean several: CPU(00000001), Bad\\x1b[2J(0000001a)\n");
}

TEST_F(ProgramTest, EventLog) {
    const ProgramEnd end = run({"log"});
    EXPECT_EQ(end.exitCode, 0);
    EXPECT_THAT(end.output, StartsWith("No.  Line\n  1  first \\x07line\n  2\n\nLogValid: "));
    EXPECT_EQ(jsonIn(run({"log", "--format", "json"}))["instances"][0]["properties"]["LogLines"],
              json::parse(R"(["first \u0007line", ""])"));
}

TEST_F(ProgramTest, ShippedScenarioByName) {
    const ProgramEnd end = runProgram({"names", "--scenario", "dying-sensor"});
    EXPECT_EQ(end.exitCode, 0);
    EXPECT_THAT(end.output, HasSubstr("Chassis Fan(00000041)"));
}

TEST_F(ProgramTest, UnknownScenarioListsThoseThatThereAre) {
    const ProgramEnd end = runProgram({"names", "--scenario", "nonesuch"});
    EXPECT_EQ(end.exitCode, 2);
    EXPECT_EQ(end.output, "");
    EXPECT_THAT(end.errors, HasSubstr("dying-sensor, "));
    EXPECT_THAT(end.errors, HasSubstr("healthy, "));
}

TEST_F(ProgramTest, ScenarioOfTheEnvironmentIsKept) {
    const std::string file = m_directory.write("mine.toml", TWO_SENSORS);
    EXPECT_THAT(runProgram({"names"}, {"ZELCHIP_SCENARIO=" + file}).output, HasSubstr("\nCPU(00000001)\n"));
}

TEST_F(ProgramTest, MissingDriverIsSixteen) {
    const ProgramEnd end = runProgram({"instances", "--scenario", "no-driver"});
    EXPECT_EQ(end.exitCode, 1);
    EXPECT_EQ(end.output, "");
    EXPECT_THAT(end.errors, StartsWith("zelhost: the provider answered 16 CMPI_RC_ERR_METHOD_NOT_AVAILABLE\n"
                                       "zelhost: its start failed; its own lines:\n"
                                       "provider: CONSTRUCTOR\n"));
}

TEST_F(ProgramTest, WrongClassAndNamespaceAreTheProvidersErrors) {
    EXPECT_EQ(run({"names", "Nonesuch"}).errors, "zelhost: the provider answered 5 CMPI_RC_ERR_INVALID_CLASS\n");
    const ProgramEnd end = run({"names", "--namespace", "root/other"});
    EXPECT_EQ(end.exitCode, 1);
    EXPECT_EQ(end.errors, "zelhost: the provider answered 3 CMPI_RC_ERR_INVALID_NAMESPACE\n");
}

TEST_F(ProgramTest, PartialListComesWithItsError) {
    const ProgramEnd end = run({"instances", "--format", "json"}, FAILING_SENSOR);
    EXPECT_EQ(end.exitCode, 1);
    EXPECT_THAT(end.errors,
                StartsWith("zelhost: the provider answered 1 CMPI_RC_ERR_FAILED\nzelhost: its log says:\n"));
    const json document = jsonIn(end);
    ASSERT_TRUE(document.is_object()) << end.output;
    EXPECT_EQ(document["status"], json::parse(R"({"rc": 1, "name": "CMPI_RC_ERR_FAILED"})"));
    ASSERT_EQ(document["instances"].size(), 1U);
    EXPECT_EQ(document["instances"][0]["properties"]["CurrentReading"], 7);
}

class RefusedCommandTest : public ProgramTest, public testing::WithParamInterface<Arguments> {};

TEST_P(RefusedCommandTest, ShowsTheRefusal) {
    const ProgramEnd end = run(GetParam());
    EXPECT_EQ(end.exitCode, 1);
    EXPECT_EQ(end.output, "");
    EXPECT_EQ(end.errors, "zelhost: the provider answered 7 CMPI_RC_ERR_NOT_SUPPORTED\n");
}

TEST_P(RefusedCommandTest, HasTheOneJsonShape) {
    Arguments arguments = GetParam();
    arguments.insert(arguments.end(), {"--format", "json"});
    const json document = jsonIn(run(arguments));
    ASSERT_TRUE(document.is_object());
    EXPECT_EQ(document["command"], GetParam().front());
    EXPECT_EQ(document["status"]["rc"], 7);
    EXPECT_THAT(document["instances"], IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(All, RefusedCommandTest,
                         testing::Values(Arguments{"create"}, Arguments{"modify", "CPU(00000001)"},
                                         Arguments{"delete", "CPU(00000001)"},
                                         Arguments{"query", "SELECT * FROM TQS_NumericSensor"}),
                         [](const auto& each) { return each.param.front(); });

TEST_F(ProgramTest, BrokenProviderPathIsThree) {
    const ProgramEnd end = runProgram({"names", "--provider", "/dev/nowhere/libother.so"});
    EXPECT_EQ(end.exitCode, 3);
    EXPECT_EQ(end.output, "");
    EXPECT_THAT(end.errors, StartsWith("zelhost: "));
    EXPECT_THAT(end.errors, HasSubstr("/dev/nowhere/libother.so"));
}

TEST_F(ProgramTest, LibraryWithoutTheFactoryIsThree) {
    const ProgramEnd end = runProgram({"names", "--provider-name", "OtherProvider"});
    EXPECT_EQ(end.exitCode, 3);
    EXPECT_THAT(end.errors, HasSubstr("OtherProvider_Create_InstanceMI"));
}

TEST_F(ProgramTest, BrokenChipPathIsThree) {
    const ProgramEnd end = runProgram({"names", "--chip", "/dev/nowhere"});
    EXPECT_EQ(end.exitCode, 3);
    EXPECT_THAT(end.errors, HasSubstr("the chip library cannot be loaded: /dev/nowhere"));
}

TEST_F(ProgramTest, LibrariesByTheirPaths) {
    const ProgramEnd end = run({"instances", "--provider", PROVIDER, "--chip", CHIP});
    EXPECT_EQ(end.exitCode, 0) << end.errors;
    EXPECT_THAT(end.output, HasSubstr("\nChip library: simulated, " CHIP "\n"));
}

TEST_F(ProgramTest, ProvidersOwnLinesAreShownAtTheEndWhenAskedFor) {
    const ProgramEnd end = run({"create", "--provider-output", "-"});
    EXPECT_EQ(end.exitCode, 1);
    EXPECT_EQ(end.output, "");
    EXPECT_THAT(end.errors, StartsWith("zelhost: the provider answered 7 CMPI_RC_ERR_NOT_SUPPORTED\n"
                                       "provider: CONSTRUCTOR\n"));
    EXPECT_THAT(end.errors, HasSubstr("\nprovider: drvCreateInstance - Unsupported\n"));
    EXPECT_THAT(end.errors, HasSubstr("\nprovider: DESTRUCTOR\n"));
}

TEST_F(ProgramTest, ProvidersOwnLinesAreSavedInAFile) {
    const std::string file = m_directory.path("lines");
    const ProgramEnd end = run({"names", "--provider-output", file});
    EXPECT_EQ(end.exitCode, 0);
    EXPECT_EQ(end.errors, "");
    EXPECT_THAT(contentsOf(file), StartsWith("CONSTRUCTOR\n"));
    EXPECT_THAT(contentsOf(file), HasSubstr("\nDESTRUCTOR\n"));
    EXPECT_THAT(end.output, Not(HasSubstr("drvEnumInstanceNames")));
}

TEST_F(ProgramTest, UnwritableFileForTheProvidersLinesIsWrongUsage) {
    const ProgramEnd end = runProgram({"names", "--provider-output", "/dev/nowhere/lines"});
    EXPECT_EQ(end.exitCode, 2);
    EXPECT_EQ(end.errors,
              "zelhost: the provider's output cannot go to /dev/nowhere/lines: No such file or directory\n");
}

TEST_F(ProgramTest, FailedStartIsExplainedByItsLinesAlone) {
    const ProgramEnd end = run({"instances", "--format", "json"}, NO_DRIVER);
    EXPECT_EQ(end.exitCode, 1);
    EXPECT_THAT(end.errors, StartsWith("zelhost: the provider answered 16 CMPI_RC_ERR_METHOD_NOT_AVAILABLE\n"
                                       "zelhost: its start failed; its own lines:\n"
                                       "provider: CONSTRUCTOR\n"));
    EXPECT_THAT(end.errors, Not(HasSubstr("provider: drvEnumInstances")));
    EXPECT_THAT(end.errors, Not(HasSubstr("DESTRUCTOR")));
    EXPECT_EQ(jsonIn(end)["status"]["rc"], 16) << end.output;
}

TEST_F(ProgramTest, LinesOfAFailedStartComeOnceWhereAllAreAskedFor) {
    const ProgramEnd end = run({"names", "--provider-output", "-"}, NO_DRIVER);
    EXPECT_EQ(end.exitCode, 1);
    EXPECT_THAT(end.errors, StartsWith("zelhost: the provider answered 16 CMPI_RC_ERR_METHOD_NOT_AVAILABLE\n"
                                       "zelhost: its log says:\n"));
    EXPECT_THAT(end.errors, HasSubstr("\nprovider: CONSTRUCTOR\n"));
    EXPECT_THAT(end.errors, HasSubstr("\nprovider: DESTRUCTOR\n"));
    EXPECT_THAT(end.errors, Not(HasSubstr("its own lines")));
}

TEST_F(ProgramTest, FailedStartPointsToTheFileOfTheProvidersLines) {
    const std::string file = m_directory.path("lines");
    const ProgramEnd end = run({"names", "--provider-output", file}, NO_DRIVER);
    EXPECT_EQ(end.exitCode, 1);
    EXPECT_THAT(end.errors, StartsWith("zelhost: the provider answered 16 CMPI_RC_ERR_METHOD_NOT_AVAILABLE\n"
                                       "zelhost: its start failed; its own lines are in " +
                                       file + "\nzelhost: its log says:\n"));
    EXPECT_THAT(contentsOf(file), HasSubstr("CONSTRUCTOR\n"));
}

TEST_F(ProgramTest, FactoryThatFailsIsExplainedByItsLines) {
    const ProgramEnd end = run({"names", "--provider", TEST_PROVIDER, "--provider-name", "Failing"});
    EXPECT_EQ(end.exitCode, 3);
    EXPECT_EQ(end.output, "");
    EXPECT_EQ(end.errors, "zelhost: the factory of Failing in " TEST_PROVIDER
                          " answered CMPI_RC_ERR_ACCESS_DENIED: out of order\n"
                          "provider: no device\n");
}

TEST_F(ProgramTest, OnlyTheLinesOfTheStartExplainIt) {
    const std::string schema = m_directory.write("a.mof", "class A { [Key] string Id; };");
    for (const Arguments& command : {Arguments{"names"}, Arguments{"watch", "--count", "3", "--interval", "0.1"},
                                     Arguments{"verify", "--schema", schema}}) {
        Arguments arguments{"--provider", TEST_PROVIDER, "--provider-name", "Unready"};
        arguments.insert(arguments.end(), command.begin(), command.end());
        const ProgramEnd end = run(arguments);
        EXPECT_EQ(end.exitCode, 1) << command.front();
        EXPECT_THAT(end.errors, EndsWith("zelhost: the provider answered 16 CMPI_RC_ERR_METHOD_NOT_AVAILABLE\n"
                                         "zelhost: its start failed; its own lines:\n"
                                         "provider: no driver\n"))
            << command.front();
    }
}

TEST_F(ProgramTest, OtherFailuresShowNoLinesOfTheProvider) {
    EXPECT_EQ(run({"create"}).errors, "zelhost: the provider answered 7 CMPI_RC_ERR_NOT_SUPPORTED\n");
}

TEST_F(ProgramTest, WrongUsageIsTwo) {
    for (const Arguments& arguments :
         {Arguments{}, Arguments{"frobnicate"}, Arguments{"get"}, Arguments{"names", "--format", "xml"},
          Arguments{"instnces", "--help"}, Arguments{"watch", "TQS_SystemEventLog"},
          Arguments{"watch", "--interval", "nan"}, Arguments{"names", "--scenario", "/dev/null"}}) {
        const ProgramEnd end = runProgram(arguments);
        EXPECT_EQ(end.exitCode, 2) << testing::PrintToString(arguments);
        EXPECT_EQ(end.output, "");
        EXPECT_NE(end.errors, "");
    }
}

TEST_F(ProgramTest, HelpIsFine) {
    const ProgramEnd end = runProgram({"--help"});
    EXPECT_EQ(end.exitCode, 0);
    EXPECT_THAT(end.output, HasSubstr("Exit codes:"));
    EXPECT_EQ(end.errors, "");
}

TEST_F(ProgramTest, OutputThatCannotBeWrittenIsFour) {
    for (const Arguments& arguments :
         {Arguments{"names"}, Arguments{"--help"}, Arguments{"watch", "--count", "1"}, Arguments{"verify"}}) {
        const int full = open("/dev/full", O_WRONLY | O_CLOEXEC);
        const int errors = makeMemoryFile();
        EXPECT_EQ(waitForProgram(startProgram(arguments, {full, errors, {}})), 4);
        EXPECT_EQ(takeContents(errors), "zelhost: the output cannot be written: No space left on device\n");
        close(full);
        close(errors);
    }
}

// Runs the program with a pipe that nobody reads as its standard output.
ProgramEnd runUnread(const Arguments& arguments, const std::string& program = "") {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) return {};
    close(ends[0]);
    const int errors = makeMemoryFile();
    ProgramEnd end;
    end.exitCode = waitForProgram(startProgram(arguments, {ends[1], errors, {}}, program));
    end.errors = takeContents(errors);
    close(ends[1]);
    close(errors);
    return end;
}

TEST_F(ProgramTest, ReaderThatIsGoneEndsItWithoutAWordByTheUsualSignal) {
    for (const Arguments& arguments :
         {Arguments{"instances"}, Arguments{"get", "CPU Temperature(00000010)", "--format", "json"},
          Arguments{"verify"}, Arguments{"names", "--scenario", "no-driver", "--format", "json"},
          Arguments{"--help"}}) {
        const ProgramEnd end = runUnread(arguments);
        EXPECT_EQ(end.exitCode, 128 + SIGPIPE) << testing::PrintToString(arguments);
        EXPECT_EQ(end.errors, "");
    }
}

TEST_F(ProgramTest, ProviderIsCleanedUpThoughTheReaderIsGone) {
    const std::string file = m_directory.path("lines");
    EXPECT_EQ(runUnread({"instances", "--provider-output", file}).exitCode, 128 + SIGPIPE);
    EXPECT_THAT(contentsOf(file), HasSubstr("drvInstanceCleanup"));
    EXPECT_THAT(contentsOf(file), HasSubstr("\nDESTRUCTOR\n"));
}

TEST_F(ProgramTest, WhereTheSignalIsIgnoredAReaderThatIsGoneIsReported) {
    const ProgramEnd end = runUnread({"-c", "trap '' PIPE; exec " ZELHOST " instances"}, "/bin/sh");
    EXPECT_EQ(end.exitCode, 4);
    EXPECT_EQ(end.errors, "zelhost: the output cannot be written: Broken pipe\n");
}

TEST_F(ProgramTest, TablesAreAsciiWhereTheLocaleIsNotUtf8) {
    const std::string scenario = m_directory.write("t\u00fcr.toml", TWO_SENSORS);
    const ProgramEnd end = runProgram({"instances", "--scenario", scenario}, {"LC_ALL=C"});
    EXPECT_EQ(end.exitCode, 0) << end.errors;
    EXPECT_THAT(
        end.output,
        StartsWith("Sensor                   Reading  State         Lower limits (n/c/f)  Upper limits (n/c/f)\n"
                   "CPU(00000001)         42.00 degC  ok            -                     80.00 / - / -\n"
                   "Bad\\x1b[2J(0000001a)     2.999 V  critical low  - / 3.000 / -         -\n"));
    EXPECT_THAT(runProgram({"watch", "--count", "1", "--scenario", scenario}, {"LC_ALL=C"}).output,
                HasSubstr("\nCPU(00000001)         42.00 degC  ok  "));
    EXPECT_THAT(runProgram({"get", "CPU(00000001)", "--scenario", scenario}, {"LC_ALL=C"}).output,
                HasSubstr("4200 (42.00 degC)\n"));
    EXPECT_THAT(runProgram({"names", "--scenario", scenario + 'x'}, {"LC_ALL=C"}).errors,
                EndsWith("/t\\xc3\\xbcr.tomlx\n"));
}

TEST_F(ProgramTest, OnlyPeoplesTextsDependOnTheLocale) {
    const std::string scenario =
        std::string(TWO_SENSORS) + "[[sensor]]\nhandle = 2\nname = \"T\u00fcr\\u0007\"\nreading = 1\n";
    const std::string file = m_directory.write("scenario.toml", scenario);
    for (const char* format : {"json", "mof"}) {
        const Arguments arguments{"instances", "--scenario", file, "--format", format};
        EXPECT_EQ(runProgram(arguments, {"LC_ALL=C"}).output, runProgram(arguments).output);
    }
    EXPECT_THAT(runProgram({"instances", "--scenario", file, "--format", "mof"}, {"LC_ALL=C"}).output,
                HasSubstr("T\u00fcr\\x0007(00000002)"));
    EXPECT_THAT(runProgram({"names", "--scenario", file}, {"LC_ALL=C"}).output,
                EndsWith("\nT\\xc3\\xbcr\\x07(00000002)\n"));
    EXPECT_THAT(runProgram({"verify", "--scenario", file}, {"LC_ALL=C"}).output,
                HasSubstr("has control characters: T\\xc3\\xbcr\\x07(00000002)\n"));
    const std::filesystem::path chip = m_directory.path("t\u00fcr");
    std::filesystem::create_directory(chip);
    std::filesystem::copy_file(CHIP, chip / "libzelchip.so.0");
    EXPECT_THAT(runProgram({"instances", "--chip", chip}, {"LC_ALL=C"}).output,
                EndsWith("/t\\xc3\\xbcr/libzelchip.so.0\n"));
}

TEST_F(ProgramTest, ClosedStandardErrorKeepsTheExitCode) {
    const int output = makeMemoryFile();
    EXPECT_EQ(waitForProgram(startProgram({"names", "--provider", "/dev/nowhere/x.so"}, {output, -1, {}})), 3);
    EXPECT_EQ(takeContents(output), "");
    close(output);
}

}  // namespace
