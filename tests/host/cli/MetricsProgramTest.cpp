#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/mount.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <thread>

#include "FileContents.h"
#include "MemoryFile.h"
#include "MetricsReader.h"
#include "ProgramRun.h"
#include "Sandbox.h"
#include "Scenarios.h"
#include "TemporaryDirectory.h"

namespace fs = std::filesystem;

namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

// Whatever it waits for comes in the end; what hangs, ctest ends.
template <typename Condition>
void waitUntil(Condition condition) {
    while (!condition()) std::this_thread::sleep_for(std::chrono::milliseconds(5));
}

std::vector<std::string> namesIn(const fs::path& directory) {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(directory)) names.push_back(entry.path().filename());
    std::sort(names.begin(), names.end());
    return names;
}

// In a call that only waits for time, as the simulated chip's delay does; the wait between two rounds is another call.
bool isSleeping(pid_t process) {
    long call = -1;
    std::ifstream("/proc/" + std::to_string(process) + "/syscall") >> call;
    return call == SYS_clock_nanosleep || call == SYS_nanosleep;
}

class MetricsProgramTest : public testing::Test {
  protected:
    void SetUp() override {
        REQUIRE_SANDBOX();
        fs::create_directory(m_place);
    }

    // zelhost metrics --every, with its standard error in a file.
    pid_t start(const std::string& scenario, const std::string& every = "0.1s") {
        return startProgram({"metrics", "--every", every, "--to", m_page, "--scenario", scenario}, {-1, m_errors, {}});
    }
    std::string errors() const {
        std::string text(100'000, '\0');
        const ssize_t size = pread(m_errors, text.data(), text.size(), 0);
        text.resize(size < 0 ? 0 : static_cast<std::size_t>(size));
        return text;
    }
    std::string page() const { return contentsOf(fs::path(m_page)); }
    bool isThere() const { return fs::exists(fs::symlink_status(m_page)); }
    // Several pages later.
    void waitForPages(int count) const {
        for (; count > 0; --count) {
            const std::string now = page();
            waitUntil([&] { return isThere() && page() != now; });  // at least the durations differ
        }
    }

    TemporaryDirectory m_directory;
    fs::path m_place = m_directory.path("place");
    std::string m_page = m_place / "zel.prom";
    std::string m_scenario = m_directory.write("scenario.toml", TWO_SENSORS);
    int m_errors = makeMemoryFile();
};

TEST_F(MetricsProgramTest, OnePageOnStandardOutput) {
    const ProgramEnd end = runProgram({"metrics", "--scenario", m_scenario});
    EXPECT_EQ(end.exitCode, 0);
    EXPECT_EQ(end.errors, "");
    const auto page = readMetrics(end.output);
    EXPECT_EQ(sampleIn(page, "zelsensors_temperature_celsius", {{"sensor", "CPU(00000001)"}}).value, "42");
    EXPECT_EQ(sampleIn(page, "zelsensors_voltage_volts", {{"sensor", "Bad\\x1b[2J(0000001a)"}}).value, "2.999");
    EXPECT_EQ(sampleIn(page, "zelsensors_sensor_severity", {{"sensor", "Bad\\x1b[2J(0000001a)"}}).value, "2");
    EXPECT_EQ(sampleIn(page, "zelsensors_event_log_lines").value, "2");
    EXPECT_THAT(end.output, HasSubstr(",chip=\"simulated\"} 1\n"));
    EXPECT_THAT(runProgram({"metrics", "--no-thresholds", "--scenario", m_scenario}).output,
                Not(HasSubstr("threshold_")));
}

TEST_F(MetricsProgramTest, OnePageInAFileStaysThere) {
    const ProgramEnd end = runProgram({"metrics", "--to", m_page, "--scenario", m_scenario});
    EXPECT_EQ(end.exitCode, 0);
    EXPECT_EQ(end.output + end.errors, "");
    EXPECT_EQ(readMetrics(page()).front().name, "zelsensors_temperature_celsius");
    EXPECT_THAT(namesIn(m_place), ElementsAre("zel.prom"));
}

TEST_F(MetricsProgramTest, FailureIsAPageThatSaysSo) {
    const ProgramEnd end = runProgram({"metrics", "--scenario", "no-driver"});
    EXPECT_EQ(end.exitCode, 1);
    EXPECT_THAT(end.errors, StartsWith("zelhost: the provider answered 16 CMPI_RC_ERR_METHOD_NOT_AVAILABLE\n"));
    const auto page = readMetrics(end.output);
    ASSERT_EQ(page.size(), 4U);
    EXPECT_EQ(sampleIn(page, "zelsensors_scrape_success", {{"collector", "sensors"}}).value, "0");
    EXPECT_EQ(sampleIn(page, "zelsensors_scrape_success", {{"collector", "event_log"}}).value, "0");
    EXPECT_EQ(sampleIn(page, "zelsensors_scrape_status", {{"collector", "sensors"}}).value, "16");
}

TEST_F(MetricsProgramTest, UnloadableProviderLeavesNoOldPage) {
    for (const Arguments& more : {Arguments{}, Arguments{"--every", "1s"}}) {
        std::ofstream(m_page) << "old\n";
        Arguments arguments{"metrics", "--to", m_page, "--provider", "./none.so"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        const ProgramEnd end = runProgram(arguments);
        EXPECT_EQ(end.exitCode, 3);
        EXPECT_FALSE(isThere());
    }
}

TEST_F(MetricsProgramTest, UnplayableScenarioAndMissingChipLibraryLeaveNoOldPage) {
    const std::string scenario = m_directory.write("mistake.toml", "[[sensor]]\nhandle = \"none\"\n");
    for (const Arguments& wrong :
         {Arguments{"--scenario", scenario}, Arguments{"--chip", m_directory.path("none.so")}}) {
        std::ofstream(m_page) << "old\n";
        Arguments arguments{"metrics", "--to", m_page};
        arguments.insert(arguments.end(), wrong.begin(), wrong.end());
        EXPECT_NE(runProgram(arguments).exitCode, 0);
        EXPECT_FALSE(isThere()) << wrong.front();
    }
}

TEST_F(MetricsProgramTest, FileHoldsTheLastPageUntilASignalEndsIt) {
    for (const int number : {SIGTERM, SIGINT, SIGHUP}) {
        const pid_t process = start(m_scenario);
        waitForPages(3);
        EXPECT_NO_THROW(readMetrics(page()));
        kill(process, number);
        EXPECT_EQ(waitForProgram(process), 0);
        EXPECT_EQ(errors(), "");
        EXPECT_FALSE(isThere());
        EXPECT_TRUE(fs::is_empty(m_place));
    }
}

TEST_F(MetricsProgramTest, SignalEndsALongWaitAtOnce) {
    const pid_t process = start(m_scenario, "86400s");
    waitUntil([&] { return isThere(); });
    kill(process, SIGTERM);
    EXPECT_EQ(waitForProgram(process), 0);
    EXPECT_FALSE(isThere());
}

// The provider reads the sensor at its start, at most once for the first page, and for each page that comes a second
// later.
TEST_F(MetricsProgramTest, SignalEndsARequestThatDoesNotReturn) {
    const std::string scenario = m_directory.write("stuck.toml", std::string(TWO_SENSORS) +
                                                                     "[[fault]]\noperation = \"read\"\nhandle = 1\n"
                                                                     "from-call = 3\ndelay-ms = 600000\n");
    const pid_t process = start(scenario, "1.1s");
    waitUntil([&] { return isThere() && isSleeping(process); });
    kill(process, SIGTERM);
    EXPECT_EQ(waitForProgram(process), 0);
    EXPECT_TRUE(fs::is_empty(m_place));
}

TEST_F(MetricsProgramTest, RoundLongerThanTheIntervalIsNotPiledUp) {
    const std::string scenario = m_directory.write(
        "slow.toml", std::string(TWO_SENSORS) + "[[fault]]\noperation = \"event-log\"\ndelay-ms = 300\n");
    const pid_t process = start(scenario);
    waitForPages(3);
    EXPECT_GE(sampleIn(readMetrics(page()), "zelsensors_scrape_duration_seconds", {{"collector", "event_log"}}).number,
              0.3);
    kill(process, SIGTERM);
    EXPECT_EQ(waitForProgram(process), 0);
    EXPECT_EQ(errors(), "");
}

TEST_F(MetricsProgramTest, LastingFailureIsReportedOnceAndShown) {
    const pid_t process = start("no-driver");
    waitForPages(3);
    EXPECT_THAT(page(), HasSubstr("zelsensors_scrape_success{collector=\"sensors\"} 0\n"));
    kill(process, SIGTERM);
    EXPECT_EQ(waitForProgram(process), 0);
    const std::string said = errors();
    EXPECT_THAT(said, StartsWith("zelhost: the provider answered 16 CMPI_RC_ERR_METHOD_NOT_AVAILABLE\n"));
    EXPECT_EQ(said.find("answered", 30 + said.find("answered")), std::string::npos) << said;
}

TEST_F(MetricsProgramTest, FileThatCannotBeWrittenAtFirstEndsIt) {
    const std::string gone = m_directory.path("gone/zel.prom");
    for (const Arguments& more : {Arguments{}, Arguments{"--every", "1s"}}) {
        Arguments arguments{"metrics", "--to", gone, "--scenario", m_scenario};
        arguments.insert(arguments.end(), more.begin(), more.end());
        const ProgramEnd end = runProgram(arguments);
        EXPECT_EQ(end.exitCode, 4);
        EXPECT_EQ(end.errors, "zelhost: " + gone + " cannot be written: No such file or directory\n");
    }
}

TEST_F(MetricsProgramTest, DirectoryAndLinkAreNotReplaced) {
    fs::create_directory(m_page);
    const std::string link = m_place / "link";
    fs::create_symlink("/dev/null", link);
    for (const std::string& file : {m_page, link, std::string("/dev/null")}) {
        const ProgramEnd end = runProgram({"metrics", "--every", "1s", "--to", file, "--scenario", m_scenario});
        EXPECT_EQ(end.exitCode, 4) << file;
        EXPECT_EQ(end.errors, "zelhost: " + file + " cannot be replaced: it is no regular file\n");
    }
    EXPECT_THAT(namesIn(m_place), ElementsAre("link", "zel.prom"));
    EXPECT_TRUE(fs::is_character_file("/dev/null"));
}

TEST_F(MetricsProgramTest, DirectoryThatGoesAndComesBackIsReportedTwice) {
    const pid_t process = start(m_scenario);
    waitForPages(2);
    fs::rename(m_place, m_directory.path("elsewhere"));
    waitUntil([&] { return !errors().empty(); });
    EXPECT_EQ(errors(), "zelhost: " + m_page + " cannot be written: No such file or directory\n");
    fs::create_directory(m_place);
    waitForPages(2);
    kill(process, SIGTERM);
    EXPECT_EQ(waitForProgram(process), 0);
    EXPECT_THAT(errors(), EndsWith(" No such file or directory\nzelhost: the page is written again\n"));
}

TEST_F(MetricsProgramTest, FullDiskLeavesNoOldPage) {
    ASSERT_EQ(mount("small", m_place.c_str(), "tmpfs", 0, "size=16k"), 0);
    const pid_t process = start(m_scenario);
    waitForPages(2);
    // Fills up what the page and its successor leave, and what the page leaves when it has gone.
    waitUntil([&] {
        std::ofstream(m_place / "filler", std::ios::app) << std::string(4096, 'x') << std::flush;
        return !errors().empty();
    });
    EXPECT_THAT(errors(), StartsWith("zelhost: " + m_page + " cannot be written: No space left on device\n"));
    waitUntil([&] {
        std::ofstream(m_place / "filler", std::ios::app) << std::string(4096, 'x') << std::flush;
        return !isThere();
    });
    fs::remove(m_place / "filler");
    waitForPages(2);
    EXPECT_NO_THROW(readMetrics(page()));
    kill(process, SIGTERM);
    EXPECT_EQ(waitForProgram(process), 0);
    EXPECT_TRUE(fs::is_empty(m_place));
    EXPECT_EQ(umount(m_place.c_str()), 0);
}

TEST_F(MetricsProgramTest, LaterPageOfAnotherFailureIsReported) {
    const std::string scenario =
        m_directory.write("log.toml", std::string(TWO_SENSORS) +
                                          "[[fault]]\noperation = \"event-log\"\nfrom-call = 3\n"
                                          "calls = 2\nstatus = 5\n");
    const pid_t process = start(scenario);
    waitUntil([&] { return errors().find("again") != std::string::npos; });
    kill(process, SIGTERM);
    EXPECT_EQ(waitForProgram(process), 0);
    EXPECT_THAT(errors(), StartsWith("zelhost: the provider answered 1 CMPI_RC_ERR_FAILED\nzelhost: its log says:\n"));
    EXPECT_THAT(errors(), HasSubstr("sscode=0x00000005\n"));
    EXPECT_THAT(errors(), EndsWith("\nzelhost: the provider answers again\n"));
}

}  // namespace
