#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Instances.h"
#include "format/WatchFormat.h"

namespace {

using host::Command;
using host::drawn;
using host::Severity;
using host::WatchLine;
using testing::HasSubstr;

const std::vector<WatchLine> LINES{
    {"head"}, {"status"}, {"titles"}, {"first"}, {"second", Severity::NonCritical}, {"third", Severity::Fatal}};

std::vector<WatchLine> watchLines(const host::Answer& answer, const std::string& head) {
    return host::watchLines(answer, head, host::Charset::Utf8);
}

TEST(WatchLinesTest, SensorsAreShownWithStateAndBar) {
    const std::vector<WatchLine> lines =
        watchLines(answerOf(Command::Watch,
                            replyOf(CMPI_RC_OK, {sensorOf("Cool", 1, 2, 0, {{"MinReadable", 0}, {"MaxReadable", 2}}),
                                                 sensorOf("Hot", 9, 2, 0, {{"UpperThresholdCritical", 8}})})),
                   "head");
    ASSERT_EQ(lines.size(), 5U);
    EXPECT_EQ(lines[0].text, "head");
    EXPECT_EQ(lines[1].text, "Status 0 CMPI_RC_OK; sensors: 2, past a threshold: 1");
    EXPECT_EQ(lines[2].text, "Sensor  Reading  State          Between its limits");
    EXPECT_EQ(lines[3].text, "Cool       1 °C  ok             [------------|-----------]");
    EXPECT_EQ(lines[4].text, "Hot        9 °C  critical high");
    EXPECT_EQ(lines[3].severity, Severity::Normal);
    EXPECT_EQ(lines[4].severity, Severity::Critical);
}

TEST(WatchLinesTest, FailedRoundShowsItsStatus) {
    const std::vector<WatchLine> partial =
        watchLines(answerOf(Command::Watch, replyOf(CMPI_RC_ERR_FAILED, {sensorOf("A", 1, 2, 0)})), "");
    EXPECT_EQ(partial[1].text, "Status 1 CMPI_RC_ERR_FAILED (incomplete); sensors: 1, past a threshold: 0");
    EXPECT_EQ(partial[1].severity, Severity::Critical);
    const std::vector<WatchLine> none = watchLines(answerOf(Command::Watch, replyOf(CMPI_RC_ERR_FAILED, {})), "");
    EXPECT_EQ(none[1].text, "Status 1 CMPI_RC_ERR_FAILED; sensors: 0, past a threshold: 0");
}

TEST(WatchLinesTest, LinesAreAsciiThroughout) {
    broker::Reply reply = replyOf(CMPI_RC_ERR_FAILED, {sensorOf("\u00c4", 1, 2, 0)});
    reply.status.message = "\u00f6";
    const std::vector<WatchLine> lines =
        host::watchLines(answerOf(Command::Watch, reply), "/\u00fc", host::Charset::Ascii);
    ASSERT_EQ(lines.size(), 4U);
    EXPECT_EQ(lines[0].text, "/\\xc3\\xbc");
    EXPECT_EQ(lines[1].text, "Status 1 CMPI_RC_ERR_FAILED: \\xc3\\xb6 (incomplete); sensors: 1, past a threshold: 0");
    EXPECT_EQ(lines[3].text, "\\xc3\\x84   1 degC  ok");
}

TEST(WatchLinesTest, NamesAreMadeFitForATerminal) {
    const std::vector<WatchLine> lines =
        watchLines(answerOf(Command::Watch, replyOf(CMPI_RC_OK, {sensorOf("A\x1b[2J", 1, 2, 0)})), "");
    EXPECT_THAT(lines[3].text, HasSubstr("A\\x1b[2J"));
}

TEST(DrawnTest, LinesReplaceTheLastOnes) {
    EXPECT_EQ(drawn({{"a"}, {"b"}}, {0, 0}, false), "\x1b[Ha\x1b[K\nb\x1b[K\n\x1b[J");
}

TEST(DrawnTest, SeverityDecidesTheColour) {
    const std::string text = drawn(LINES, {80, 24}, true);
    EXPECT_THAT(text, HasSubstr("first\x1b[K"));
    EXPECT_THAT(text, HasSubstr("\x1b[33msecond\x1b[0m\x1b[K"));
    EXPECT_THAT(text, HasSubstr("\x1b[1;31mthird\x1b[0m\x1b[K"));
    EXPECT_THAT(drawn({{"x", Severity::Critical}}, {80, 24}, true), HasSubstr("\x1b[31mx\x1b[0m"));
    EXPECT_EQ(drawn(LINES, {80, 24}, false).find("\x1b[33m"), std::string::npos);
}

TEST(DrawnTest, IsCutToTheTerminal) {
    const std::string text = drawn(LINES, {4, 5}, false);
    EXPECT_EQ(text, "\x1b[Hhead\x1b[K\nstat\x1b[K\ntitl\x1b[K\n... \x1b[K\n\x1b[J");
    EXPECT_THAT(drawn(LINES, {80, 5}, false), HasSubstr("... 3 more do not fit\x1b[K"));
    EXPECT_THAT(drawn(LINES, {80, 7}, false), HasSubstr("third"));
}

}  // namespace
