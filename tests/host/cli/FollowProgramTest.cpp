// log --follow: each line once, over restarts, whatever happens meanwhile.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/mount.h>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <mutex>
#include <optional>
#include <thread>

#include "FileContents.h"
#include "MemoryFile.h"
#include "ProgramRun.h"
#include "Sandbox.h"
#include "TemporaryDirectory.h"
#include "source/RawServer.h"
#include "source/RecordedExchanges.h"

namespace fs = std::filesystem;

namespace {

using testing::AnyOf;
using testing::EndsWith;
using testing::StartsWith;
using Lines = std::vector<std::string>;

// Whatever it waits for comes in the end; what hangs, ctest ends.
template <typename Condition>
void waitUntil(Condition condition) {
    while (!condition()) std::this_thread::sleep_for(std::chrono::milliseconds(5));
}

std::string contentsOfMemory(int file) {
    std::string text(100'000, '\0');
    const ssize_t size = pread(file, text.data(), text.size(), 0);
    text.resize(size < 0 ? 0 : static_cast<std::size_t>(size));
    return text;
}

std::string scenarioWith(const Lines& lines) {
    std::string text = "[event-log]\nlines = [";
    for (const std::string& line : lines) text += '"' + line + "\", ";
    return text + "]\n";
}

// An object manager whose terminal has the lines that it is given.
class LogServer {
  public:
    std::string url() const { return m_server.url(); }
    void set(const Lines& lines) {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_lines = lines;
    }
    // Until it has lines again, no answer can be used.
    void fail() { set({"</broken>"}); }

  private:
    void answer(Connection& connection) {
        for (;;) {
            const std::string request = connection.readRequest();
            if (request.empty()) return;
            const std::size_t id = request.find("<MESSAGE ID=\"");
            connection.write(httpAnswer(body(request.substr(id, request.find(' ', id + 10) - id))));
        }
    }
    std::string body(const std::string& message) {
        const std::lock_guard<std::mutex> lock(m_mutex);
        std::string text = Recorded{"sfcb", "healthy", "log"}.body();
        text.replace(text.find("<MESSAGE ID=\"1001\""), 18, message);
        const std::size_t begin = text.find("<VALUE.ARRAY>") + 13;
        std::string values;
        for (const std::string& line : m_lines) values += "<VALUE>" + line + "</VALUE>";
        return text.replace(begin, text.find("</VALUE.ARRAY>") - begin, values);
    }

    std::mutex m_mutex;
    Lines m_lines;
    RawServer m_server{[this](Connection& connection) { answer(connection); }};
};

class FollowProgramTest : public testing::Test {
  protected:
    void SetUp() override {
        REQUIRE_SANDBOX();
        // In memory, where forcing a file costs no time.
        fs::create_directory(m_memory);
        ASSERT_EQ(mount("memory", m_memory.c_str(), "tmpfs", 0, ""), 0);
        fs::create_directory(m_place);
    }
    void TearDown() override { umount(m_memory.c_str()); }

    Arguments lookAt(const Lines& log, const Arguments& more = {}) const {
        Arguments arguments{"log",     "--follow", "--count",    "1",
                            "--state", m_state,    "--scenario", m_directory.write("log.toml", scenarioWith(log))};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return arguments;
    }
    // The lines that one run shows.
    std::string shown(const Lines& log, const Arguments& more = {}) const {
        const ProgramEnd end = runProgram(lookAt(log, more));
        EXPECT_EQ(end.exitCode, 0);
        EXPECT_EQ(end.errors, "");
        return end.output;
    }
    pid_t start(const std::string& url, const Arguments& more = {}) const {
        Arguments arguments{"log", "--follow", "--every", "0.1", "--server", url, "--timeout", "10m"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return startProgram(arguments, {m_output, m_errors, {}});
    }
    pid_t startWithState(const std::string& url) const { return start(url, {"--state", m_state}); }
    std::string output() const { return contentsOfMemory(m_output); }
    std::string errors() const { return contentsOfMemory(m_errors); }
    void waitForOutput(const std::string& text) const {
        waitUntil([&] { return output() == text; });
    }
    std::string state() const { return contentsOf(fs::path(m_state)); }
    static void end(pid_t process, int exitCode = 0) {
        kill(process, SIGTERM);
        EXPECT_EQ(waitForProgram(process), exitCode);
    }

    TemporaryDirectory m_directory;
    fs::path m_memory = m_directory.path("memory");
    fs::path m_place = m_memory / "place";
    std::string m_state = m_place / "log.state";
    int m_output = makeMemoryFile();
    int m_errors = makeMemoryFile();
};

TEST_F(FollowProgramTest, EachLineOnceOverRestarts) {
    EXPECT_EQ(shown({"a", "b"}), "a\nb\n");
    EXPECT_EQ(shown({"a", "b"}), "");
    EXPECT_EQ(shown({"a", "b", "c"}), "c\n");          // appended
    EXPECT_EQ(shown({"b", "c", "d", "e"}), "d\ne\n");  // wrapped
    EXPECT_EQ(shown({"b", "c", "f"}), "f\n");          // changed
    EXPECT_EQ(shown({}), "");                          // cleared
    EXPECT_EQ(shown({"b"}), "b\n");
    EXPECT_EQ(shown({"x", "y"}), "x\ny\n");  // cleared, and written to again
    EXPECT_EQ(fs::status(m_state).permissions(), static_cast<fs::perms>(0600));
}

TEST_F(FollowProgramTest, LineIsOneLineWhateverItHolds) {
    EXPECT_EQ(shown({"two\\nlines", "\\u001b[2J"}), "two\\x0alines\n\\x1b[2J\n");
    EXPECT_EQ(shown({"two\\nlines", "\\u001b[2J", "c"}), "c\n");
}

TEST_F(FollowProgramTest, WithoutStateEachRunBeginsWithTheWholeLog) {
    const std::string scenario = m_directory.write("log.toml", scenarioWith({"a", "b", "c"}));
    const Arguments look{"log", "--follow", "--count", "2", "--every", "0.1", "--scenario", scenario};
    EXPECT_EQ(runProgram(look).output, "a\nb\nc\n");
    Arguments last = look;
    last.insert(last.end(), {"--last", "1"});
    EXPECT_EQ(runProgram(last).output, "c\n");
}

TEST_F(FollowProgramTest, LinesOfARunningLogComeAsTheyAppear) {
    LogServer server;
    server.set({"a", "b"});
    const pid_t process = startWithState(server.url());
    waitForOutput("a\nb\n");
    server.set({"a", "b", "c"});
    waitForOutput("a\nb\nc\n");
    server.set({"b", "c", "d"});
    waitForOutput("a\nb\nc\nd\n");
    server.set({});
    waitUntil([&] { return state() == "zelhost log state 1: 0 lines\n"; });
    server.set({"d"});
    waitForOutput("a\nb\nc\nd\nd\n");
    end(process);
    EXPECT_EQ(errors(), "");
    EXPECT_EQ(state(), "zelhost log state 1: 1 lines\nd\n");
}

TEST_F(FollowProgramTest, EachSignalEndsItCleanly) {
    LogServer server;
    server.set({"a"});
    for (const int number : {SIGTERM, SIGINT, SIGHUP}) {
        fs::remove(m_state);
        const pid_t process = startWithState(server.url());
        waitUntil([&] { return state() == "zelhost log state 1: 1 lines\na\n"; });
        kill(process, number);
        EXPECT_EQ(waitForProgram(process), 0);
    }
    EXPECT_EQ(output(), "a\na\na\n");
    EXPECT_EQ(errors(), "");
}

TEST_F(FollowProgramTest, ReaderThatHasGoneEndsItBeforeTheNextLine) {
    LogServer server;
    server.set({"a"});
    int ends[2];
    ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
    const pid_t process = startProgram(
        {"log", "--follow", "--every", "0.1", "--server", server.url(), "--timeout", "10m", "--state", m_state},
        {ends[1], m_errors, {}});
    close(ends[1]);
    char text[2];
    ASSERT_EQ(read(ends[0], text, sizeof text), 2);
    close(ends[0]);
    EXPECT_EQ(waitForProgram(process), 128 + SIGPIPE);
    EXPECT_EQ(errors(), "");
}

TEST_F(FollowProgramTest, LineThatCannotBeWrittenIsNotKeptAsShown) {
    const int full = open("/dev/full", O_WRONLY | O_CLOEXEC);
    const pid_t process = startProgram(lookAt({"a"}), {full, m_errors, {}});
    close(full);
    EXPECT_EQ(waitForProgram(process), 4);
    EXPECT_EQ(errors(), "zelhost: the output cannot be written: No space left on device\n");
    EXPECT_EQ(shown({"a"}), "a\n");
}

TEST_F(FollowProgramTest, FailureOfTheServerIsReportedOnceAndLosesNothing) {
    LogServer server;
    server.set({"a"});
    const pid_t process = startWithState(server.url());
    waitForOutput("a\n");
    server.fail();
    waitUntil([&] { return !errors().empty(); });
    const std::string failure = errors();
    EXPECT_THAT(failure, StartsWith("zelhost: "));
    EXPECT_EQ(std::count(failure.begin(), failure.end(), '\n'), 1);
    server.set({"a", "b"});
    waitForOutput("a\nb\n");
    end(process);
    EXPECT_EQ(errors(), failure + "zelhost: the provider answers again\n");
}

TEST_F(FollowProgramTest, FailureOfTheProviderIsReportedAndLosesNothing) {
    const std::string scenario = m_directory.write(
        "log.toml", scenarioWith({"a"}) + "[[fault]]\noperation = \"event-log\"\ncalls = 2\nstatus = 5\n");
    const ProgramEnd end = runProgram({"log", "--follow", "--count", "4", "--every", "0.1", "--scenario", scenario});
    EXPECT_EQ(end.exitCode, 1);
    EXPECT_EQ(end.output, "a\n");
    EXPECT_THAT(end.errors, StartsWith("zelhost: the provider answered 1 CMPI_RC_ERR_FAILED\n"));
    EXPECT_EQ(end.errors.find("answered", 30), std::string::npos) << end.errors;
    EXPECT_THAT(end.errors, EndsWith("zelhost: the provider answers again\n"));
}

TEST_F(FollowProgramTest, InvalidLogIsSaidAndNotShown) {
    const std::string scenario = m_directory.write("log.toml", scenarioWith({"junk"}) + "valid = false\n");
    const ProgramEnd end = runProgram({"log", "--follow", "--count", "2", "--every", "0.1", "--scenario", scenario});
    EXPECT_EQ(end.exitCode, 0);
    EXPECT_EQ(end.output, "");
    EXPECT_EQ(end.errors, "zelhost: the event log is not valid; its lines wait until it is\n");
}

TEST_F(FollowProgramTest, TornStateShowsAllLinesAgainAndSaysSo) {
    shown({"a", "b"});
    fs::resize_file(m_state, fs::file_size(m_state) - 1);
    const ProgramEnd end = runProgram(lookAt({"a", "b"}));
    EXPECT_EQ(end.exitCode, 0);
    EXPECT_EQ(end.output, "a\nb\n");
    EXPECT_EQ(end.errors,
              "zelhost: --state: " + m_state +
                  ":1: 2 lines are announced, and 1 whole ones are there; all lines of the log are shown\n");
    EXPECT_EQ(shown({"a", "b", "c"}), "c\n");
}

TEST_F(FollowProgramTest, ForeignStateIsRefusedAndStaysAsItIs) {
    std::ofstream(m_state) << "somebody's\n";
    const ProgramEnd end = runProgram(lookAt({"a"}));
    EXPECT_EQ(end.exitCode, 2);
    EXPECT_EQ(end.output, "");
    EXPECT_THAT(end.errors, StartsWith("zelhost: --state: " + m_state + ":1: 'somebody's' begins no state"));
    EXPECT_EQ(state(), "somebody's\n");
}

TEST_F(FollowProgramTest, StateThatCannotBeWrittenIsFoundBeforeALineIsShown) {
    fs::remove(m_place);
    const ProgramEnd end = runProgram(lookAt({"a"}));
    EXPECT_EQ(end.exitCode, 4);
    EXPECT_EQ(end.output, "");
    EXPECT_EQ(end.errors, "zelhost: " + m_state + " cannot be written: No such file or directory\n");
}

TEST_F(FollowProgramTest, DirectoryOfTheStateThatGoesAndComesBackIsReportedTwice) {
    LogServer server;
    server.set({"a"});
    const pid_t process = startWithState(server.url());
    waitForOutput("a\n");
    fs::remove_all(m_place);
    server.set({"a", "b"});
    waitForOutput("a\nb\n");
    const std::string failure = "zelhost: " + m_state + " cannot be written: No such file or directory\n";
    waitUntil([&] { return errors() == failure; });
    fs::create_directory(m_place);
    waitUntil([&] { return state() == "zelhost log state 1: 2 lines\na\nb\n"; });
    end(process);
    EXPECT_EQ(errors(), failure + "zelhost: the state is written again\n");
}

TEST_F(FollowProgramTest, FullDiskKeepsTheOldStateAndTheLinesGoOn) {
    ASSERT_EQ(mount("small", m_place.c_str(), "tmpfs", 0, "size=16k"), 0);
    LogServer server;
    server.set({"a"});
    const pid_t process = startWithState(server.url());
    waitUntil([&] { return state() == "zelhost log state 1: 1 lines\na\n"; });
    std::ofstream(m_place / "filler") << std::string(16384, 'x') << std::flush;
    server.set({"a", "b"});
    waitForOutput("a\nb\n");
    waitUntil([&] { return !errors().empty(); });
    EXPECT_EQ(errors(), "zelhost: " + m_state + " cannot be written: No space left on device\n");
    EXPECT_EQ(state(), "zelhost log state 1: 1 lines\na\n");
    end(process, 4);
    fs::remove(m_place / "filler");
    EXPECT_EQ(shown({"a", "b", "c"}), "b\nc\n");
    EXPECT_EQ(umount(m_place.c_str()), 0);
}

// Runs the program to the n-th beginning or end of a system call from the write of so many bytes on that puts the
// lines out, and kills it there. Gives what it has shown; nothing where it has ended before.
std::optional<std::string> shownUntilKilled(Arguments arguments, std::size_t length, unsigned nth) {
    const int shown = makeMemoryFile();
    arguments.insert(arguments.begin(), ZELHOST);
    std::vector<char*> pointers;
    for (std::string& each : arguments) pointers.push_back(each.data());
    pointers.push_back(nullptr);
    const pid_t process = fork();
    if (process == 0) {
        dup2(shown, STDOUT_FILENO);
        ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
        execv(ZELHOST, pointers.data());
        _exit(127);
    }
    int status = 0;
    waitpid(process, &status, 0);
    ptrace(PTRACE_SETOPTIONS, process, nullptr, PTRACE_O_EXITKILL | PTRACE_O_TRACESYSGOOD);
    unsigned stops = 0;
    long signalToPass = 0;
    for (;;) {
        ptrace(PTRACE_SYSCALL, process, nullptr, signalToPass);
        waitpid(process, &status, 0);
        if (!WIFSTOPPED(status)) break;
        const bool isCall = WSTOPSIG(status) == (SIGTRAP | 0x80);
        signalToPass = isCall ? 0 : WSTOPSIG(status);
        if (!isCall) continue;
        __ptrace_syscall_info call{};
        ptrace(PTRACE_GET_SYSCALL_INFO, process, sizeof call, &call);
        const bool isOutput =
            call.op == PTRACE_SYSCALL_INFO_ENTRY && call.entry.nr == SYS_write && call.entry.args[2] == length;
        if ((stops > 0 || isOutput) && ++stops == nth) kill(process, SIGKILL);
    }
    std::string text = takeContents(shown);
    close(shown);
    return WIFSIGNALED(status) ? std::optional<std::string>(text) : std::nullopt;
}

TEST_F(FollowProgramTest, KilledAtAnySystemCallItLosesNoLine) {
    setenv("ASAN_OPTIONS", "detect_leaks=0", 1);  // cannot look for leaks in a process that is traced
    shown({"a"});
    const std::string before = state();
    const std::string after = "zelhost log state 1: 3 lines\na\nb\nc\n";
    const std::string lines = "b\nc\n";
    unsigned beforeState = 0;
    unsigned afterState = 0;
    for (unsigned nth = 1; afterState < 3; ++nth) {
        std::ofstream(m_state) << before << std::flush;
        const std::optional<std::string> first = shownUntilKilled(lookAt({"a", "b", "c"}), lines.size(), nth);
        ASSERT_TRUE(first) << "it has ended before it was killed at stop " << nth;
        const bool isKept = state() == after;
        ASSERT_THAT(state(), AnyOf(before, after)) << nth;
        EXPECT_THAT(*first, AnyOf("", lines)) << nth;
        EXPECT_TRUE(!isKept || !first->empty()) << "the state before the lines, at stop " << nth;
        EXPECT_EQ(shown({"a", "b", "c"}), isKept ? "" : lines) << nth;
        ++(isKept ? afterState : beforeState);
    }
    // The write's beginning and end, and at least the opening, writing, forcing and renaming of the state.
    EXPECT_GE(beforeState, 9U);
    EXPECT_FALSE(fs::exists(m_place / ".log.state.tmp"));
}

// With the clock of the day set back by an hour while it runs.
class SetBackClockTest : public FollowProgramTest {
  protected:
    Surroundings surroundings() const {
        return {m_output, m_errors, {"LD_PRELOAD=" SET_BACK_CLOCK, "SET_BACK_CLOCK=" + m_sign}};
    }
    void setBack() const { std::ofstream(m_sign) << "now"; }

    std::string m_sign = m_directory.path("set-back");
};

TEST_F(SetBackClockTest, LinesGoOnToCome) {
    LogServer server;
    server.set({"a"});
    const pid_t process = startProgram(
        {"log", "--follow", "--every", "0.1", "--server", server.url(), "--timeout", "10m", "--state", m_state},
        surroundings());
    waitForOutput("a\n");
    setBack();
    server.set({"a", "b"});
    waitForOutput("a\nb\n");
    server.set({"a", "b", "c"});
    waitForOutput("a\nb\nc\n");
    end(process);
    EXPECT_EQ(errors(), "");
}

TEST_F(SetBackClockTest, PagesOfMetricsGoOnAndHaveNewReadings) {
    const std::string scenario = m_directory.write("calls.toml", R"(
[[sensor]]
handle = 1
name = "Steps"
reading = { kind = "ramp", from = 0, to = 1000, steps = 1000, every = "call" }
)");
    const std::string page = m_place / "zel.prom";
    const pid_t process =
        startProgram({"metrics", "--every", "0.1", "--to", page, "--scenario", scenario}, surroundings());
    const auto reading = [&] {
        const std::string text = contentsOf(fs::path(page));
        const std::size_t found = text.find("zelsensors_sensor_value{");
        return found == std::string::npos ? std::string() : text.substr(found, text.find('\n', found) - found);
    };
    waitUntil([&] { return !reading().empty(); });
    setBack();
    const std::string before = reading();
    waitUntil([&] { return reading() != before; });
    end(process);
    EXPECT_EQ(errors(), "");
}

}  // namespace
