#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <nlohmann/json.hpp>
#include <sstream>
#include <system_error>

#include "MemoryFile.h"
#include "ProgramRun.h"
#include "Sandbox.h"
#include "Scenarios.h"
#include "TemporaryDirectory.h"

namespace {

using nlohmann::json;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class WatchProgramTest : public testing::Test {
  protected:
    void SetUp() override { REQUIRE_SANDBOX(); }

    TemporaryDirectory m_directory;
    std::string m_scenario = m_directory.write("scenario.toml", TWO_SENSORS);
};

// A terminal of 24 lines of 100 columns, as seen from the side of the person.
class Terminal {
  public:
    // The instance's own multiplexer: /dev/ptmx does not find its directory when it is bound into another /dev.
    Terminal() : m_own(open("/dev/pts/ptmx", O_RDWR | O_NOCTTY | O_CLOEXEC)) {
        if (m_own < 0 || grantpt(m_own) != 0 || unlockpt(m_own) != 0) return;
        m_programs = open(ptsname(m_own), O_RDWR | O_NOCTTY | O_CLOEXEC);
        const winsize size{24, 100, 0, 0};
        ioctl(m_programs, TIOCSWINSZ, &size);
        termios settings{};
        tcgetattr(m_programs, &settings);
        cfmakeraw(&settings);
        tcsetattr(m_programs, TCSANOW, &settings);
    }
    ~Terminal() {
        closePrograms();
        if (m_own >= 0) close(m_own);
    }
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

    bool isUsable() const { return m_programs >= 0; }
    int programs() const { return m_programs; }
    void closePrograms() {
        if (m_programs >= 0) close(m_programs);
        m_programs = -1;
    }

    // Reads on until the text has come, or to the end; gives all that was read since the start.
    const std::string& readUntil(const std::string& text) {
        char block[4096];
        while (text.empty() || m_read.find(text) == std::string::npos) {
            const ssize_t count = read(m_own, block, sizeof block);
            if (count <= 0) break;
            m_read.append(block, static_cast<std::size_t>(count));
        }
        return m_read;
    }
    const std::string& readAll() { return readUntil(""); }

  private:
    int m_own;
    int m_programs = -1;
    std::string m_read;
};

TEST_F(WatchProgramTest, RoundsInAFileCarryWordsAndNoEscapes) {
    const ProgramEnd end = runProgram({"watch", "--count", "2", "--interval", "0.1", "--scenario", m_scenario});
    EXPECT_EQ(end.exitCode, 0) << end.errors;
    EXPECT_THAT(end.output, HasSubstr("  round 1  Chip library: simulated, "));
    EXPECT_THAT(end.output, HasSubstr("  round 2  "));
    EXPECT_THAT(end.output, HasSubstr("\n2 sensors: 1 past a limit\n"));
    EXPECT_THAT(end.output, HasSubstr("Bad\\x1b[2J(0000001a)   2.999 V  critical low\n"));
    EXPECT_THAT(end.output, HasSubstr("CPU(00000001)         42.00 °C  ok            ["));
    EXPECT_THAT(end.output, Not(HasSubstr("\x1b")));
    EXPECT_EQ(end.errors, "");
}

TEST_F(WatchProgramTest, FailedSensorCostsItselfAlone) {
    const std::string scenario = m_directory.write("failing.toml", FAILING_SENSOR);
    const ProgramEnd end =
        runProgram({"watch", "--count", "2", "--interval", "0.1", "--format", "json", "--scenario", scenario});
    EXPECT_EQ(end.exitCode, 1);
    std::istringstream lines(end.output);
    unsigned rounds = 0;
    for (std::string line; std::getline(lines, line); ++rounds) {
        const json document = json::parse(line, nullptr, false);
        ASSERT_TRUE(document.is_object()) << line;
        EXPECT_EQ(document["sensors"].size(), 3U);
        EXPECT_EQ(document["sensors"][1]["value"], nullptr);
        EXPECT_EQ(document["sensors"][2]["value"], 9);
    }
    EXPECT_EQ(rounds, 2U);
    EXPECT_THAT(end.errors, HasSubstr("zelhost: 2 of 2 rounds failed; the last failure was:\n"
                                      "zelhost: the provider answered 1 CMPI_RC_ERR_FAILED\n"));
}

TEST_F(WatchProgramTest, FailedStartIsExplainedAtTheEnd) {
    const std::string scenario =
        m_directory.write("faulty.toml", "[[fault]]\noperation = \"initialise\"\nstatus = 65538\n");
    const ProgramEnd end = runProgram({"watch", "--count", "2", "--interval", "0.1", "--scenario", scenario});
    EXPECT_EQ(end.exitCode, 1);
    EXPECT_THAT(end.output, HasSubstr("  round 2  "));
    EXPECT_THAT(end.errors, StartsWith("zelhost: 2 of 2 rounds failed; the last failure was:\n"
                                       "zelhost: the provider answered 16 CMPI_RC_ERR_METHOD_NOT_AVAILABLE\n"
                                       "zelhost: its start failed; its own lines:\n"
                                       "provider: CONSTRUCTOR\n"));
    EXPECT_THAT(end.errors, HasSubstr(" Initialise Service Driver failed - sscode=0x00010002\n"));
    EXPECT_THAT(end.errors, Not(HasSubstr("provider: drvEnumInstances")));
}

TEST_F(WatchProgramTest, InterruptionOnATerminalEndsCleanly) {
    Terminal terminal;
    if (!terminal.isUsable()) GTEST_SKIP() << "no pseudo-terminal can be had here";
    const int errors = makeMemoryFile();
    const std::string lines = m_directory.path("lines");
    const pid_t process =
        startProgram({"watch", "--interval", "0.2", "--scenario", m_scenario, "--provider-output", lines},
                     {terminal.programs(), errors, {"TERM=xterm"}});
    terminal.closePrograms();
    EXPECT_THAT(terminal.readUntil("  round 2"), StartsWith("\x1b[?25l\x1b[?7l\x1b[2J\x1b[H"));
    kill(process, SIGINT);
    const std::string shown = terminal.readAll();
    EXPECT_EQ(waitForProgram(process), 0);
    EXPECT_THAT(shown, HasSubstr("\x1b[31mBad\\x1b[2J(0000001a)"));
    EXPECT_THAT(shown, EndsWith("\x1b[J\n\x1b[0m\x1b[?7h\x1b[?25h"));
    EXPECT_EQ(takeContents(errors), "");
    std::ostringstream said;
    said << std::ifstream(lines).rdbuf();
    EXPECT_THAT(said.str(), HasSubstr("drvInstanceCleanup"));
    EXPECT_THAT(said.str(), HasSubstr("DESTRUCTOR"));
    close(errors);
}

TEST_F(WatchProgramTest, OnlyTheInterruptionThatTheTerminalShowsAddsALine) {
    Terminal terminal;
    if (!terminal.isUsable()) GTEST_SKIP() << "no pseudo-terminal can be had here";
    const pid_t process = startProgram({"watch", "--scenario", m_scenario}, {terminal.programs(), -1, {}});
    terminal.closePrograms();
    terminal.readUntil("  round 1");
    kill(process, SIGTERM);
    EXPECT_THAT(terminal.readAll(), EndsWith("\n\x1b[J\x1b[0m\x1b[?7h\x1b[?25h"));
    EXPECT_EQ(waitForProgram(process), 0);
}

TEST_F(WatchProgramTest, NoColourWhereItIsNotWanted) {
    using Environment = std::vector<std::string>;
    for (const Environment& wish : {Environment{"TERM=xterm", "NO_COLOR=1"}, Environment{"TERM=dumb"}, Environment{}}) {
        Terminal terminal;
        if (!terminal.isUsable()) GTEST_SKIP() << "no pseudo-terminal can be had here";
        const pid_t process = startProgram({"watch", "--count", "1", "--scenario", m_scenario},
                                           {terminal.programs(), terminal.programs(), wish});
        terminal.closePrograms();
        EXPECT_THAT(terminal.readAll(), Not(HasSubstr("\x1b[31m"))) << testing::PrintToString(wish);
        EXPECT_EQ(waitForProgram(process), 0);
    }
}

TEST_F(WatchProgramTest, ColoursAreWhatIsAskedFor) {
    const auto outputWith = [this](const char* when, const std::vector<std::string>& environment) {
        return runProgram({"watch", "--count", "1", "--color", when, "--scenario", m_scenario}, environment).output;
    };
    EXPECT_THAT(outputWith("always", {"NO_COLOR=1"}), HasSubstr("\n\x1b[31mBad\\x1b[2J(0000001a)"));
    EXPECT_THAT(outputWith("auto", {"TERM=xterm"}), Not(HasSubstr("\x1b")));
    EXPECT_THAT(outputWith("never", {}), Not(HasSubstr("\x1b")));
}

TEST_F(WatchProgramTest, ReaderThatGoesAwayEndsIt) {
    int ends[2];
    ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
    const int errors = makeMemoryFile();
    const pid_t process = startProgram({"watch", "--interval", "0.1", "--scenario", m_scenario}, {ends[1], errors, {}});
    close(ends[1]);
    char first = 0;
    EXPECT_EQ(read(ends[0], &first, 1), 1);
    close(ends[0]);
    EXPECT_EQ(waitForProgram(process), 128 + SIGPIPE);
    EXPECT_EQ(takeContents(errors), "");
    close(errors);
}

}  // namespace
