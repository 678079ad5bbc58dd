#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <map>
#include <regex>
#include <string>

#include "EmulatedTerminal.h"
#include "ProgramRun.h"
#include "Sandbox.h"
#include "Scenarios.h"
#include "TemporaryDirectory.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

constexpr int SENSORS = 45;
constexpr int CRITICAL = 20;
constexpr int FATAL = 30;
constexpr int WITHOUT = 40;

// Sensors with numbers of many digits, no two alike, some of them with bars.
std::string manySensors() {
    std::string text = "model = \"none\"\n";
    for (int i = 1; i <= SENSORS; ++i) {
        const int reading = i == WITHOUT ? -2147483647 - 1 : 1000000 + i * 1237;
        text += "[[sensor]]\nhandle = " + std::to_string(i) + "\nname = \"Sensor of place " + std::to_string(i) +
                "\"\nsensor-type = \"temperature\"\nbase-units = \"degrees-c\"\nunit-modifier = -3\nreading = " +
                std::to_string(reading) + '\n';
        if (i % 2 == 0) text += "min-readable = 0\nmax-readable = 2000000\n";
        if (i == CRITICAL) text += "upper-threshold-critical = 1000000\n";
        if (i == FATAL) text += "upper-threshold-fatal = 1000000\n";
    }
    return text;
}

struct Expected {
    std::string name;
    std::string reading;
    std::string state;
};

// By the sensor's number.
Expected expectedOf(int i) {
    char name[64];
    std::snprintf(name, sizeof name, "Sensor of place %d(%08x)", i, static_cast<unsigned>(i));
    const int reading = 1000000 + i * 1237;
    char text[64];
    std::snprintf(text, sizeof text, "%d.%03d °C", reading / 1000, reading % 1000);
    const char* state = i == CRITICAL ? "critical high" : i == FATAL ? "fatal high" : "ok";
    return i == WITHOUT ? Expected{name, "-", "no reading"} : Expected{name, text, state};
}

// The number of the sensor that the line shows as it should be; 0 where it shows none.
int sensorIn(const std::string& line) {
    static const std::regex pattern(
        "(.*?)(\\.\\.\\.)?  +(-|[0-9.]+ °C)(?:  (ok|critical high|fatal high|no reading)"
        "(?: +(\\[[-:!|<>]{8,24}\\]|the .*))?)?");
    std::smatch parts;
    if (!std::regex_match(line, parts, pattern)) return 0;
    for (int i = 1; i <= SENSORS; ++i) {
        const Expected expected = expectedOf(i);
        const bool isName = parts[2].matched ? expected.name.rfind(parts[1], 0) == 0 : expected.name == parts[1];
        const bool isState = !parts[4].matched || parts[4] == expected.state;
        if (isName && isState && parts[3] == expected.reading) return i;
    }
    return 0;
}

class WatchTerminalTest : public testing::Test {
  protected:
    void SetUp() override {
        REQUIRE_SANDBOX();
        if (!m_terminal.isUsable()) GTEST_SKIP() << "no pseudo-terminal can be had here";
        m_before = m_terminal.settings();
    }

    // A day between rounds: only what the test does draws another picture.
    void start(const std::string& scenario, const Arguments& more = {"--interval", "86400"}) {
        Arguments arguments{"watch", "--scenario", scenario};
        arguments.insert(arguments.end(), more.begin(), more.end());
        m_process = startProgram(arguments, surroundings());
        m_terminal.awaitPictures(1);
    }
    // The terminal controls no process of the test's session, so that it lives on: what the kernel would send, the test
    // sends. A program with the address sanitizer shall leave SIGFPE to itself.
    Surroundings surroundings(bool controls = false) const {
        return {
            m_terminal.programs(), -1, {"TERM=xterm", "ASAN_OPTIONS=handle_sigfpe=0"}, m_terminal.programs(), controls};
    }

    void startMany() { start(m_directory.write("many.toml", manySensors())); }

    // How the program ended, and that it left the terminal as it was.
    int end() {
        const int status = waitForProgram(m_process);
        m_terminal.readRest();
        EXPECT_TRUE(isAsBefore());
        EXPECT_TRUE(m_terminal.isCursorVisible());
        return status;
    }

    bool isAsBefore() const {
        const termios now = m_terminal.settings();
        return now.c_lflag == m_before.c_lflag && now.c_iflag == m_before.c_iflag && now.c_oflag == m_before.c_oflag &&
               std::memcmp(now.c_cc, m_before.c_cc, sizeof now.c_cc) == 0;
    }

    // The sensors on the screen, from the first line that shows one to the last line but one.
    std::vector<int> sensorsShown() {
        std::vector<int> shown;
        for (const std::string& line : m_terminal.lines()) {
            const int sensor = sensorIn(line);
            if (sensor == 0 && (shown.empty() || line.empty())) continue;
            EXPECT_NE(sensor, 0) << line;
            shown.push_back(sensor);
        }
        return shown;
    }

    TemporaryDirectory m_directory;
    EmulatedTerminal m_terminal{80, 24};
    termios m_before{};
    pid_t m_process = -1;
};

TEST_F(WatchTerminalTest, EverySizeShowsWholeNumbersWhileItIsResized) {
    startMany();
    for (const int columns : {40, 60, 80, 200}) {
        for (int lines = 5; lines <= 50; ++lines) {
            m_terminal.resize(columns, lines);
            kill(m_process, SIGWINCH);
            m_terminal.awaitPictures(1);
            const std::vector<int> shown = sensorsShown();
            SCOPED_TRACE(testing::PrintToString(columns) + " x " + std::to_string(lines));
            ASSERT_GE(shown.size(), lines < 9 ? 2U : 3U);
            EXPECT_EQ(m_terminal.lines().back(), "");
            if (shown.size() == SENSORS) {
                EXPECT_EQ(shown.front(), 1);
            } else {
                ASSERT_FALSE(m_terminal.lines()[static_cast<std::size_t>(lines - 3)].empty()) << "there is room left";
                EXPECT_EQ(shown[0], FATAL);
                EXPECT_EQ(shown[1], CRITICAL);
                if (shown.size() > 3) {
                    EXPECT_EQ(shown[2], WITHOUT);
                    EXPECT_EQ(shown[3], 1);
                }
            }
        }
        EXPECT_GE(sensorsShown().size(), columns < 80 ? SENSORS - 1U : SENSORS) << columns;
    }
    m_terminal.type("q");
    EXPECT_EQ(end(), 0);
}

TEST_F(WatchTerminalTest, KeysScrollAndEnd) {
    startMany();
    const auto firstAfter = [this](const std::string& keys) {
        m_terminal.type(keys);
        m_terminal.awaitPictures(1);
        return sensorsShown();
    };
    const std::vector<int> start = sensorsShown();
    ASSERT_EQ(start.size(), 19U);
    EXPECT_TRUE(m_terminal.contains("; shown: 1-19"));
    EXPECT_EQ(firstAfter("\x1b[B")[0], CRITICAL);
    EXPECT_TRUE(m_terminal.contains("; shown: 2-20"));
    EXPECT_EQ(firstAfter("\x1b[A"), start);
    EXPECT_EQ(firstAfter("\x1b[A"), start);
    EXPECT_EQ(firstAfter("\x1b[6~")[0], 17);
    EXPECT_TRUE(m_terminal.contains("; shown: 20-38"));
    EXPECT_EQ(firstAfter("\x1bOF").back(), SENSORS);
    EXPECT_TRUE(m_terminal.contains("; shown: 27-45"));
    EXPECT_EQ(firstAfter("\x1b[6~").back(), SENSORS);
    EXPECT_EQ(firstAfter("\x1b[5~").front(), 5);
    EXPECT_EQ(firstAfter("\x1b[H"), start);
    m_terminal.type("xq");
    EXPECT_EQ(end(), 0);
}

TEST_F(WatchTerminalTest, KeysAreNotShownAndSignalsKeepTheirs) {
    startMany();
    EXPECT_EQ(m_terminal.settings().c_lflag & (ICANON | ECHO | ISIG), static_cast<tcflag_t>(ISIG));
    kill(m_process, SIGINT);
    EXPECT_EQ(end(), 0);
}

TEST_F(WatchTerminalTest, SignalsLeaveTheTerminalAsItWas) {
    const std::string scenario = m_directory.write("many.toml", manySensors());
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
        start(scenario);
        EXPECT_FALSE(isAsBefore());
        kill(m_process, signal);
        EXPECT_EQ(end(), 0) << signal;
    }
}

TEST_F(WatchTerminalTest, CrashesLeaveTheTerminalAsItWas) {
    const std::string scenario = m_directory.write("many.toml", manySensors());
    for (const int signal : {SIGQUIT, SIGABRT, SIGFPE}) {
        start(scenario);
        EXPECT_FALSE(isAsBefore());
        kill(m_process, signal);
        EXPECT_EQ(end(), 128 + signal);
    }
}

TEST_F(WatchTerminalTest, CountedRoundsLeaveTheTerminalAsItWas) {
    start(m_directory.write("many.toml", manySensors()), {"--count", "2", "--interval", "0.1"});
    EXPECT_EQ(end(), 0);
}

TEST_F(WatchTerminalTest, ShellHasTheTerminalWhileItIsStopped) {
    const std::string scenario = m_directory.write("many.toml", manySensors());
    const std::string script = "set -m; '" ZELHOST "' watch --interval 86400 --scenario '" + scenario +
                               "'; echo stopped; read line; fg > /dev/null";
    m_process = startProgram({"-c", script}, surroundings(true), "/bin/sh");
    m_terminal.awaitPictures(1);
    const std::vector<int> start = sensorsShown();
    m_terminal.type("\x1a");
    m_terminal.awaitText("stopped");
    EXPECT_TRUE(isAsBefore());
    EXPECT_TRUE(m_terminal.isCursorVisible());
    m_terminal.type("\n");
    m_terminal.awaitPictures(1);
    EXPECT_FALSE(isAsBefore());
    EXPECT_FALSE(m_terminal.contains("stopped"));
    EXPECT_EQ(sensorsShown(), start);
    m_terminal.type("q");
    EXPECT_EQ(waitForProgram(m_process), 0);
}

TEST_F(WatchTerminalTest, SensorThatFailsStaysWithoutAReading) {
    start(m_directory.write("failing.toml", FAILING_SENSOR), {"--interval", "0.1"});
    m_terminal.awaitText("no reading");
    m_terminal.awaitPictures(3);
    const std::vector<std::string> lines = m_terminal.lines();
    EXPECT_EQ(lines[2], "3 sensors: 1 without a reading");
    EXPECT_THAT(std::vector<std::string>(lines.begin() + 4, lines.begin() + 7),
                ElementsAre(StartsWith("Good(00000001)           7  ok"),
                            HasSubstr("no reading  the provider answered 1"), StartsWith("Slow(00000003)")));
    m_terminal.type("q");
    EXPECT_EQ(end(), 1);
}

TEST_F(WatchTerminalTest, KeysOfAPipeAreNotRead) {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    ASSERT_EQ(write(ends[1], "q", 1), 1);
    const int saved = dup(STDIN_FILENO);
    dup2(ends[0], STDIN_FILENO);
    m_process = startProgram(
        {"watch", "--count", "2", "--interval", "0.1", "--scenario", m_directory.write("many.toml", manySensors())},
        {m_terminal.programs(), -1, {}});
    dup2(saved, STDIN_FILENO);
    close(saved);
    m_terminal.awaitText("  round 2");
    EXPECT_EQ(end(), 0);
    char key = 0;
    EXPECT_EQ(read(ends[0], &key, 1), 1);
    EXPECT_EQ(key, 'q');
    close(ends[0]);
    close(ends[1]);
}

}  // namespace
