#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <nlohmann/json.hpp>
#include <sstream>

#include "Instances.h"
#include "MemoryFile.h"
#include "cli/Watch.h"

namespace {

using broker::Reply;
using host::Command;
using host::drawn;
using host::Options;
using host::Output;
using host::Severity;
using host::watch;
using host::WatchLine;
using host::WatchOutcome;
using testing::HasSubstr;

const std::vector<WatchLine> kLines{
    {"head"}, {"status"}, {"titles"}, {"first"}, {"second", Severity::NonCritical}, {"third", Severity::Fatal}};

std::vector<WatchLine> watchLines(const host::Answer& answer, const std::string& head) {
    return host::watchLines(answer, head, host::Charset::Utf8);
}

TEST(WatchLines, SensorsWithStateAndBar) {
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

TEST(WatchLines, FailedRoundShowsItsStatus) {
    const std::vector<WatchLine> partial =
        watchLines(answerOf(Command::Watch, replyOf(CMPI_RC_ERR_FAILED, {sensorOf("A", 1, 2, 0)})), "");
    EXPECT_EQ(partial[1].text, "Status 1 CMPI_RC_ERR_FAILED (incomplete); sensors: 1, past a threshold: 0");
    EXPECT_EQ(partial[1].severity, Severity::Critical);
    const std::vector<WatchLine> none = watchLines(answerOf(Command::Watch, replyOf(CMPI_RC_ERR_FAILED, {})), "");
    EXPECT_EQ(none[1].text, "Status 1 CMPI_RC_ERR_FAILED; sensors: 0, past a threshold: 0");
}

TEST(WatchLines, AsciiThroughout) {
    broker::Reply reply = replyOf(CMPI_RC_ERR_FAILED, {sensorOf("\u00c4", 1, 2, 0)});
    reply.status.message = "\u00f6";
    const std::vector<WatchLine> lines =
        host::watchLines(answerOf(Command::Watch, reply), "/\u00fc", host::Charset::Ascii);
    ASSERT_EQ(lines.size(), 4U);
    EXPECT_EQ(lines[0].text, "/\\xc3\\xbc");
    EXPECT_EQ(lines[1].text, "Status 1 CMPI_RC_ERR_FAILED: \\xc3\\xb6 (incomplete); sensors: 1, past a threshold: 0");
    EXPECT_EQ(lines[3].text, "\\xc3\\x84   1 degC  ok");
}

TEST(WatchLines, NamesAreMadeFitForATerminal) {
    const std::vector<WatchLine> lines =
        watchLines(answerOf(Command::Watch, replyOf(CMPI_RC_OK, {sensorOf("A\x1b[2J", 1, 2, 0)})), "");
    EXPECT_THAT(lines[3].text, HasSubstr("A\\x1b[2J"));
}

TEST(Drawn, LinesReplaceTheLastOnes) {
    EXPECT_EQ(drawn({{"a"}, {"b"}}, {0, 0}, false), "\x1b[Ha\x1b[K\nb\x1b[K\n\x1b[J");
}

TEST(Drawn, ColourByGravity) {
    const std::string text = drawn(kLines, {80, 24}, true);
    EXPECT_THAT(text, HasSubstr("first\x1b[K"));
    EXPECT_THAT(text, HasSubstr("\x1b[33msecond\x1b[0m\x1b[K"));
    EXPECT_THAT(text, HasSubstr("\x1b[1;31mthird\x1b[0m\x1b[K"));
    EXPECT_THAT(drawn({{"x", Severity::Critical}}, {80, 24}, true), HasSubstr("\x1b[31mx\x1b[0m"));
    EXPECT_EQ(drawn(kLines, {80, 24}, false).find("\x1b[33m"), std::string::npos);
}

TEST(Drawn, IsCutToTheTerminal) {
    const std::string text = drawn(kLines, {4, 5}, false);
    EXPECT_EQ(text, "\x1b[Hhead\x1b[K\nstat\x1b[K\ntitl\x1b[K\n... \x1b[K\n\x1b[J");
    EXPECT_THAT(drawn(kLines, {80, 5}, false), HasSubstr("... 3 more, for which there is no room\x1b[K"));
    EXPECT_THAT(drawn(kLines, {80, 7}, false), HasSubstr("third"));
}

class WatchTest : public testing::Test {
  protected:
    WatchTest() : m_file(makeMemoryFile()), m_output(m_file) {
        m_options.command = Command::Watch;
        m_options.interval = 0.1;
        m_options.rounds = 3;
    }
    ~WatchTest() override { close(m_file); }

    Options m_options;
    int m_file;
    Output m_output;
};

TEST_F(WatchTest, GoesOnAfterAFailedRound) {
    unsigned asked = 0;
    const WatchOutcome outcome = watch(
        m_options, "note", [&asked] { return replyOf(++asked == 2 ? CMPI_RC_ERR_FAILED : CMPI_RC_OK, {}); }, m_output);
    EXPECT_EQ(outcome.rounds, 3U);
    EXPECT_EQ(outcome.failedRounds, 1U);
    EXPECT_EQ(outcome.lastFailure.rc, CMPI_RC_ERR_FAILED);
    const std::string text = takeContents(m_file);
    EXPECT_THAT(text, HasSubstr("  round 2  note\nStatus 1 CMPI_RC_ERR_FAILED;"));
    EXPECT_THAT(text, HasSubstr("  round 3  note\nStatus 0 CMPI_RC_OK;"));
    EXPECT_EQ(text.find('\x1b'), std::string::npos);
}

TEST_F(WatchTest, JsonIsOneDocumentALine) {
    m_options.format = host::Format::Json;
    watch(
        m_options, "", [] { return replyOf(CMPI_RC_OK, {sensorOf("A", 1, 2, 0)}); }, m_output);
    std::istringstream lines(takeContents(m_file));
    unsigned count = 0;
    for (std::string line; std::getline(lines, line); ++count) {
        EXPECT_EQ(nlohmann::json::parse(line)["instances"][0]["properties"]["CurrentReading"], 1);
    }
    EXPECT_EQ(count, 3U);
}

TEST_F(WatchTest, SignalDuringARequestEndsItAfterThatRound) {
    m_options.rounds = 0;
    const WatchOutcome outcome = watch(
        m_options, "",
        [] {
            raise(SIGTERM);
            return replyOf(CMPI_RC_OK, {});
        },
        m_output);
    EXPECT_EQ(outcome.rounds, 1U);
    EXPECT_THAT(takeContents(m_file), HasSubstr("round 1"));
}

TEST_F(WatchTest, HandlersAreGivenBack) {
    m_options.rounds = 1;
    watch(
        m_options, "", [] { return replyOf(CMPI_RC_OK, {}); }, m_output);
    struct sigaction now {};
    sigaction(SIGTERM, nullptr, &now);
    EXPECT_EQ(now.sa_handler, SIG_DFL);
    sigset_t mask;
    sigprocmask(SIG_SETMASK, nullptr, &mask);
    EXPECT_EQ(sigismember(&mask, SIGTERM), 0);
}

}  // namespace
