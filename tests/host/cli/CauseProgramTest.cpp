// An error comes with its cause, unasked.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/mount.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <regex>

#include "ProgramRun.h"
#include "Sandbox.h"
#include "Scenarios.h"
#include "TemporaryDirectory.h"

namespace {

namespace fs = std::filesystem;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

constexpr const char* LOG = "/var/log/tarn/tarn.log";
const std::string NO_DRIVER_LINE =
    "SensorProvider::initialize - Initialise Service Driver failed - sscode=0x00010002\n";
const std::string REFUSED_LINE = "drvEnumInstanceNames - provider not initialised - is the kernel driver loaded?\n";

// Without the dates of log lines.
std::string undated(const std::string& text) {
    return std::regex_replace(
        text, std::regex("log: [0-9]{2}/[0-9]{2}/[0-9]{4} [0-9]{2}:[0-9]{2}:[0-9]{2}\\.[0-9]{3} "), "log: ");
}

class CauseProgramTest : public testing::Test {
  protected:
    void SetUp() override { REQUIRE_SANDBOX(); }

    ProgramEnd run(Arguments arguments, const std::string& scenario) const {
        arguments.insert(arguments.begin(), {"--scenario", m_directory.write("scenario.toml", scenario)});
        return runProgram(arguments);
    }
    // On a chip library that is no simulated one, and does not start. Gives the errors from the log on.
    static std::string causeOnATerminal(Arguments arguments = {"names"}) {
        arguments.insert(arguments.begin(), {"--chip", PLAIN_CHIP});
        const ProgramEnd end = runProgram(arguments, {"PLAIN_CHIP_FAILS=1"});
        EXPECT_EQ(end.exitCode, 1) << end.errors;
        const std::size_t place = end.errors.find("zelhost: its log ");
        return place == std::string::npos ? "" : undated(end.errors.substr(place));
    }

    TemporaryDirectory m_directory;
};

TEST_F(CauseProgramTest, EveryMistakeOfTheScenarioIsWrongUsage) {
    const std::string file =
        m_directory.write("bad.toml", "model = \"x\"\n[[sensor]]\nhandle = \"x\"\nname = 5\nreading = 1\n");
    for (const Arguments& command : {Arguments{"names"}, Arguments{"watch"}, Arguments{"verify", "--format", "json"}}) {
        Arguments arguments = command;
        arguments.insert(arguments.end(), {"--scenario", file});
        const ProgramEnd end = runProgram(arguments);
        EXPECT_EQ(end.exitCode, 2) << command.front();
        EXPECT_EQ(end.output, "");
        EXPECT_EQ(end.errors, "zelhost: " + file +
                                  ":1: 'model' in the file is \"x\", expected one of none, grebel, zan\n" +
                                  "zelhost: " + file +
                                  ":3: 'handle' in [[sensor]] is a string, expected an integer from 0 to 4294967295\n" +
                                  "zelhost: " + file + ":4: 'name' in [[sensor]] is an integer, expected a string\n");
    }
    EXPECT_EQ(runProgram({"names"}, {"ZELCHIP_SCENARIO=" + file}).exitCode, 2);
    EXPECT_EQ(runProgram({"names"}, {"ZELCHIP_SCENARIO=/nowhere"}).errors,
              "zelhost: /nowhere: cannot be read (No such file or directory), expected a scenario file\n");
}

TEST_F(CauseProgramTest, ErrorsOfThisRunsLogFollowTheStatus) {
    const ProgramEnd end = runProgram({"names", "--scenario", "no-driver"});
    EXPECT_EQ(end.exitCode, 1);
    EXPECT_THAT(undated(end.errors),
                EndsWith("\nzelhost: its log says:\nlog: " + NO_DRIVER_LINE + "log: " + REFUSED_LINE));
}

TEST_F(CauseProgramTest, ErrorInTheMiddleOfAListHasItsCause) {
    const ProgramEnd end = run({"instances"}, FAILING_SENSOR);
    EXPECT_EQ(end.exitCode, 1);
    EXPECT_THAT(undated(end.errors),
                StartsWith("zelhost: the provider answered 1 CMPI_RC_ERR_FAILED\n"
                           "zelhost: its log says:\n"
                           "log: SensorProvider::UpdateReading - failed to read sensor 0x00000002, "
                           "sscode=0x00010005\n"));
}

TEST_F(CauseProgramTest, RealTerminalsLogIsNamedAndItsOtherLinesAreLeftOut) {
    std::ofstream(LOG) << "01/01/2026 00:00:00.000\tP[00000001] T[00000001]\tError\tanother process\n";
    EXPECT_EQ(causeOnATerminal(),
              std::string("zelhost: its log ") + LOG + " says:\nlog: " + NO_DRIVER_LINE + "log: " + REFUSED_LINE);
    sandbox::writeLogConfiguration("Level=4\n");
    EXPECT_EQ(causeOnATerminal(),
              std::string("zelhost: its log ") + LOG + " says:\nlog: " + NO_DRIVER_LINE + "log: " + REFUSED_LINE);
}

TEST_F(CauseProgramTest, LogElsewhereIsFound) {
    const std::string file = m_directory.path("elsewhere.log");
    sandbox::writeLogConfiguration("FileName=" + file + "\nLevel=1\n");
    EXPECT_THAT(causeOnATerminal(), StartsWith("zelhost: its log " + file + " says:\nlog: " + NO_DRIVER_LINE));
}

TEST_F(CauseProgramTest, SettingsAreReadAsTheProviderReadsThem) {
    const std::string file = m_directory.path("elsewhere.log");
    // Unknown keys, a level out of range, and a last line without its newline, which loses a character.
    sandbox::writeLogConfiguration("Filename=/x\n# Level=0\nLevel =0\nLevel=5\nFileName=\nFileName=" + file + "x");
    EXPECT_THAT(causeOnATerminal(), StartsWith("zelhost: its log " + file + " says:\n"));
}

TEST_F(CauseProgramTest, LogOnStandardErrorIsFound) {
    sandbox::writeLogConfiguration("IsConsole=1\n");
    const ProgramEnd end = run({"instances"}, FAILING_SENSOR);
    EXPECT_THAT(undated(end.errors),
                StartsWith("zelhost: the provider answered 1 CMPI_RC_ERR_FAILED\nzelhost: its log says:\nlog: "
                           "SensorProvider::UpdateReading - failed to read sensor 0x00000002, sscode=0x00010005\n"));
}

TEST_F(CauseProgramTest, LogThatIsOffIsReported) {
    sandbox::writeLogConfiguration("Level=0\n");
    EXPECT_EQ(causeOnATerminal(), "zelhost: its log is off, by Level=0 in /etc/tarn/log.conf\n");
}

TEST_F(CauseProgramTest, LogThatCannotBeReadIsReported) {
    fs::remove("/var/log/tarn");
    EXPECT_EQ(causeOnATerminal(),
              std::string("zelhost: its log ") + LOG + " cannot be read: No such file or directory\n");
}

TEST_F(CauseProgramTest, LogThatCannotBeWrittenIsReported) {
    ASSERT_EQ(mount("tmpfs", "/var/log/tarn", "tmpfs", 0, nullptr), 0);
    std::ofstream(LOG) << "old\n";
    ASSERT_EQ(mount(nullptr, "/var/log/tarn", nullptr, MS_REMOUNT | MS_RDONLY, nullptr), 0);
    EXPECT_EQ(causeOnATerminal(), std::string("zelhost: its log ") + LOG +
                                      " cannot be written, so it holds nothing of this run: Read-only file system\n");
    EXPECT_EQ(umount("/var/log/tarn"), 0);
}

TEST_F(CauseProgramTest, LogWithoutErrorsIsNotMentioned) {
    sandbox::writeLogConfiguration("Level=1\n");
    const ProgramEnd end = runProgram({"get", "x", "--chip", PLAIN_CHIP});
    EXPECT_EQ(end.errors, "zelhost: the provider answered 1 CMPI_RC_ERR_FAILED\nzelhost: nothing is named x\n");
    EXPECT_FALSE(fs::exists(LOG));
}

TEST_F(CauseProgramTest, OfManyErrorsTheLastTenAreShown) {
    const ProgramEnd end = runProgram({"watch", "--scenario", "no-driver", "--count", "12", "--interval", "0.1"});
    EXPECT_EQ(end.exitCode, 1);
    const std::size_t place = end.errors.find("zelhost: its log says");
    ASSERT_NE(place, std::string::npos) << end.errors;
    // Each round asks for the names, starts the provider anew, and asks again.
    const std::vector<std::string> round{"log: " + REFUSED_LINE, "log: " + NO_DRIVER_LINE, "log: " + REFUSED_LINE};
    std::string expected = "zelhost: its log says, in the last 10 of 37 errors:\n";
    for (unsigned i = 37 - 10; i < 37; ++i) expected += i == 0 ? "log: " + NO_DRIVER_LINE : round[(i - 1) % 3];
    EXPECT_EQ(undated(end.errors.substr(place)), expected);
}

TEST_F(CauseProgramTest, FineAnswersSayNothingOfTheLog) {
    sandbox::writeLogConfiguration("Level=0\n");
    EXPECT_EQ(runProgram({"names", "--chip", PLAIN_CHIP}).errors, "");
}

}  // namespace
