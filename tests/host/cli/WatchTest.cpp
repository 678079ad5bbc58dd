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
using host::Options;
using host::Output;
using host::watch;
using host::WatchOutcome;
using testing::HasSubstr;

const host::AnsweringChip CHIP{"/real/chip", false};

class WatchTest : public testing::Test {
  protected:
    WatchTest() : m_file(makeMemoryFile()), m_output(m_file) {
        m_options.request.command = Command::Watch;
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
        m_options, CHIP, [&asked] { return replyOf(++asked == 2 ? CMPI_RC_ERR_FAILED : CMPI_RC_OK, {}); }, m_output);
    EXPECT_EQ(outcome.rounds, 3U);
    EXPECT_EQ(outcome.failedRounds, 1U);
    EXPECT_EQ(outcome.lastFailure.rc, CMPI_RC_ERR_FAILED);
    const std::string text = takeContents(m_file);
    EXPECT_THAT(text, HasSubstr("  round 2  Chip library: /real/chip\nStatus 1 CMPI_RC_ERR_FAILED;"));
    EXPECT_THAT(text, HasSubstr("  round 3  Chip library: /real/chip\nStatus 0 CMPI_RC_OK;"));
    EXPECT_EQ(text.find('\x1b'), std::string::npos);
}

TEST_F(WatchTest, JsonIsOneDocumentALine) {
    m_options.format = host::Format::Json;
    watch(
        m_options, CHIP, [] { return replyOf(CMPI_RC_OK, {sensorOf("A", 1, 2, 0)}); }, m_output);
    std::istringstream lines(takeContents(m_file));
    unsigned count = 0;
    for (std::string line; std::getline(lines, line); ++count) {
        EXPECT_EQ(nlohmann::json::parse(line)["simulated"], false);
        EXPECT_EQ(nlohmann::json::parse(line)["instances"][0]["properties"]["CurrentReading"], 1);
    }
    EXPECT_EQ(count, 3U);
}

TEST_F(WatchTest, SignalDuringARequestEndsItAfterThatRound) {
    m_options.rounds = 0;
    const WatchOutcome outcome = watch(
        m_options, CHIP,
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
        m_options, CHIP, [] { return replyOf(CMPI_RC_OK, {}); }, m_output);
    struct sigaction now {};
    sigaction(SIGTERM, nullptr, &now);
    EXPECT_EQ(now.sa_handler, SIG_DFL);
    sigset_t mask;
    sigprocmask(SIG_SETMASK, nullptr, &mask);
    EXPECT_EQ(sigismember(&mask, SIGTERM), 0);
}

}  // namespace
