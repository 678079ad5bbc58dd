// The firmware's event log through the chip library, on files as the kernel gives them.
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <thread>

#include "FailingCLibrary.h"
#include "LinuxChipTest.h"

namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;

const fs::path ENTRY = "/sys/firmware/dmi/entries/15-0";
const std::string STRUCTURE(
    "\x0f\x17\x00\x0f\x18\x00\x00\x00\x10\x00\x03\x03\x07\x00\x00\x00\x00\x00\x01\x10\x01\x00\x02"
    "\x00\x00",
    25);
const std::string HEADER("\x00\x00\x00\x00\x00\x05\x09\x00\x00\x00\x00\x00\x00\x00\x00\x01", 16);
const std::string RECORD("\x17\x08\x26\x02\x17\x06\x56\x51", 8);

void writeBytes(const fs::path& path, const std::string& contents) {
    fs::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary) << contents;
}

class EventLogFilesTest : public LinuxChipTest {
  protected:
    void SetUp() override {
        LinuxChipTest::SetUp();
        if (IsSkipped()) return;
        fs::create_directories("/sys/class/hwmon");
        m_chip = initialisedChip();
        writeBytes(ENTRY / "raw", STRUCTURE);
        writeBytes(area(), HEADER + RECORD + "\xff");
    }

    static fs::path area() { return ENTRY / "system_event_log/raw_event_log"; }

    sscode status() {
        m_log = {};
        m_log.lines = {"as it was"};
        return m_chip->GetSystemEventLog(m_log);
    }

    void expectNoLog() {
        EXPECT_EQ(status(), 0U);
        EXPECT_THAT(m_log.lines, IsEmpty());
        EXPECT_EQ(m_log.logValid, 0);
        EXPECT_EQ(m_log.logFull, 0);
        EXPECT_EQ(m_log.multipleEventCountIncrement, 0);
        EXPECT_EQ(m_log.multipleEventTimeWindow, 0);
    }

    std::unique_ptr<CChip> m_chip;
    CSystemEventLog m_log;
};

TEST_F(EventLogFilesTest, LogIsDecoded) {
    EXPECT_EQ(status(), 0U);
    EXPECT_THAT(m_log.lines, ElementsAre("0001 2026-02-17 06:56:51 System boot"));
    EXPECT_EQ(m_log.logValid, 1);
    EXPECT_EQ(m_log.logFull, 1);
    EXPECT_EQ(m_log.multipleEventTimeWindow, 5);
    EXPECT_EQ(m_log.multipleEventCountIncrement, 9);
}

TEST_F(EventLogFilesTest, EachRequestReadsTheLogAnew) {
    EXPECT_EQ(status(), 0U);
    writeBytes(area(), HEADER + RECORD + RECORD + "\xff");
    EXPECT_EQ(status(), 0U);
    EXPECT_EQ(m_log.lines.size(), 2U);
}

TEST_F(EventLogFilesTest, GreatestAreaIsReadWhole) {
    std::string records;
    while (records.size() + RECORD.size() < 65535 - HEADER.size()) records += RECORD;
    writeBytes(area(), HEADER + records + "\xff");
    EXPECT_EQ(status(), 0U);
    EXPECT_EQ(m_log.lines.size(), records.size() / RECORD.size());
    EXPECT_EQ(m_log.lines.back().substr(0, 25), "8189 2026-02-17 06:56:51 ");
}

TEST_F(EventLogFilesTest, FirmwareWithoutALogHasNone) {
    fs::remove_all("/sys/firmware/dmi");
    expectNoLog();
}

TEST_F(EventLogFilesTest, StructureWithoutAnAreaIsNoLog) {
    fs::remove_all(area().parent_path());
    expectNoLog();
}

TEST_F(EventLogFilesTest, EmptyFilesAreNoLog) {
    writeBytes(ENTRY / "raw", "");
    writeBytes(area(), "");
    expectNoLog();
}

TEST_F(EventLogFilesTest, ForbiddenLogIsAFailureOfItsOwn) {
    for (const unsigned file : {1U, 2U}) {
        for (const int error : {EACCES, EPERM}) {
            const FailingCall failing(Function::Open, file, error);
            EXPECT_EQ(status(), 0xE1000006U);
            EXPECT_TRUE(failing.hasCome());
            EXPECT_THAT(m_log.lines, ElementsAre("as it was"));
        }
    }
    EXPECT_EQ(status(), 0U);
}

TEST_F(EventLogFilesTest, ShortageAndOtherFailuresHaveTheirStatuses) {
    for (const unsigned file : {1U, 2U}) {
        for (const int error : {EMFILE, ENFILE, ENOMEM}) {
            const FailingCall failing(Function::Open, file, error);
            EXPECT_EQ(status(), 0xE1000005U);
        }
        const FailingCall failing(Function::Open, file, ELOOP);
        EXPECT_EQ(status(), 0xE1000007U);
    }
}

TEST_F(EventLogFilesTest, ReadThatFailsIsAFailure) {
    const std::string reason =
        withSystemCallRefused(SYS_read, nextDescriptor(), ENXIO, [this] { EXPECT_EQ(status(), 0xE1000007U); });
    if (!reason.empty()) GTEST_SKIP() << reason;
}

TEST_F(EventLogFilesTest, AreaThatTheKernelCannotReadIsNoLog) {
    fs::remove(area());
    fs::create_symlink("/proc/self/mem", area());  // nothing is mapped at its start: EIO
    expectNoLog();
}

TEST_F(EventLogFilesTest, PiecesAreAddedUp) {
    fs::remove(area());
    ASSERT_EQ(mkfifo(area().c_str(), 0600), 0);
    std::thread writer([] {
        std::ofstream file(area(), std::ios::binary);
        for (const char c : HEADER + RECORD + "\xff") file << c << std::flush;
    });
    EXPECT_EQ(status(), 0U);
    writer.join();
    EXPECT_EQ(m_log.lines.size(), 1U);
    EXPECT_EQ(m_log.logValid, 1);
}

}  // namespace
