#include <gtest/gtest.h>
#include <pthread.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <limits>
#include <optional>
#include <string>
#include <thread>

#include "LogRecord.h"

namespace {

// Three and a half hours behind Greenwich, in summer two and a half.
class LocalTime {
  public:
    LocalTime() {
        if (const char* zone = std::getenv("TZ")) m_previous = zone;
        setenv("TZ", "NST3:30NDT,M3.2.0,M11.1.0", 1);
        tzset();
    }
    ~LocalTime() {
        if (m_previous)
            setenv("TZ", m_previous->c_str(), 1);
        else
            unsetenv("TZ");
        tzset();
    }
    LocalTime(const LocalTime&) = delete;
    LocalTime& operator=(const LocalTime&) = delete;

  private:
    std::optional<std::string> m_previous;
};

constexpr time_t WINTER_MORNING = 1675427707;  // 3 February 2023, 12:35:07 in Greenwich
constexpr time_t SUMMER_MORNING = 1688387707;  // 3 July 2023, 12:35:07 in Greenwich

class OpenRecord : public LogRecord {
  public:
    OpenRecord(LOG_LEVEL level, std::string message) : LogRecord(level, message) {}
    using LogRecord::m_level;
    using LogRecord::m_message;
    using LogRecord::m_pid;
    using LogRecord::m_tid;
    using LogRecord::m_time;

    void setTime(time_t seconds, unsigned short milliseconds) {
        m_time.time = seconds;
        m_time.millitm = milliseconds;
    }

    std::string line() {
        std::string text;
        GetLogLine(text);
        return text;
    }
};

// The line of a record at a fixed moment, of a fixed process and thread.
std::string lineOf(LOG_LEVEL level, const std::string& message) {
    OpenRecord record(level, message);
    record.setTime(WINTER_MORNING, 4);
    record.m_pid = 255;
    record.m_tid = 127;
    return record.line();
}

const std::string FIXED_PREFIX = "03/02/2023 09:05:07.004\tP[000000ff] T[0000007f]\t";

std::string field(LogRecord& record, void (LogRecord::*append)(std::string&)) {
    std::string text;
    (record.*append)(text);
    return text;
}

std::string levelColumn(int level) {
    OpenRecord record(static_cast<LOG_LEVEL>(level), "");
    return field(record, &LogRecord::GetLevelString);
}

std::chrono::milliseconds timeOf(const OpenRecord& record) {
    return std::chrono::seconds(record.m_time.time) + std::chrono::milliseconds(record.m_time.millitm);
}

std::chrono::milliseconds now() {
    return std::chrono::floor<std::chrono::milliseconds>(std::chrono::system_clock::now().time_since_epoch());
}

TEST(LogRecordTest, LineHasItsFieldsInOrder) {
    const LocalTime localTime;
    EXPECT_EQ(lineOf(LOG_INFO, "abc"), FIXED_PREFIX + "Info \tabc\n");
}

TEST(LogRecordTest, MillisecondsHaveThreeDigits) {
    const LocalTime localTime;
    OpenRecord record(LOG_INFO, "");
    record.setTime(WINTER_MORNING, 0);
    EXPECT_EQ(field(record, &LogRecord::GetTimeString), "03/02/2023 09:05:07.000");
    record.setTime(WINTER_MORNING, 42);
    EXPECT_EQ(field(record, &LogRecord::GetTimeString), "03/02/2023 09:05:07.042");
    record.setTime(WINTER_MORNING, 999);
    EXPECT_EQ(field(record, &LogRecord::GetTimeString), "03/02/2023 09:05:07.999");
}

// The clock gives none of these, but the field can hold them.
TEST(LogRecordTest, MillisecondsBeyondThreeDigitsAreWrittenWhole) {
    const LocalTime localTime;
    OpenRecord record(LOG_INFO, "");
    record.setTime(WINTER_MORNING, 1000);
    EXPECT_EQ(field(record, &LogRecord::GetTimeString), "03/02/2023 09:05:07.1000");
    record.setTime(WINTER_MORNING, 65535);
    EXPECT_EQ(field(record, &LogRecord::GetTimeString), "03/02/2023 09:05:07.65535");
}

// The years -2, 987, 999, 1000, 9999 and 10000, and the ends of what the field can hold.
TEST(LogRecordTest, DateOfAnyYearIsWrittenAsStrftimeWritesIt) {
    const LocalTime localTime;
    OpenRecord record(LOG_INFO, "");
    for (const time_t seconds : {-62200000000, -31000000000, -30610300000, -30600000000, 253402000000, 253403000000,
                                 std::numeric_limits<time_t>::min(), std::numeric_limits<time_t>::max()}) {
        SCOPED_TRACE(seconds);
        record.setTime(seconds, 4);
        struct tm local {};
        localtime_r(&seconds, &local);
        char expected[256];
        ASSERT_GT(std::strftime(expected, sizeof expected, "%d/%m/%Y %H:%M:%S.", &local), 0U);
        EXPECT_EQ(field(record, &LogRecord::GetTimeString), std::string(expected) + "004");
    }
}

TEST(LogRecordTest, MillisecondsNeverExceed999) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(20);
    while (std::chrono::steady_clock::now() < end) ASSERT_LE(OpenRecord(LOG_INFO, "").m_time.millitm, 999);
}

TEST(LogRecordTest, TimeIsLocalAlsoInSummer) {
    const LocalTime localTime;
    OpenRecord record(LOG_INFO, "");
    record.setTime(SUMMER_MORNING, 4);
    EXPECT_EQ(field(record, &LogRecord::GetTimeString), "03/07/2023 10:05:07.004");
}

TEST(LogRecordTest, TimeIsThatOfMaking) {
    const std::chrono::milliseconds before = now();
    const OpenRecord record(LOG_INFO, "");
    const std::chrono::milliseconds after = now();
    EXPECT_GE(timeOf(record), before);
    EXPECT_LE(timeOf(record), after);
}

TEST(LogRecordTest, ProcessIsThisOne) {
    EXPECT_EQ(OpenRecord(LOG_INFO, "").m_pid, getpid());
}

TEST(LogRecordTest, ThreadIdIsCutToItsLowHalf) {
    std::thread([] {
        const pthread_t self = pthread_self();
        if (self <= UINT32_MAX) GTEST_SKIP() << "this system's thread ids have 32 bits";
        OpenRecord record(LOG_INFO, "");
        char expected[16];
        std::snprintf(expected, sizeof expected, "T[%08lx]", self & 0xffffffffUL);
        EXPECT_EQ(field(record, &LogRecord::GetTidString), expected);
    }).join();
}

TEST(LogRecordTest, ThreadIsTheOneThatMadeTheRecord) {
    OpenRecord here(LOG_INFO, "");
    std::thread([&] { EXPECT_NE(OpenRecord(LOG_INFO, "").m_tid, here.m_tid); }).join();
}

TEST(LogRecordTest, LevelNamesAreFiveCharactersWide) {
    EXPECT_EQ(levelColumn(0), "Off  ");
    EXPECT_EQ(levelColumn(1), "Error");
    EXPECT_EQ(levelColumn(2), "Info ");
    EXPECT_EQ(levelColumn(3), "Debug");
    EXPECT_EQ(levelColumn(4), "Trace");
}

TEST(LogRecordTest, LevelWithoutNameLeavesItsColumnEmpty) {
    const LocalTime localTime;
    for (const int level : {5, 100, -1, -2147483647 - 1})
        EXPECT_EQ(lineOf(static_cast<LOG_LEVEL>(level), "abc"), FIXED_PREFIX + "\tabc\n") << level;
}

TEST(LogRecordTest, EmptyMessageStillMakesALine) {
    const LocalTime localTime;
    EXPECT_EQ(lineOf(LOG_ERROR, ""), FIXED_PREFIX + "Error\t\n");
}

TEST(LogRecordTest, MessagesOwnNewlineIsFollowedByAnEmptyLine) {
    const LocalTime localTime;
    EXPECT_EQ(lineOf(LOG_TRACE, "abc\n"), FIXED_PREFIX + "Trace\tabc\n\n");
}

TEST(LogRecordTest, MessageStandsByteForByte) {
    const LocalTime localTime;
    using namespace std::string_literals;
    const std::string message = "%s\t\xff\0end"s + std::string(100'000, 'x');
    EXPECT_EQ(lineOf(LOG_DEBUG, message), FIXED_PREFIX + "Debug\t" + message + "\n");
}

TEST(LogRecordTest, LineReplacesWhatTheStringHeld) {
    OpenRecord record(LOG_INFO, "abc");
    std::string line = "earlier";
    record.GetLogLine(line);
    EXPECT_EQ(line, record.line());
}

TEST(LogRecordTest, FieldsAppendToWhatTheStringHeld) {
    const LocalTime localTime;
    OpenRecord record(LOG_INFO, "abc");
    record.setTime(WINTER_MORNING, 4);
    record.m_pid = 255;
    record.m_tid = 127;
    std::string out = "earlier ";
    record.GetTimeString(out);
    EXPECT_EQ(out, "earlier 03/02/2023 09:05:07.004");
    out = "earlier ";
    record.GetPidString(out);
    EXPECT_EQ(out, "earlier P[000000ff]");
    out = "earlier ";
    record.GetTidString(out);
    EXPECT_EQ(out, "earlier T[0000007f]");
    out = "earlier ";
    record.GetLevelString(out);
    EXPECT_EQ(out, "earlier Info ");
}

TEST(LogRecordTest, MessageIsCopied) {
    std::string message = "abc";
    LogRecord record(LOG_INFO, message);
    message = "xyz";
    std::string line;
    record.GetLogLine(line);
    EXPECT_EQ(line.substr(line.rfind('\t')), "\tabc\n");
}

}  // namespace
