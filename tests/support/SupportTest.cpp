#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>

#include "FakeClock.h"
#include "FakeDrives.h"
#include "FreshProcess.h"
#include "LogLines.h"
#include "OutputCapture.h"
#include "Sandbox.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class SandboxTest : public testing::Test {
  protected:
    void SetUp() override { REQUIRE_SANDBOX(); }
};

TEST_F(SandboxTest, DirectoriesAreOnMountsOfThisProcess) {
    struct stat root {};
    struct stat own {};
    ASSERT_EQ(stat("/usr", &root), 0);
    for (const char* directory : {"/etc/tarn", "/var/log/tarn", "/dev"}) {
        ASSERT_EQ(stat(directory, &own), 0) << directory;
        EXPECT_NE(own.st_dev, root.st_dev) << directory;
    }
    EXPECT_TRUE(std::filesystem::is_empty("/etc/tarn"));
    EXPECT_TRUE(std::filesystem::is_empty("/var/log/tarn"));
}

TEST_F(SandboxTest, TheRestOfEtcIsStillThere) {
    EXPECT_TRUE(std::ifstream("/etc/passwd").good());
    EXPECT_TRUE(std::filesystem::exists("/etc/ld.so.cache"));
}

TEST_F(SandboxTest, StandardDevicesWork) {
    std::ofstream null("/dev/null");
    null << "gone" << std::flush;
    EXPECT_TRUE(null.good());
    EXPECT_EQ(std::ifstream("/dev/zero").get(), 0);
    std::ofstream full("/dev/full");
    full << "no room" << std::flush;
    EXPECT_FALSE(full.good());
}

TEST_F(SandboxTest, ResetEmptiesTheDirectories) {
    sandbox::writeLogConfiguration("Level=3\n");
    sandbox::writeSensorConfiguration("NvmeReadings=1\n");
    std::ofstream("/var/log/tarn/tarn.log") << "text\n";
    drives::makeNode("/dev/nvme0");
    EXPECT_EQ(sandbox::readLog(), "text\n");
    sandbox::reset();
    EXPECT_TRUE(std::filesystem::is_empty("/etc/tarn"));
    EXPECT_EQ(sandbox::readLog(), "");
    EXPECT_FALSE(std::filesystem::exists("/dev/nvme0"));
    EXPECT_TRUE(std::filesystem::exists("/dev/null"));
}

TEST(FakeClockTest, GivesTheTimeThatIsSetAndMovesIt) {
    timeval now{};
    fakeclock::set({100, 999000});
    fakeclock::advanceMilliseconds(1002);
    EXPECT_EQ(gettimeofday(&now, nullptr), 0);
    EXPECT_EQ(now.tv_sec, 102);
    EXPECT_EQ(now.tv_usec, 1000);
    fakeclock::advanceMilliseconds(-2);
    gettimeofday(&now, nullptr);
    EXPECT_EQ(now.tv_sec, 101);
    EXPECT_EQ(now.tv_usec, 999000);
    fakeclock::useReal();
}

TEST(FakeClockTest, FailsWithTheErrorAskedFor) {
    timeval now{};
    fakeclock::failWith(EFAULT);
    EXPECT_EQ(gettimeofday(&now, nullptr), -1);
    EXPECT_EQ(errno, EFAULT);
    fakeclock::useReal();
    EXPECT_EQ(gettimeofday(&now, nullptr), 0);
    EXPECT_GT(now.tv_sec, 1000000000);
}

class FakeDrivesTest : public testing::Test {
  protected:
    void SetUp() override {
        REQUIRE_SANDBOX();
        drives::clear();
        drives::makeNode("/dev/nvme0");
        m_file = open("/dev/nvme0", O_RDONLY | O_CLOEXEC);
    }
    void TearDown() override {
        if (m_file >= 0) close(m_file);
        drives::clear();
    }
    int m_file = -1;
};

TEST_F(FakeDrivesTest, AnswersAnExpectedCommand) {
    drives::expect(drives::healthPage("/dev/nvme0", 0x0143));
    std::vector<std::uint8_t> page(512, 0xEE);
    nvme_admin_cmd command{};
    command.opcode = 0x02;
    command.nsid = 0xFFFFFFFF;
    command.addr = reinterpret_cast<std::uintptr_t>(page.data());
    command.data_len = 512;
    command.cdw10 = 0x007F0002;
    EXPECT_EQ(ioctl(m_file, NVME_IOCTL_ADMIN_CMD, &command), 0);
    EXPECT_EQ(page[1], 0x43);
    EXPECT_EQ(page[2], 0x01);
    EXPECT_EQ(drives::callCount(), 1U);
    drives::verifyAllMet();
}

TEST_F(FakeDrivesTest, NamesEveryFieldThatDiffers) {
    drives::expect(drives::underThreshold("/dev/nvme0", 1));
    nvme_admin_cmd command{};
    command.opcode = 0x0A;
    command.nsid = 0xFFFFFFFF;
    command.cdw10 = 0x104;
    int returned = 0;
    EXPECT_NONFATAL_FAILURE(returned = ioctl(m_file, NVME_IOCTL_ADMIN_CMD, &command),
                            "cdw11: expected 0x100000, got 0");
    EXPECT_EQ(returned, -1);
    EXPECT_EQ(command.result, 0U);
}

TEST_F(FakeDrivesTest, UnexpectedCommandFailsTheTest) {
    int returned = 0;
    EXPECT_NONFATAL_FAILURE(returned = ioctl(m_file, NVME_IOCTL_ID), "unexpected ioctl: /dev/nvme0 request 0x4e40");
    EXPECT_EQ(returned, -1);
}

TEST_F(FakeDrivesTest, LeftOverExpectationFailsTheTest) {
    drives::expect(drives::namespaceIdQuery("/dev/nvme0", -1));
    EXPECT_NONFATAL_FAILURE(drives::verifyAllMet(), "never came: /dev/nvme0 request 0x4e40");
}

TEST_F(FakeDrivesTest, OtherRequestsReachTheSystem) {
    int waiting = -1;
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    ASSERT_EQ(write(ends[1], "abc", 3), 3);
    EXPECT_EQ(ioctl(ends[0], FIONREAD, &waiting), 0);
    EXPECT_EQ(waiting, 3);
    close(ends[0]);
    close(ends[1]);
}

TEST(OutputCaptureTest, TakesWhatIsWrittenSinceTheLastTake) {
    OutputCapture capture(STDOUT_FILENO);
    std::printf("one");
    EXPECT_EQ(capture.take(), "one");
    std::printf("two");
    EXPECT_EQ(write(STDOUT_FILENO, "!", 1), 1);
    EXPECT_EQ(capture.take(), "!two");
}

TEST(FreshProcessTest, GivesOutputAndEnd) {
    const std::string much(1000000, 'x');
    const ProcessOutcome outcome = runInFreshProcess([&] {
        std::printf("%s", much.c_str());
        std::fprintf(stderr, "error text");
    });
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.standardOutput, much);
    EXPECT_EQ(outcome.standardError, "error text");
}

TEST(FreshProcessTest, FailureInsideShowsInExitCodeAndErrorOutput) {
    const ProcessOutcome outcome = runInFreshProcess([] { EXPECT_EQ(1, 2) << "as planned"; });
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.standardOutput, "");
    EXPECT_THAT(outcome.standardError, HasSubstr("as planned"));
}

TEST(FreshProcessTest, ExceptionInsideIsAFailure) {
    const ProcessOutcome outcome = runInFreshProcess([] { throw std::runtime_error("thrown"); });
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_THAT(outcome.standardError, HasSubstr("exception: thrown"));
}

TEST(FreshProcessTest, SignalIsAnEndOfItsOwn) {
    EXPECT_EQ(runInFreshProcess([] { raise(SIGKILL); }).exitCode, 128 + SIGKILL);
}

TEST(LogLinesTest, TakesLinesApart) {
    const std::vector<LogLine> lines = parseLog(
        "03/02/2023 09:05:07.004\tP[000000ff] T[0000007f]\tInfo \tone\n"
        "03/02/2023 09:05:07.005\tP[000000ff] T[0000007f]\tDebug\ttwo\n\n"
        "03/02/2023 09:05:07.006\tP[000000ff] T[0000007f]\tError\t\n");
    ASSERT_EQ(lines.size(), 3U);
    EXPECT_EQ(lines[0].level, "Info");
    EXPECT_EQ(lines[0].message, "one");
    EXPECT_EQ(lines[0].process, 0xFFU);
    EXPECT_EQ(lines[0].thread, 0x7FU);
    EXPECT_EQ(lines[1].message, "two\n");
    EXPECT_EQ(lines[2].message, "");
}

TEST(LogLinesTest, OtherFormsFailTheTest) {
    EXPECT_NONFATAL_FAILURE(parseLog("3/02/2023 09:05:07.004\tP[000000ff] T[0000007f]\tInfo \tx\n"), "not a log line");
    EXPECT_NONFATAL_FAILURE(parseLog("03/02/2023 09:05:07.004\tP[000000ff] T[0000007f]\tInfo\tx\n"), "level column");
}

}  // namespace
