#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <functional>
#include <new>
#include <string>
#include <thread>
#include <vector>

#include "FailingAllocations.h"
#include "LogLines.h"
#include "RunAnew.h"
#include "Sandbox.h"
#include "log.h"

using testing::ElementsAre;
using testing::SizeIs;
using testing::UnorderedElementsAre;

namespace {

constexpr auto CREATED = "Logger created\n";

// The compilers do not check the formats of calls through a pointer, and some here are wrong on purpose.
void (*const unchecked)(LOG_LEVEL, const char*, ...) = &Log;

class LogTest : public testing::Test {
  protected:
    void SetUp() override { REQUIRE_SANDBOX(); }
};

TEST_F(LogTest, FirstCallReportsOnceThatTheSinkWasMade) {
    EXPECT_EQ(runAnew([] {
                  Log(LOG_ERROR, "first");
                  LogQuick(LOG_TRACE, "filtered out");
                  WLog(LOG_TRACE, L"filtered out");
              }),
              CREATED);
    EXPECT_THAT(loggedMessages(), ElementsAre("first"));
}

TEST_F(LogTest, FirstCallMakesTheSinkAlsoWhenFilteredOut) {
    EXPECT_EQ(runAnew([] { Log(LOG_TRACE, "one"); }), CREATED);
    EXPECT_EQ(runAnew([] { WLog(LOG_TRACE, L"one"); }), CREATED);
    EXPECT_EQ(runAnew([] { LogQuick(LOG_TRACE, "one"); }), CREATED);
    EXPECT_EQ(runAnew([] { LogQuick(LOG_ERROR, nullptr); }), CREATED);
    EXPECT_FALSE(std::filesystem::exists("/var/log/tarn/tarn.log"));
}

TEST_F(LogTest, WithoutConfigurationLevelsAbove2WriteNothing) {
    EXPECT_EQ(runAnew([] {
                  Log(LOG_DEBUG, "no");
                  LogQuick(LOG_DEBUG, "no");
                  Log(LOG_TRACE, "no");
                  Log(LOG_ERROR, "error");
                  Log(LOG_INFO, "info");
                  LogQuick(LOG_ERROR, "quick error");
                  LogQuick(LOG_INFO, "quick info");
              }),
              std::string(CREATED) + "link count=1\nlink count=1\nlink count=1\n");
    EXPECT_THAT(loggedMessages(), ElementsAre("error", "info", "quick error", "quick info"));
    EXPECT_THAT(messagesAt("Info"), ElementsAre("info", "quick info"));
}

TEST_F(LogTest, LevelOfTheConfigurationDecides) {
    const auto logAtEachLevel = [] {
        for (int level = -1; level <= 5; ++level) Log(static_cast<LOG_LEVEL>(level), "%d", level);
    };
    sandbox::writeLogConfiguration("FileName=/var/log/tarn/tarn.log\nLevel=4\n");
    runAnew(logAtEachLevel);
    EXPECT_THAT(loggedMessages(), ElementsAre("-1", "0", "1", "2", "3", "4"));
    std::filesystem::remove("/var/log/tarn/tarn.log");
    sandbox::writeLogConfiguration("Level=1\n");
    runAnew(logAtEachLevel);
    EXPECT_THAT(loggedMessages(), ElementsAre("-1", "0", "1"));
}

TEST_F(LogTest, LevelOffSilencesAllThatIsLogged) {
    sandbox::writeLogConfiguration("Level=0\n");
    runAnew([] {
        for (const LOG_LEVEL level : {LOG_ERROR, LOG_INFO, LOG_DEBUG, LOG_TRACE}) {
            Log(level, "no");
            LogQuick(level, "no");
            WLog(level, L"no");
        }
        LogQuick(LOG_OFF, "yes");
    });
    EXPECT_THAT(loggedMessages(), ElementsAre("yes"));
}

TEST_F(LogTest, ConfigurationIsReadOnce) {
    runAnew([] {
        Log(LOG_ERROR, "first");
        sandbox::writeLogConfiguration("FileName=/var/log/tarn/other.log\nLevel=4\n");
        Log(LOG_ERROR, "second");
        Log(LOG_TRACE, "third");
    });
    EXPECT_THAT(loggedMessages(), ElementsAre("first", "second"));
    EXPECT_FALSE(std::filesystem::exists("/var/log/tarn/other.log"));
}

TEST_F(LogTest, ConsoleGetsTheLinesWhenConfigured) {
    sandbox::writeLogConfiguration("IsConsole=1\n");
    const ProcessOutcome outcome = runInFreshProcess([] { Log(LOG_ERROR, "code=%08x", 0xbadU); });
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.standardOutput, CREATED);
    const std::vector<LogLine> lines = parseLog(outcome.standardError);
    ASSERT_THAT(lines, SizeIs(1));
    EXPECT_EQ(lines[0].level, "Error");
    EXPECT_EQ(lines[0].message, "code=00000bad");
    EXPECT_FALSE(std::filesystem::exists("/var/log/tarn/tarn.log"));
}

TEST_F(LogTest, TextIsFormatted) {
    runAnew([] { Log(LOG_ERROR, "%s=%d, %5.1f%%, 0x%08x", "name", -3, 99.5, 48879U); });
    EXPECT_THAT(loggedMessages(), ElementsAre("name=-3,  99.5%, 0x0000beef"));
}

TEST_F(LogTest, TextIsCutTo4095Bytes) {
    runAnew([] {
        Log(LOG_ERROR, "%s", std::string(4095, 'a').c_str());
        Log(LOG_ERROR, "%s", std::string(4096, 'b').c_str());
        Log(LOG_ERROR, "start %s", std::string(100'000, 'c').c_str());
        Log(LOG_ERROR, "next");
    });
    EXPECT_THAT(loggedMessages(),
                ElementsAre(std::string(4095, 'a'), std::string(4095, 'b'), "start " + std::string(4089, 'c'), "next"));
}

TEST_F(LogTest, QuickTextOfAnyLengthIsWrittenWhole) {
    runAnew([] { LogQuick(LOG_ERROR, std::string(100'000, 'a').c_str()); });
    EXPECT_THAT(loggedMessages(), ElementsAre(std::string(100'000, 'a')));
}

TEST_F(LogTest, QuickTextIsNoFormat) {
    runAnew([] { LogQuick(LOG_ERROR, "100 %s %n %d %%"); });
    EXPECT_THAT(loggedMessages(), ElementsAre("100 %s %n %d %%"));
}

TEST_F(LogTest, TextsOwnNewlineStaysInFrontOfTheLines) {
    runAnew([] { LogQuick(LOG_ERROR, "abc\n"); });
    const std::string contents = sandbox::readLog();
    EXPECT_EQ(contents.substr(contents.rfind('\t')), "\tabc\n\n");
}

TEST_F(LogTest, NullTextWritesNothing) {
    EXPECT_EQ(runAnew([] {
                  unchecked(LOG_ERROR, nullptr);
                  LogQuick(LOG_ERROR, nullptr);
                  WLog(LOG_ERROR, nullptr);
              }),
              CREATED);
    EXPECT_FALSE(std::filesystem::exists("/var/log/tarn/tarn.log"));
}

TEST_F(LogTest, WhatCouldBeFormattedIsWritten) {
    // The C locale has no such character, so the formatting fails; its result does not matter.
    runAnew([] {
        unchecked(LOG_ERROR, "before %ls after", L"\u20ac");
        Log(LOG_ERROR, "next");
    });
    EXPECT_THAT(loggedMessages(), ElementsAre("before ", "next"));
}

TEST_F(LogTest, ThreadsThatLogFirstTogetherShareOneSink) {
    // A sink that is long in the making, so that both threads find none.
    std::string configuration;
    for (int i = 0; i < 100'000; ++i) configuration += "Level=2\n";
    sandbox::writeLogConfiguration(configuration);
    const std::string output = runAnew([] {
        std::atomic<int> waiting{2};
        const auto logTogether = [&](const char* name) {
            for (--waiting; waiting > 0;) std::this_thread::yield();
            LogQuick(LOG_ERROR, name);
        };
        std::thread one(logTogether, "one");
        std::thread other(logTogether, "other");
        one.join();
        other.join();
    });
    EXPECT_EQ(output, std::string(CREATED) + "link count=1\n");
    EXPECT_THAT(loggedMessages(), UnorderedElementsAre("one", "other"));
}

TEST_F(LogTest, LinesOfSeveralThreadsStayWhole) {
    runAnew([] {
        std::vector<std::thread> threads;
        for (char letter = 'a'; letter < 'i'; ++letter) {
            threads.emplace_back([letter] {
                for (int i = 0; i < 100; ++i) Log(LOG_ERROR, "%s", std::string(300, letter).c_str());
            });
        }
        for (std::thread& thread : threads) thread.join();
    });
    const std::vector<std::string> messages = loggedMessages();
    EXPECT_THAT(messages, SizeIs(800));
    for (const std::string& message : messages) ASSERT_EQ(message, std::string(300, message.front()));
}

// What becomes of each call when each of its allocations in turn fails, with the sink made before.
void failEachAllocation(const std::function<void()>& log) {
    unsigned n = 1;
    for (bool failed = true; failed; ++n) {
        try {
            const FailingAllocation shortage(n);
            log();
            failed = FailingAllocation::hasFailed();
        } catch (const std::bad_alloc&) {
        }
        ASSERT_LT(n, 100U);
    }
    EXPECT_GT(n, 2U);
}

constexpr auto LONG_TEXT = "a text that is longer than a string keeps inside itself";

TEST_F(LogTest, ExceptionBelowACallPassesOnAndTheNextCallWorks) {
    runAnew([] {
        LogQuick(LOG_ERROR, "the sink is there");
        failEachAllocation([] { LogQuick(LOG_ERROR, LONG_TEXT); });
    });
    EXPECT_THAT(loggedMessages(), ElementsAre("the sink is there", LONG_TEXT));
}

// The buffer is a call's first allocation, the text the second.
TEST_F(LogTest, NoMemoryForTheBufferDropsTheMessage) {
    runAnew([] {
        LogQuick(LOG_ERROR, "the sink is there");
        {
            const FailingAllocation shortage(1);
            EXPECT_NO_THROW(Log(LOG_ERROR, "%s", LONG_TEXT));
            EXPECT_TRUE(FailingAllocation::hasFailed());
        }
        {
            const FailingAllocation shortage(2);
            EXPECT_THROW(Log(LOG_ERROR, "%s", LONG_TEXT), std::bad_alloc);
        }
        Log(LOG_ERROR, "next");
    });
    EXPECT_THAT(loggedMessages(), ElementsAre("the sink is there", "next"));
}

TEST_F(LogTest, NoMemoryForAWideMessagesBuffersDropsIt) {
    runAnew([] {
        LogQuick(LOG_ERROR, "the sink is there");
        for (const unsigned buffer : {1U, 2U}) {
            const FailingAllocation shortage(buffer);
            EXPECT_NO_THROW(WLog(LOG_ERROR, L"%s", LONG_TEXT));
            EXPECT_TRUE(FailingAllocation::hasFailed());
        }
        WLog(LOG_ERROR, L"next");
    });
    EXPECT_THAT(loggedMessages(), ElementsAre("the sink is there", "next"));
}

// The sink itself is the first allocation of its making, what its construction takes comes after it.
TEST_F(LogTest, SinkThatCannotBeMadeIsTriedAgainByTheNextCall) {
    sandbox::writeLogConfiguration("FileName=/var/log/tarn/of-another-name.log\nFileName=/var/log/tarn/tarn.log\n");
    for (unsigned allocation = 1; allocation <= 4; ++allocation) {
        std::filesystem::remove("/var/log/tarn/tarn.log");
        const std::string output = runAnew([=] {
            {
                const FailingAllocation shortage(allocation);
                EXPECT_THROW(LogQuick(LOG_TRACE, "first"), std::bad_alloc);
            }
            LogQuick(LOG_ERROR, "second");
            LogQuick(LOG_ERROR, "third");
        });
        EXPECT_EQ(output, std::string(CREATED) + CREATED + "link count=1\n");
        EXPECT_THAT(loggedMessages(), ElementsAre("second", "third"));
    }
}

}  // namespace
