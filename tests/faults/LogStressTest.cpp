// The log's file under hard conditions: a disk that is full, a file that others delete, replace, truncate and write to.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <memory>
#include <new>
#include <set>
#include <sstream>
#include <string>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include "FileContents.h"
#include "OpenDescriptors.h"
#include "OpenHandler.h"
#include "Sandbox.h"
#include "StreamsTo.h"

namespace fs = std::filesystem;

namespace {

const fs::path DIRECTORY = "/var/log/tarn/stress";
const fs::path LOG_FILE = DIRECTORY / "a.log";

using State = OpenHandler::State;

// "<3:41:xxxx>", of the whole length given, newline included, and of one writer's letter.
std::string numberedLine(unsigned writer, unsigned number, std::size_t length) {
    std::string line = "<" + std::to_string(writer) + ":" + std::to_string(number) + ":";
    line.append(length - line.size() - 2, static_cast<char>('a' + writer % 26));
    return line + ">\n";
}

bool isWhole(const std::string& line) {
    if (line.empty() || line.front() != '<' || line.back() != '>') return false;
    const std::size_t first = line.find(':');
    const std::size_t second = line.find(':', first + 1);
    if (second == std::string::npos) return false;
    const auto writer = static_cast<unsigned>(std::strtoul(line.c_str() + 1, nullptr, 10));
    const auto number = static_cast<unsigned>(std::strtoul(line.c_str() + first + 1, nullptr, 10));
    return numberedLine(writer, number, line.size() + 1) == line + "\n";
}

struct Lines {
    unsigned whole = 0;
    unsigned torn = 0;
};

Lines countLines(const std::string& contents) {
    Lines lines;
    std::istringstream stream(contents);
    for (std::string line; std::getline(stream, line);) ++(isWhole(line) ? lines.whole : lines.torn);
    return lines;
}

// Runs the body in that many processes, which begin together, and here what is to be done meanwhile; each must end
// well.
void inProcesses(
    unsigned count, const std::function<void(unsigned)>& body, const std::function<void()>& meanwhile = [] {}) {
    std::vector<pid_t> children;
    int start[2];
    ASSERT_EQ(pipe(start), 0);
    for (unsigned i = 0; i < count; ++i) {
        const pid_t child = fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            char nothing = 0;
            prctl(PR_SET_PDEATHSIG, SIGKILL);
            close(start[1]);
            while (read(start[0], &nothing, 1) < 0 && errno == EINTR) continue;
            {
                const StreamsTo silence(StreamsTo::nowhere());  // where the link counts go
                body(i);
            }
            _exit(testing::Test::HasFailure() ? 1 : 0);
        }
        children.push_back(child);
    }
    close(start[0]);
    close(start[1]);
    meanwhile();
    for (const pid_t child : children) {
        int status = 0;
        while (waitpid(child, &status, 0) < 0 && errno == EINTR) continue;
        EXPECT_EQ(status, 0);
    }
}

class LogStressTest : public testing::Test {
  protected:
    void SetUp() override {
        REQUIRE_SANDBOX();
        fs::create_directory(DIRECTORY);
        configure("");
    }
    static void configure(const std::string& more) {
        sandbox::writeLogConfiguration("FileName=" + LOG_FILE.string() + "\n" + more);
    }
};

TEST_F(LogStressTest, LinesOfSeveralProcessesStayWhole) {
    configure("MaxLength=-1\n");
    constexpr unsigned processes = 6;
    constexpr unsigned each = 500;
    inProcesses(processes, [](unsigned process) {
        OpenHandler handler;
        for (unsigned i = 0; i < each; ++i) handler.write(numberedLine(process, i, 20 + i * 37 % 9000));
    });
    const Lines lines = countLines(contentsOf(LOG_FILE));
    EXPECT_EQ(lines.torn, 0U);
    EXPECT_EQ(lines.whole, processes * each);
}

// Writers and this process take turns that begin together. In each of them this process does something to the file
// while late lines of the turn before still come; then every writer writes. A turn is over once each has written a line
// that was begun after the file was changed: where that line must be then does not depend on who was quick and who was
// slow.
constexpr unsigned WRITERS = 4;
constexpr unsigned TURNS = 50;
constexpr unsigned LINES_A_TURN = 20;
const fs::path OLD_FILE = DIRECTORY / "old";

struct Turns {
    std::atomic<unsigned> current{1};
    std::array<std::atomic<unsigned>, WRITERS> served{};  // the latest turn of which each writer has written a line
};

// In memory that the processes share.
std::unique_ptr<Turns, void (*)(Turns*)> makeTurns() {
    void* memory = mmap(nullptr, sizeof(Turns), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) throw std::system_error(errno, std::generic_category(), "mmap");
    return {new (memory) Turns, [](Turns* turns) { munmap(turns, sizeof(Turns)); }};
}

void writeInTurns(unsigned writer, Turns& turns) {
    OpenHandler handler;
    for (unsigned turn = 1; turn <= TURNS; ++turn) {
        while (turns.current < turn) sched_yield();
        for (unsigned i = 0; i < LINES_A_TURN; ++i) {
            handler.write(numberedLine(writer, turn, 20 + (turn * LINES_A_TURN + i) * 37 % 6000));
            turns.served[writer] = turn;
        }
    }
    while (turns.current <= TURNS) sched_yield();  // until all have been seen
}

// False when a writer has ended.
bool awaitWriters(const Turns& turns, unsigned turn) {
    for (const std::atomic<unsigned>& served : turns.served) {
        while (served < turn) {
            siginfo_t ended{};
            if (waitid(P_ALL, 0, &ended, WEXITED | WNOHANG | WNOWAIT) == 0 && ended.si_pid != 0) return served >= turn;
            sched_yield();
        }
    }
    return true;
}

// The writers with a whole line of the turn.
std::set<unsigned> writersIn(const std::string& contents, unsigned turn) {
    std::set<unsigned> writers;
    std::istringstream stream(contents);
    for (std::string line; std::getline(stream, line);) {
        unsigned writer = 0;
        unsigned number = 0;
        if (isWhole(line) && std::sscanf(line.c_str(), "<%u:%u:", &writer, &number) == 2 && number == turn)
            writers.insert(writer);
    }
    return writers;
}

// What was done to the file, and what must come of it.
struct Meddling {
    const char* what = "nothing";
    fs::path lines = LOG_FILE;  // the file for what is written from now on
    std::ifstream deleted;      // the file that was deleted, if one was
};

Meddling meddle(unsigned turn) {
    switch (turn % 5) {
        case 1:
            fs::rename(LOG_FILE, OLD_FILE);
            return {"renamed", OLD_FILE, {}};
        case 2: {
            std::ifstream deleted(OLD_FILE);
            fs::remove(OLD_FILE);
            return {"deleted after it was renamed", LOG_FILE, std::move(deleted)};
        }
        case 3:
            fs::resize_file(LOG_FILE, 0);
            return {"truncated", LOG_FILE, {}};
        case 4: {
            std::ifstream deleted(LOG_FILE);
            std::ofstream(DIRECTORY / "new").flush();
            fs::rename(DIRECTORY / "new", LOG_FILE);
            return {"replaced", LOG_FILE, std::move(deleted)};
        }
        default: {
            std::ifstream deleted(LOG_FILE);
            fs::remove(LOG_FILE);
            return {"deleted", LOG_FILE, std::move(deleted)};
        }
    }
}

void meddleInTurns(Turns& turns) {
    Meddling last;
    for (unsigned turn = 1; turn <= TURNS; ++turn) {
        SCOPED_TRACE(last.what);
        EXPECT_TRUE(awaitWriters(turns, turn));
        EXPECT_EQ(writersIn(contentsOf(last.lines), turn).size(), WRITERS);
        // All have turned to another file.
        if (last.deleted.is_open()) {
            EXPECT_EQ(countLines(contentsOf(last.deleted)).torn, 0U);
        }
        if (testing::Test::HasFailure()) break;
        last = meddle(turn);
        turns.current = turn + 1;
    }
    turns.current = TURNS + 1;  // all that the writers wait for, also after a failure
}

TEST_F(LogStressTest, LinesOfSeveralProcessesStayWholeWhileTheFileComesAndGoes) {
    const auto turns = makeTurns();
    inProcesses(
        WRITERS, [&](unsigned writer) { writeInTurns(writer, *turns); }, [&] { meddleInTurns(*turns); });
    for (const fs::directory_entry& file : fs::directory_iterator(DIRECTORY))
        EXPECT_EQ(countLines(contentsOf(file)).torn, 0U) << file;
}

TEST_F(LogStressTest, ThreadsThatFindTheFileDeletedAtOnceReplaceItByOne) {
    inProcesses(1, [](unsigned) {
        OpenHandler handler;
        std::atomic<unsigned> working{4};
        std::vector<std::thread> threads;
        for (unsigned thread = 0; thread < 4; ++thread) {
            threads.emplace_back([&handler, &working, thread] {
                for (unsigned i = 0; i < 3000; ++i) handler.write(numberedLine(thread, i, 60));
                --working;
            });
        }
        std::error_code ignored;
        while (working > 0) fs::remove(LOG_FILE, ignored);
        for (std::thread& thread : threads) thread.join();
        handler.write(numberedLine(9, 1, 60));
        EXPECT_EQ(handler.state(), State::Open);
        EXPECT_EQ(openDescriptors(LOG_FILE), 1U);
    });
    EXPECT_EQ(countLines(contentsOf(LOG_FILE)).torn, 0U);
}

TEST_F(LogStressTest, EachOfSeveralProcessesStopsAtTheLimit) {
    configure("MaxLength=20000\n");
    constexpr unsigned processes = 5;
    constexpr std::size_t length = 200;
    inProcesses(processes, [](unsigned process) {
        OpenHandler handler;
        for (unsigned i = 0; i < 200; ++i) handler.write(numberedLine(process, i, length));
        EXPECT_EQ(handler.state(), State::Stopped);
    });
    EXPECT_EQ(countLines(contentsOf(LOG_FILE)).torn, 0U);
    EXPECT_GE(fs::file_size(LOG_FILE), 20000U);
    EXPECT_LE(fs::file_size(LOG_FILE), 20000U + processes * length);
}

class FullDiskTest : public LogStressTest {
  protected:
    void SetUp() override {
        LogStressTest::SetUp();
        if (IsSkipped()) return;
        ASSERT_EQ(mount("tmpfs", DIRECTORY.c_str(), "tmpfs", 0, "size=64k,mode=755"), 0);
        m_isMounted = true;
    }
    void TearDown() override {
        if (m_isMounted) {
            EXPECT_EQ(umount2(DIRECTORY.c_str(), MNT_DETACH), 0);
        }
    }

  private:
    bool m_isMounted = false;
};

// A line is written by one call, so at most the one at which the room ran out is cut.
TEST_F(FullDiskTest, LosesLinesAndCutsOneAndLoggingGoesOnWhenThereIsRoom) {
    std::ofstream(DIRECTORY / "filler") << std::string(40000, 'x');
    OpenHandler handler;
    constexpr std::size_t length = 150;
    for (unsigned i = 0; i < 400; ++i) {
        handler.write(numberedLine(1, i, length));
        ASSERT_EQ(handler.state(), State::Open);
    }
    const Lines full = countLines(contentsOf(LOG_FILE));
    EXPECT_GE(full.whole, 50U);
    EXPECT_LT(full.whole, 400U);
    EXPECT_LE(full.torn, 1U);

    fs::remove(DIRECTORY / "filler");
    for (unsigned i = 0; i < 10; ++i) handler.write(numberedLine(2, i, length));
    const std::string contents = contentsOf(LOG_FILE);
    const Lines again = countLines(contents);
    EXPECT_LE(again.torn, 1U);
    // The first of the new lines may stand right behind the rest of the cut one; it is whole all the same.
    EXPECT_NE(contents.find(numberedLine(2, 0, length)), std::string::npos);
    EXPECT_GE(again.whole, full.whole + 9);
}

TEST_F(FullDiskTest, FileThatCannotBeMadeIsTriedWithEachLine) {
    // No inode is left for it.
    ASSERT_EQ(mount("tmpfs", DIRECTORY.c_str(), "tmpfs", MS_REMOUNT, "size=64k,nr_inodes=1"), 0);
    OpenHandler handler;
    handler.write("first\n");
    handler.write("second\n");
    EXPECT_EQ(handler.state(), State::Closed);
    ASSERT_EQ(mount("tmpfs", DIRECTORY.c_str(), "tmpfs", MS_REMOUNT, "size=64k,nr_inodes=10"), 0);
    handler.write("third\n");
    EXPECT_EQ(handler.state(), State::Open);
    EXPECT_EQ(contentsOf(LOG_FILE), "third\n");
}

// What is done to the file between two lines, and what the second line finds.
struct Transition {
    const char* what;
    std::function<void()> event;
    State after;
    const char* contents;
};

class StatesTest : public LogStressTest {
  protected:
    static void removeDirectory() { fs::remove_all(DIRECTORY); }
    static void expectAll(const std::vector<Transition>& transitions, const std::function<void(OpenHandler&)>& bring,
                          State before) {
        for (const Transition& transition : transitions) {
            SCOPED_TRACE(transition.what);
            fs::remove_all(DIRECTORY);
            fs::create_directory(DIRECTORY);
            OpenHandler handler;
            bring(handler);
            ASSERT_EQ(handler.state(), before);
            transition.event();
            handler.write("line\n");
            EXPECT_EQ(handler.state(), transition.after);
            EXPECT_EQ(contentsOf(LOG_FILE), transition.contents);
        }
    }
    static void nothing() {}
    static void makeTooLong() { fs::resize_file(LOG_FILE, 4096); }
};

TEST_F(StatesTest, ClosedSinkOpensTheFileWithTheNextLineIfItCan) {
    configure("MaxLength=4096\n");
    const std::string tooLong(5000, 'x');
    const std::string andLine = tooLong + "line\n";
    expectAll(
        {
            {"nothing in the way", nothing, State::Open, "line\n"},
            {"no directory", removeDirectory, State::Closed, ""},
            {"a directory of that name", [] { fs::create_directory(LOG_FILE); }, State::Closed, ""},
            {"a link in a circle", [] { fs::create_symlink(LOG_FILE, LOG_FILE); }, State::Closed, ""},
            {"a link that leads nowhere yet", [] { fs::create_symlink(DIRECTORY / "b.log", LOG_FILE); }, State::Open,
             "line\n"},
            {"a file past the limit", [&] { std::ofstream(LOG_FILE) << tooLong; }, State::Open, andLine.c_str()},
        },
        [](OpenHandler&) {}, State::Closed);
}

TEST_F(StatesTest, OpenSinkFollowsTheFileUntilItIsTooLong) {
    configure("MaxLength=4096\n");
    expectAll(
        {
            {"nothing", nothing, State::Open, "first\nline\n"},
            {"the file truncated", [] { fs::resize_file(LOG_FILE, 0); }, State::Open, "line\n"},
            {"the file deleted", [] { fs::remove(LOG_FILE); }, State::Open, "line\n"},
            {"the file replaced by another",
             [] {
                 std::ofstream(DIRECTORY / "new") << "new\n";
                 fs::rename(DIRECTORY / "new", LOG_FILE);
             },
             State::Open, "new\nline\n"},
            {"the file renamed", [] { fs::rename(LOG_FILE, DIRECTORY / "old"); }, State::Open, ""},
            {"the directory removed", removeDirectory, State::Closed, ""},
            {"the directory removed and made again",
             [] {
                 removeDirectory();
                 fs::create_directory(DIRECTORY);
             },
             State::Open, "line\n"},
            {"the file deleted when it was too long, which is looked at first",
             [] {
                 makeTooLong();
                 fs::remove(LOG_FILE);
             },
             State::Stopped, ""},
        },
        [](OpenHandler& handler) { handler.write("first\n"); }, State::Open);
}

TEST_F(StatesTest, StoppedSinkStaysStopped) {
    configure("MaxLength=4096\n");
    expectAll(
        {
            {"the file truncated", [] { fs::resize_file(LOG_FILE, 0); }, State::Stopped, ""},
            {"the file deleted", [] { fs::remove(LOG_FILE); }, State::Stopped, ""},
            {"the directory removed and made again",
             [] {
                 removeDirectory();
                 fs::create_directory(DIRECTORY);
             },
             State::Stopped, ""},
        },
        [](OpenHandler& handler) {
            handler.write("first\n");
            makeTooLong();
            handler.write("dropped\n");
        },
        State::Stopped);
}

}  // namespace
