#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "FileContents.h"
#include "LogRecord.h"
#include "OpenHandler.h"
#include "OutputCapture.h"
#include "Sandbox.h"

namespace fs = std::filesystem;

namespace {

const std::string DEFAULT_PATH = "/var/log/tarn/tarn.log";

// What a line writes to standard output.
std::string lineCountsOf(OpenHandler& handler, const std::string& line) {
    OutputCapture output(STDOUT_FILENO);
    handler.write(line);
    return output.take();
}

// Each of eight threads calls `action` a hundred times with a line of its own letter.
void writeFromEightThreads(const std::function<void(std::string&)>& action) {
    const OutputCapture output(STDOUT_FILENO);
    std::vector<std::thread> threads;
    for (char letter = 'a'; letter < 'i'; ++letter) {
        threads.emplace_back([&action, letter] {
            std::string line = std::string(200, letter) + "\n";
            for (int i = 0; i < 100; ++i) action(line);
        });
    }
    for (std::thread& thread : threads) thread.join();
}

// How many lines there are; each must be of one letter and whole.
int countWholeLines(const std::string& contents) {
    std::istringstream stream(contents);
    int count = 0;
    for (std::string line; std::getline(stream, line); ++count) EXPECT_EQ(line, std::string(200, line.front()));
    return count;
}

class FileLogHandlerTest : public testing::Test {
  protected:
    void SetUp() override { REQUIRE_SANDBOX(); }
};

using FileLogHandlerConfigurationTest = FileLogHandlerTest;

TEST_F(FileLogHandlerConfigurationTest, WithoutFileTheDefaultsHold) {
    OpenHandler handler;
    EXPECT_EQ(handler.GetLevel(), 2);
    EXPECT_EQ(handler.m_fileName, DEFAULT_PATH);
    EXPECT_EQ(handler.m_maxLength, 10485760U);
    EXPECT_FALSE(handler.m_isConsole);

    OutputCapture error(STDERR_FILENO);
    std::string message = "abc";
    LogRecord record(LOG_INFO, message);
    std::string line;
    record.GetLogLine(line);
    handler.Log(record);
    EXPECT_EQ(sandbox::readLog(), line);
    EXPECT_EQ(error.take(), "");
}

TEST_F(FileLogHandlerConfigurationTest, FileThatCannotBeReadKeepsTheDefaults) {
    fs::create_directory("/etc/tarn/log.conf");
    const OpenHandler handler;
    EXPECT_EQ(handler.m_level, 2);
    EXPECT_EQ(handler.m_fileName, DEFAULT_PATH);
}

TEST_F(FileLogHandlerConfigurationTest, EverySettingIsApplied) {
    sandbox::writeLogConfiguration("FileName=/var/log/tarn/debug.log\nLevel=3\nMaxLength=1048576\nIsConsole=1\n");
    OpenHandler handler;
    EXPECT_EQ(handler.m_fileName, "/var/log/tarn/debug.log");
    EXPECT_EQ(handler.GetLevel(), 3);
    EXPECT_EQ(handler.m_maxLength, 1048576U);
    EXPECT_TRUE(handler.m_isConsole);
}

TEST_F(FileLogHandlerConfigurationTest, ConsoleCanBeSwitchedOnAndNotOff) {
    for (const char* on : {"1", "t", "T", "true", "True", "TRUE", "1x", "tomorrow"}) {
        const std::string setting = std::string("IsConsole=") + on + "\n";
        sandbox::writeLogConfiguration(setting);
        EXPECT_TRUE(OpenHandler().m_isConsole) << on;
        sandbox::writeLogConfiguration(setting + "IsConsole=0\nIsConsole=false\nIsConsole=\n");
        EXPECT_TRUE(OpenHandler().m_isConsole) << on;
    }
}

TEST_F(FileLogHandlerConfigurationTest, ConsoleStaysOffForAnythingElse) {
    for (const char* off : {"0", "false", "", " 1", "yes", "on", "2"}) {
        sandbox::writeLogConfiguration(std::string("IsConsole=") + off + "\n");
        EXPECT_FALSE(OpenHandler().m_isConsole) << "'" << off << "'";
    }
}

TEST_F(FileLogHandlerConfigurationTest, LevelsOfTheScaleAreTaken) {
    for (int level = 0; level <= 4; ++level) {
        sandbox::writeLogConfiguration("Level=" + std::to_string(level) + "\n");
        EXPECT_EQ(OpenHandler().m_level, level);
    }
}

TEST_F(FileLogHandlerConfigurationTest, OtherLevelsAreIgnored) {
    for (const char* level : {"5", "-1", "x", "", "4294967297", "18446744073709551617"}) {
        sandbox::writeLogConfiguration(std::string("Level=1\nLevel=") + level + "\n");
        EXPECT_EQ(OpenHandler().m_level, 1) << "'" << level << "'";
    }
}

TEST_F(FileLogHandlerConfigurationTest, LimitIsAtLeast4096) {
    for (const char* limit : {"0", "100", "4095", "4096"}) {
        sandbox::writeLogConfiguration(std::string("MaxLength=") + limit + "\n");
        EXPECT_EQ(OpenHandler().m_maxLength, 4096U) << limit;
    }
    sandbox::writeLogConfiguration("MaxLength=4097\n");
    EXPECT_EQ(OpenHandler().m_maxLength, 4097U);
}

TEST_F(FileLogHandlerConfigurationTest, LimitThatIsNoNumberIsIgnored) {
    sandbox::writeLogConfiguration("MaxLength=5000\nMaxLength=abc\nMaxLength=\n");
    EXPECT_EQ(OpenHandler().m_maxLength, 5000U);
}

TEST_F(FileLogHandlerConfigurationTest, NegativeLimitIsTheLargest) {
    sandbox::writeLogConfiguration("MaxLength=-1\n");
    EXPECT_EQ(OpenHandler().m_maxLength, UINT64_MAX);
}

TEST_F(FileLogHandlerConfigurationTest, EmptyFileNameKeepsTheEarlierOne) {
    sandbox::writeLogConfiguration("FileName=\n");
    EXPECT_EQ(OpenHandler().m_fileName, DEFAULT_PATH);
    sandbox::writeLogConfiguration("FileName=/var/log/tarn/a.log\nFileName=\n");
    EXPECT_EQ(OpenHandler().m_fileName, "/var/log/tarn/a.log");
}

TEST_F(FileLogHandlerConfigurationTest, KeyIsComparedAsItStands) {
    sandbox::writeLogConfiguration("Level =3\n Level=3\nlevel=3\n#Level=3\nLevels=3\nLevel\n=3\n");
    EXPECT_EQ(OpenHandler().m_level, 2);
}

TEST_F(FileLogHandlerConfigurationTest, LastSettingOfAKeyHolds) {
    sandbox::writeLogConfiguration(
        "Level=1\nFileName=/var/log/tarn/a.log\nMaxLength=5000\n"
        "Level=4\nFileName=/var/log/tarn/b.log\nMaxLength=6000\n");
    const OpenHandler handler;
    EXPECT_EQ(handler.m_level, 4);
    EXPECT_EQ(handler.m_fileName, "/var/log/tarn/b.log");
    EXPECT_EQ(handler.m_maxLength, 6000U);
}

TEST_F(FileLogHandlerConfigurationTest, LastLineWithoutNewlineLosesItsLastCharacter) {
    sandbox::writeLogConfiguration("Level=3");
    EXPECT_EQ(OpenHandler().m_level, 2);
    sandbox::writeLogConfiguration("FileName=/var/log/tarn/a.log");
    EXPECT_EQ(OpenHandler().m_fileName, "/var/log/tarn/a.lo");
}

TEST_F(FileLogHandlerConfigurationTest, ReadingItAgainStartsFromTheDefaults) {
    sandbox::writeLogConfiguration("FileName=/var/log/tarn/a.log\nLevel=4\nMaxLength=5000\nIsConsole=1\n");
    OpenHandler handler;
    sandbox::writeLogConfiguration("");
    handler.GetConfig();
    EXPECT_EQ(handler.m_level, 2);
    EXPECT_EQ(handler.m_fileName, DEFAULT_PATH);
    EXPECT_EQ(handler.m_maxLength, 10485760U);
    EXPECT_FALSE(handler.m_isConsole);
}

TEST_F(FileLogHandlerTest, FileIsOpenedByTheFirstLine) {
    OpenHandler handler;
    EXPECT_FALSE(fs::exists(DEFAULT_PATH));
    EXPECT_EQ(lineCountsOf(handler, "first\n"), "");
    EXPECT_EQ(sandbox::readLog(), "first\n");
}

TEST_F(FileLogHandlerTest, LinesAreAppendedAndReportTheLinkCount) {
    std::ofstream(DEFAULT_PATH) << "earlier\n";
    OpenHandler handler;
    EXPECT_EQ(lineCountsOf(handler, "first\n"), "");
    EXPECT_EQ(lineCountsOf(handler, "second\n"), "link count=1\n");
    fs::create_hard_link(DEFAULT_PATH, "/var/log/tarn/other.log");
    EXPECT_EQ(lineCountsOf(handler, "third\n"), "link count=2\n");
    EXPECT_EQ(sandbox::readLog(), "earlier\nfirst\nsecond\nthird\n");
}

TEST_F(FileLogHandlerTest, BytesAreWrittenAsTheyAre) {
    using namespace std::string_literals;
    OpenHandler handler;
    handler.write("a\0%s\xff\n"s);
    handler.write("b");
    EXPECT_EQ(sandbox::readLog(), "a\0%s\xff\nb"s);
}

TEST_F(FileLogHandlerTest, FileReachingItsLimitStopsLoggingForGood) {
    sandbox::writeLogConfiguration("MaxLength=4096\n");
    OpenHandler handler;
    handler.write(std::string(4095, 'x'));
    EXPECT_EQ(lineCountsOf(handler, "y"), "link count=1\n");
    EXPECT_EQ(lineCountsOf(handler, "at the limit\n"), "");
    EXPECT_EQ(handler.m_file, nullptr);
    EXPECT_EQ(fs::file_size(DEFAULT_PATH), 4096U);

    fs::resize_file(DEFAULT_PATH, 0);
    EXPECT_EQ(lineCountsOf(handler, "truncated\n"), "");
    EXPECT_EQ(sandbox::readLog(), "");

    fs::remove(DEFAULT_PATH);
    EXPECT_EQ(lineCountsOf(handler, "deleted\n"), "");
    EXPECT_FALSE(fs::exists(DEFAULT_PATH));
}

TEST_F(FileLogHandlerTest, FileEndsAtMostOneLinePastItsLimit) {
    sandbox::writeLogConfiguration("MaxLength=4096\n");
    OpenHandler handler;
    for (int i = 0; i < 10; ++i) handler.write(std::string(1000, 'x'));
    EXPECT_EQ(fs::file_size(DEFAULT_PATH), 5000U);
}

TEST_F(FileLogHandlerTest, FileTooLongAtTheStartGetsOneLine) {
    sandbox::writeLogConfiguration("MaxLength=4096\n");
    std::ofstream(DEFAULT_PATH) << std::string(5000, 'x');
    OpenHandler handler;
    handler.write("first\n");
    EXPECT_EQ(lineCountsOf(handler, "second\n"), "");
    EXPECT_EQ(sandbox::readLog(), std::string(5000, 'x') + "first\n");
}

TEST_F(FileLogHandlerTest, DeletedFileIsMadeAnewByTheNextLine) {
    OpenHandler handler;
    handler.write("first\n");
    fs::remove(DEFAULT_PATH);
    EXPECT_EQ(lineCountsOf(handler, "second\n"), "link count=0\n");
    EXPECT_EQ(lineCountsOf(handler, "third\n"), "link count=1\n");
    EXPECT_EQ(sandbox::readLog(), "second\nthird\n");
}

TEST_F(FileLogHandlerTest, RenamedFileIsWrittenOn) {
    OpenHandler handler;
    handler.write("first\n");
    fs::rename(DEFAULT_PATH, "/var/log/tarn/old.log");
    EXPECT_EQ(lineCountsOf(handler, "second\n"), "link count=1\n");
    EXPECT_EQ(contentsOf("/var/log/tarn/old.log"), "first\nsecond\n");
    EXPECT_FALSE(fs::exists(DEFAULT_PATH));
}

TEST_F(FileLogHandlerTest, FileReplacedByADirectoryLosesLinesUntilTheDirectoryGoes) {
    OpenHandler handler;
    handler.write("first\n");
    fs::remove(DEFAULT_PATH);
    fs::create_directory(DEFAULT_PATH);
    EXPECT_EQ(lineCountsOf(handler, "second\n"), "link count=0\n");
    EXPECT_EQ(lineCountsOf(handler, "third\n"), "");
    fs::remove(DEFAULT_PATH);
    handler.write("fourth\n");
    EXPECT_EQ(sandbox::readLog(), "fourth\n");
}

TEST_F(FileLogHandlerTest, MissingDirectoryLosesEachLineAndIsTriedWithEach) {
    sandbox::writeLogConfiguration("FileName=/var/log/tarn/missing/a.log\n");
    OpenHandler handler;
    EXPECT_EQ(lineCountsOf(handler, "first\n"), "");
    EXPECT_EQ(lineCountsOf(handler, "second\n"), "");
    fs::create_directory("/var/log/tarn/missing");
    handler.write("third\n");
    EXPECT_EQ(contentsOf("/var/log/tarn/missing/a.log"), "third\n");
}

TEST_F(FileLogHandlerTest, UnknownFileStatusLosesTheLineAndKeepsTheStream) {
    OpenHandler handler;
    handler.write("first\n");
    const int file = fileno(handler.m_file);
    const int saved = dup(file);
    std::string said;
    {
        OutputCapture output(STDOUT_FILENO);  // before the closing, so as not to be given that descriptor's number
        close(file);
        handler.write("second\n");
        said = output.take();
    }
    EXPECT_EQ(said, "");
    dup2(saved, file);
    close(saved);
    EXPECT_EQ(lineCountsOf(handler, "third\n"), "link count=1\n");
    EXPECT_EQ(sandbox::readLog(), "first\nthird\n");
}

TEST_F(FileLogHandlerTest, FullDiskLosesLinesWithoutAnError) {
    sandbox::writeLogConfiguration("FileName=/dev/full\n");
    OpenHandler handler;
    EXPECT_EQ(lineCountsOf(handler, "first\n"), "");
    EXPECT_EQ(lineCountsOf(handler, std::string(100'000, 'x')), "link count=1\n");
}

TEST_F(FileLogHandlerTest, ConsoleTakesEveryLineAndTheFileIsNeverOpened) {
    sandbox::writeLogConfiguration("IsConsole=1\n");
    OpenHandler handler;
    std::string message = "abc";
    LogRecord record(LOG_TRACE, message);
    std::string line;
    record.GetLogLine(line);
    OutputCapture output(STDOUT_FILENO);
    OutputCapture error(STDERR_FILENO);
    handler.Log(record);
    handler.Log(record);
    const std::string written = error.take();
    const std::string said = output.take();
    EXPECT_EQ(written, line + line);
    EXPECT_EQ(said, "");
    EXPECT_FALSE(fs::exists(DEFAULT_PATH));
}

TEST_F(FileLogHandlerTest, WriteConsoleGivesWhatTheStreamGave) {
    OpenHandler handler;
    std::string line = "abc\n";
    OutputCapture error(STDERR_FILENO);
    const int good = handler.WriteConsole(line);
    const std::string written = error.take();
    const int full = open("/dev/full", O_WRONLY | O_CLOEXEC);
    const int saved = dup(STDERR_FILENO);
    dup2(full, STDERR_FILENO);
    const int bad = handler.WriteConsole(line);
    dup2(saved, STDERR_FILENO);
    std::clearerr(stderr);
    close(saved);
    close(full);
    EXPECT_GE(good, 0);
    EXPECT_EQ(written, "abc\n");
    EXPECT_LT(bad, 0);
}

TEST_F(FileLogHandlerTest, FileIsClosedWithTheHandler) {
    auto handler = std::make_unique<OpenHandler>();
    handler->write("first\n");
    const std::string descriptor = "/proc/self/fd/" + std::to_string(fileno(handler->m_file));
    EXPECT_EQ(fs::read_symlink(descriptor), DEFAULT_PATH);
    std::unique_ptr<LogHandler> sink = std::move(handler);
    sink.reset();
    EXPECT_FALSE(fs::is_symlink(fs::symlink_status(descriptor)));
}

TEST_F(FileLogHandlerTest, LinesOfSeveralThreadsStayWhole) {
    OpenHandler handler;
    writeFromEightThreads([&](std::string& line) { handler.WriteLog(line); });
    EXPECT_EQ(countWholeLines(sandbox::readLog()), 800);
}

TEST_F(FileLogHandlerTest, LimitHoldsForSeveralThreadsToo) {
    sandbox::writeLogConfiguration("MaxLength=4096\n");
    OpenHandler handler;
    writeFromEightThreads([&](std::string& line) { handler.WriteLog(line); });
    EXPECT_EQ(countWholeLines(sandbox::readLog()), 21);  // 21 * 201 is the first size past 4096
}

TEST_F(FileLogHandlerTest, FileDeletedUnderSeveralThreadsIsReopenedByOne) {
    OpenHandler handler;
    writeFromEightThreads([&](std::string& line) {
        handler.WriteLog(line);
        if (line.front() == 'a') fs::remove(DEFAULT_PATH);
    });
    const std::string last = std::string(200, 'z') + "\n";
    handler.write(last);
    EXPECT_GE(countWholeLines(sandbox::readLog()), 1);
    EXPECT_THAT(sandbox::readLog(), testing::EndsWith(last));
}

}  // namespace
