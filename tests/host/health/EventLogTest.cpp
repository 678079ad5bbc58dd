#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "FakeSource.h"
#include "Instances.h"
#include "health/EventLog.h"

namespace {

using broker::Value;
using host::EventLogRound;
using host::EventLogRounds;
using testing::ElementsAre;
using testing::IsEmpty;

broker::Instance logOf(const std::vector<std::string>& lines, std::optional<bool> isValid = true) {
    broker::Instance log = instanceOf(host::EVENT_LOG_CLASS, "L", {{"LogFull", Value::ofBoolean(false)}});
    if (isValid) log.properties.push_back({"LogValid", Value::ofBoolean(*isValid)});
    std::vector<Value> texts;
    for (const std::string& line : lines) texts.push_back(Value::ofText(line, CMPI_chars));
    if (!lines.empty()) log.properties.push_back({"LogLines", Value::ofArray(texts, CMPI_chars)});
    return log;
}

class EventLogTest : public testing::Test {
  protected:
    EventLogRound next(const broker::Reply& reply) {
        m_source.instances = [&](const broker::ObjectPath& path) {
            EXPECT_EQ(path.className, "TQS_SystemEventLog");
            EXPECT_EQ(path.nameSpace, "root/other");
            return reply;
        };
        return m_rounds.next();
    }
    EventLogRound next(const std::vector<std::string>& lines, std::optional<bool> isValid = true) {
        return next(replyOf(CMPI_RC_OK, {logOf(lines, isValid)}));
    }

    FakeSource m_source;
    EventLogRounds m_rounds{m_source, "root/other"};
};

TEST_F(EventLogTest, LinesAndStateAreTheProviders) {
    const EventLogRound round = next({"a", "b\xff"});
    EXPECT_EQ(round.status.rc, CMPI_RC_OK);
    ASSERT_TRUE(round.log);
    EXPECT_EQ(round.log->isValid, true);
    EXPECT_EQ(round.log->isFull, false);
    EXPECT_THAT(round.log->lines, ElementsAre("a", "b\xff"));
}

TEST_F(EventLogTest, WhatTheProviderDoesNotSayIsNotThere) {
    const EventLogRound round = next(replyOf(CMPI_RC_OK, {instanceOf(host::EVENT_LOG_CLASS, "L", {})}));
    ASSERT_TRUE(round.log);
    EXPECT_EQ(round.log->isValid, std::nullopt);
    EXPECT_EQ(round.log->isFull, std::nullopt);
    EXPECT_THAT(round.log->lines, IsEmpty());
}

TEST_F(EventLogTest, LinesOfTheFirstRoundAreNotNew) {
    EXPECT_EQ(next({"a", "b"}).newLines, 0U);
    EXPECT_EQ(next({"a", "b", "c"}).newLines, 1U);
    EXPECT_EQ(next({"c", "d", "e"}).newLines, 3U);
    EXPECT_EQ(next(std::vector<std::string>{}).newLines, 3U);
    EXPECT_EQ(next({"f"}).newLines, 4U);
}

TEST_F(EventLogTest, FailureKeepsTheCount) {
    next({"a"});
    const EventLogRound failed = next(replyOf(CMPI_RC_ERR_FAILED, {}));
    EXPECT_EQ(failed.status.rc, CMPI_RC_ERR_FAILED);
    EXPECT_FALSE(failed.log);
    EXPECT_EQ(next({"a", "b"}).newLines, 1U);
}

TEST_F(EventLogTest, AnswerWithoutAnInstanceIsAFailure) {
    const EventLogRound round = next(replyOf(CMPI_RC_OK, {}));
    EXPECT_EQ(round.status.rc, CMPI_RC_ERR_NOT_FOUND);
    EXPECT_FALSE(round.log);
    EXPECT_EQ(round.newLines, std::nullopt);
}

TEST_F(EventLogTest, LinesOfALogThatIsSaidToBeInvalidAreNotCounted) {
    EXPECT_EQ(next({"?"}, false).newLines, std::nullopt);
    EXPECT_EQ(next({"a"}, std::nullopt).newLines, 0U);
    EXPECT_EQ(next({"?"}, false).newLines, 0U);
    EXPECT_EQ(next({"a", "b"}).newLines, 1U);
}

}  // namespace
