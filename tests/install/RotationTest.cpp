// logrotate, with the rule that is delivered, on the log of a provider that never stops writing.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

#include "Sandbox.h"
#include "StreamsTo.h"
#include "broker/Broker.h"
#include "broker/ProviderLibrary.h"

namespace fs = std::filesystem;
using namespace std::chrono_literals;

namespace {

constexpr off_t MEGABYTE = 1024 * 1024;
constexpr off_t LIMIT = 10 * MEGABYTE;  // the provider's default MaxLength
constexpr off_t ROTATED_SIZE = 4 * MEGABYTE;
constexpr off_t FULL_SPEED_SIZE = 7 * MEGABYTE;
constexpr off_t WAITING_SIZE = 9 * MEGABYTE;
constexpr unsigned MOST_REQUESTS = 300000;  // several times those that the rotations take
// The rule looks for late lines until three seconds after it has deleted the log: the line of a slower request may
// be lost.
constexpr auto SLOW = 2500ms;
const std::string LOG_FILE = "/var/log/tarn/tarn.log";
const std::string RULE = "/var/log/rotation-rule";  // logrotate wants its rule's owner and mode to be right
const std::string STATE = "/var/log/rotation-state";
const std::string ROTATE = "PATH=$PATH:/usr/sbin:/sbin logrotate -s " + STATE + " " + RULE;

off_t sizeOf(const std::string& path) {
    struct stat status {};
    return stat(path.c_str(), &status) == 0 ? status.st_size : 0;
}

// What became of the requests.
struct Sent {
    unsigned requests = 0;
    std::set<unsigned> slow;  // on a machine so busy that the rotation did not wait for their lines
};

// Each request logs its name. Requests come at full speed while the file is small, then slowly; they stop shortly
// before the provider's limit. So the rotation ends before the limit, however slow the machine. Reports the number of
// requests, then the slow ones.
void sendRequests(int stopPipe, int reportPipe) {
    const StreamsTo silence(StreamsTo::nowhere());
    broker::Broker broker;
    const broker::ProviderLibrary library(PROVIDER_LIBRARY);
    broker::InstanceProvider provider(library, "SensorProvider", broker);
    broker::ObjectPath path;
    path.nameSpace = "root/cimv2";
    path.className = "TQS_SystemEventLog";
    path.keys = {{"Name", {}}};
    std::vector<unsigned> report{0};
    char byte = 0;
    while (read(stopPipe, &byte, 1) < 0 && errno == EAGAIN && report[0] < MOST_REQUESTS) {
        const off_t size = sizeOf(LOG_FILE);
        if (size > FULL_SPEED_SIZE) std::this_thread::sleep_for(20ms);
        if (size > WAITING_SIZE) continue;
        path.keys[0].value = broker::Value::ofText("request " + std::to_string(report[0]));
        const auto start = std::chrono::steady_clock::now();
        provider.getInstance(path);
        if (std::chrono::steady_clock::now() - start > SLOW) report.push_back(report[0]);
        ++report[0];
    }
    const auto length = static_cast<ssize_t>(report.size() * sizeof report[0]);
    if (write(reportPipe, report.data(), static_cast<std::size_t>(length)) != length) std::abort();
}

// The provider at work in a process of its own.
class WorkingProvider {
  public:
    WorkingProvider() {
        if (pipe(m_stop) != 0 || pipe(m_report) != 0) throw std::runtime_error("no pipe");
        fcntl(m_stop[0], F_SETFL, O_NONBLOCK);
        m_process = fork();
        if (m_process == 0) {
            close(m_stop[1]);
            sendRequests(m_stop[0], m_report[1]);
            _exit(0);
        }
        close(m_stop[0]);
        close(m_report[1]);
    }

    ~WorkingProvider() {
        if (m_stop[1] >= 0) stop();
        close(m_report[0]);
    }

    WorkingProvider(const WorkingProvider&) = delete;
    WorkingProvider& operator=(const WorkingProvider&) = delete;

    // False when it has ended before.
    bool waitForLogPast(off_t size) {
        while (sizeOf(LOG_FILE) <= size) {
            if (waitpid(m_process, nullptr, WNOHANG) != 0) return false;
            std::this_thread::sleep_for(1ms);
        }
        return true;
    }

    // No requests when it did not get to the end.
    Sent stop() {
        close(m_stop[1]);
        m_stop[1] = -1;
        Sent sent;
        unsigned number = 0;
        if (read(m_report[0], &sent.requests, sizeof sent.requests) != sizeof sent.requests) sent.requests = 0;
        while (read(m_report[0], &number, sizeof number) == sizeof number) sent.slow.insert(number);
        waitpid(m_process, nullptr, 0);
        return sent;
    }

  private:
    int m_stop[2] = {-1, -1};
    int m_report[2] = {-1, -1};
    pid_t m_process = -1;
};

std::string outputOf(const std::string& command, int& status) {
    std::string output;
    std::FILE* stream = popen((command + " 2>&1").c_str(), "r");
    if (stream == nullptr) throw std::runtime_error("cannot run " + command);
    char buffer[65536];
    for (std::size_t n = 0; (n = std::fread(buffer, 1, sizeof buffer, stream)) > 0;) output.append(buffer, n);
    status = pclose(stream);
    return output;
}

bool isInstalled(const std::string& program) {
    int status = 0;
    outputOf("PATH=$PATH:/usr/sbin:/sbin command -v " + program, status);
    return status == 0;
}

void installRule() {
    std::ofstream(RULE) << std::ifstream(ROTATION_RULE).rdbuf();
    fs::permissions(RULE, fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read);
    fs::remove(STATE);
}

void rotate() {
    int status = 0;
    const std::string output = outputOf(ROTATE, status);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(output, "");
}

// The numbers of the requests, in their order.
std::vector<unsigned> requestsIn(const std::string& contents) {
    static const std::string mark = "instance name = 'request ";
    std::vector<unsigned> numbers;
    for (std::size_t at = 0; (at = contents.find(mark, at)) != std::string::npos;) {
        at += mark.size();
        numbers.push_back(static_cast<unsigned>(std::stoul(contents.substr(at, contents.find('\'', at) - at))));
    }
    return numbers;
}

unsigned occurrences(const std::string& contents, const std::string& text) {
    unsigned count = 0;
    for (std::size_t at = 0; (at = contents.find(text, at)) != std::string::npos; at += text.size()) ++count;
    return count;
}

// File after file, oldest first.
std::string wholeLog(int rotations) {
    std::string whole;
    int status = 0;
    for (int i = rotations; i > 1; --i) {
        whole += outputOf("zcat " + LOG_FILE + "." + std::to_string(i) + ".gz", status);
        EXPECT_EQ(status, 0) << i;
    }
    std::ostringstream newest;
    newest << std::ifstream(LOG_FILE + ".1").rdbuf() << std::ifstream(LOG_FILE).rdbuf();
    return whole + newest.str();
}

// All of them in their order; of the slow ones those that were found.
std::vector<unsigned> expectedOf(const Sent& sent, const std::vector<unsigned>& found) {
    const std::set<unsigned> arrived(found.begin(), found.end());
    std::vector<unsigned> expected;
    for (unsigned i = 0; i < sent.requests; ++i) {
        if (sent.slow.count(i) == 0 || arrived.count(i) == 1) expected.push_back(i);
    }
    return expected;
}

class RotationTest : public testing::Test {
  protected:
    void SetUp() override {
        REQUIRE_SANDBOX();
        if (!isInstalled("logrotate")) GTEST_SKIP() << "logrotate is not installed";
        sandbox::writeLogConfiguration("Level=3\n");
        installRule();
    }
};

TEST_F(RotationTest, LosesNoLineOfAProviderAtWorkAndNeverStopsIt) {
    constexpr int rotations = 3;
    WorkingProvider provider;
    for (int i = 0; i < rotations; ++i) {
        ASSERT_TRUE(provider.waitForLogPast(ROTATED_SIZE)) << "after rotation " << i;
        rotate();
    }
    ASSERT_TRUE(provider.waitForLogPast(0));
    const Sent sent = provider.stop();

    const std::string log = wholeLog(rotations);
    EXPECT_GT(log.size(), static_cast<std::size_t>(LIMIT)) << "too little to have reached the limit without rotation";
    const std::vector<unsigned> found = requestsIn(log);
    const std::vector<unsigned> expected = expectedOf(sent, found);
    ASSERT_EQ(found.size(), expected.size());
    for (std::size_t i = 0; i < found.size(); ++i) ASSERT_EQ(found[i], expected[i]);
    for (const char* otherLine : {"drvGetInstance - provider=", "Object path: class = ", "No instance found"}) {
        EXPECT_LE(occurrences(log, otherLine), sent.requests) << otherLine;
        EXPECT_GE(occurrences(log, otherLine), sent.requests - sent.slow.size()) << otherLine;
    }
}

TEST_F(RotationTest, LeavesASmallLogAlone) {
    std::ofstream(LOG_FILE) << "a line\n";
    rotate();
    EXPECT_EQ(sandbox::readLog(), "a line\n");
    EXPECT_FALSE(fs::exists(LOG_FILE + ".1"));
}

TEST_F(RotationTest, IsContentWithoutALog) {
    rotate();
    EXPECT_TRUE(fs::is_empty("/var/log/tarn"));
}

// A disk of a few megabytes in the place of the log's directory.
class SmallDisk {
  public:
    explicit SmallDisk(const char* size) { mountIt(0, size); }
    ~SmallDisk() { umount(LOG_DIRECTORY); }
    SmallDisk(const SmallDisk&) = delete;
    SmallDisk& operator=(const SmallDisk&) = delete;

    void resize(const char* size) { mountIt(MS_REMOUNT, size); }

  private:
    static constexpr const char* LOG_DIRECTORY = "/var/log/tarn";

    void mountIt(unsigned long flags, const char* size) {
        if (mount("tmpfs", LOG_DIRECTORY, "tmpfs", flags, (std::string("mode=755,size=") + size).c_str()) != 0)
            throw std::system_error(errno, std::generic_category(), "mount");
    }
};

TEST_F(RotationTest, KeepsTheLogWhileThereIsNoRoomForItsCopy) {
    SmallDisk disk("3m");
    std::ofstream(LOG_FILE) << std::string(2 * MEGABYTE, 'x');
    int status = 0;
    outputOf(ROTATE, status);
    EXPECT_NE(status, 0);
    EXPECT_EQ(sizeOf(LOG_FILE), 2 * MEGABYTE);

    disk.resize("8m");
    rotate();
    EXPECT_FALSE(fs::exists(LOG_FILE));
    EXPECT_EQ(sizeOf(LOG_FILE + ".1"), 2 * MEGABYTE);
}

}  // namespace
