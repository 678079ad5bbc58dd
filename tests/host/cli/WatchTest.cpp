#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <nlohmann/json.hpp>
#include <sstream>

#include "FakeSource.h"
#include "Instances.h"
#include "MemoryFile.h"
#include "cli/Watch.h"

namespace {

using broker::Reply;
using host::Command;
using host::Options;
using host::Output;
using host::WatchOutcome;
using testing::HasSubstr;

Reply namesReply(CMPIrc rc, const std::vector<std::string>& names) {
    Reply reply;
    reply.status.rc = rc;
    for (const std::string& name : names) reply.paths.push_back(instanceOf("TQS_NumericSensor", name, {}).path);
    return reply;
}

class WatchTest : public testing::Test {
  protected:
    WatchTest() : m_file(makeMemoryFile()), m_output(m_file) {
        m_options.request.command = Command::Watch;
        m_options.interval = 0.1;
        m_options.rounds = 3;
        m_source.names = [this](const broker::ObjectPath&) {
            return ++m_asked == m_failing ? namesReply(CMPI_RC_ERR_FAILED, {}) : namesReply(CMPI_RC_OK, {"A"});
        };
        m_source.instances = [](const broker::ObjectPath&) { return replyOf(CMPI_RC_OK, {sensorOf("A", 17, 2, 0)}); };
    }
    ~WatchTest() override { close(m_file); }

    WatchOutcome watch() { return host::watch(m_options, m_source, "note", std::nullopt, m_output); }

    Options m_options;
    FakeSource m_source;
    unsigned m_asked = 0;
    unsigned m_failing = 0;
    int m_file;
    Output m_output;
};

TEST_F(WatchTest, GoesOnAfterAFailedRoundAndKeepsItsSensors) {
    m_failing = 2;
    const WatchOutcome outcome = watch();
    EXPECT_EQ(outcome.rounds, 3U);
    EXPECT_EQ(outcome.failedRounds, 1U);
    EXPECT_EQ(outcome.lastFailure.rc, CMPI_RC_ERR_FAILED);
    const std::string text = takeContents(m_file);
    EXPECT_THAT(text, HasSubstr("  round 2  note\nStatus 1 CMPI_RC_ERR_FAILED; 1 sensor: 1 without a reading\n"));
    EXPECT_THAT(text, HasSubstr("A             -  no reading  the provider answered 1 CMPI_RC_ERR_FAILED\n"));
    EXPECT_THAT(text, HasSubstr("  round 3  note\n1 sensor, all well\n"));
    EXPECT_EQ(text.find('\x1b'), std::string::npos);
}

TEST_F(WatchTest, JsonIsOneDocumentALine) {
    m_options.format = host::Format::Json;
    watch();
    std::istringstream lines(takeContents(m_file));
    unsigned count = 0;
    for (std::string line; std::getline(lines, line); ++count) {
        const nlohmann::json document = nlohmann::json::parse(line);
        EXPECT_EQ(document["command"], "watch");
        EXPECT_EQ(document["sensors"][0]["value"], 17);
    }
    EXPECT_EQ(count, 3U);
}

TEST_F(WatchTest, ColoursAlsoElsewhereWhereTheyAreWanted) {
    m_options.rounds = 1;
    m_options.sensors.colouring = host::Colouring::Always;
    m_source.instances = [](const broker::ObjectPath&) {
        return replyOf(CMPI_RC_OK, {sensorOf("A", 17, 2, 0, {{"UpperThresholdCritical", 16}})});
    };
    watch();
    EXPECT_THAT(takeContents(m_file), HasSubstr("\n\x1b[31mA "));
}

TEST_F(WatchTest, SignalDuringARequestEndsItAfterThatRound) {
    m_options.rounds = 0;
    m_source.instances = [](const broker::ObjectPath&) {
        raise(SIGTERM);
        return replyOf(CMPI_RC_OK, {sensorOf("A", 17, 2, 0)});
    };
    EXPECT_EQ(watch().rounds, 1U);
    EXPECT_THAT(takeContents(m_file), HasSubstr("round 1"));
}

// After a failure a round waits, since the provider takes no second reading at once. The end does not wait with it, and
// nothing is shown that was asked too soon.
TEST_F(WatchTest, SignalEndsARoundThatWaits) {
    m_options.rounds = 0;
    m_source.instances = [](const broker::ObjectPath&) {
        raise(SIGTERM);
        return replyOf(CMPI_RC_ERR_FAILED, {});
    };
    m_source.get = [](const broker::ObjectPath&) {
        ADD_FAILURE() << "asked again";
        return Reply();
    };
    EXPECT_EQ(watch().rounds, 0U);
    EXPECT_EQ(takeContents(m_file), "");
}

TEST_F(WatchTest, HandlersAreGivenBack) {
    m_options.rounds = 1;
    watch();
    sigset_t mask;
    sigprocmask(SIG_SETMASK, nullptr, &mask);
    for (const int signal : {SIGTERM, SIGINT, SIGHUP, SIGCONT, SIGWINCH, SIGTSTP}) {
        struct sigaction now {};
        sigaction(signal, nullptr, &now);
        EXPECT_EQ(now.sa_handler, SIG_DFL) << signal;
        EXPECT_EQ(sigismember(&mask, signal), 0) << signal;
    }
}

}  // namespace
