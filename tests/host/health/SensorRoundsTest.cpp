#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "FakeSource.h"
#include "Instances.h"
#include "health/SensorRounds.h"

namespace {

using broker::ObjectPath;
using broker::Reply;
using broker::Value;
using host::Round;
using host::RoundTiming;
using host::Sensor;
using host::SensorRounds;
using std::chrono::milliseconds;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* DRIVE = "SSD1 Temperature(00000001)";

Reply failure(CMPIrc rc) {
    Reply reply;
    reply.status.rc = rc;
    return reply;
}

// A terminal of some sensors, of which each may fail; the requests are noted. The clock moves only where the rounds
// wait and where a test says so.
class SensorRoundsTest : public testing::Test {
  protected:
    SensorRoundsTest() {
        m_source.names = [this](const ObjectPath& path) {
            EXPECT_EQ(path.nameSpace + ':' + path.className, "root/cimv2:TQS_NumericSensor");
            m_asked.push_back("names");
            if (m_isDown) return failure(CMPI_RC_ERR_METHOD_NOT_AVAILABLE);
            Reply reply;
            for (const std::string& name : m_names) reply.paths.push_back(sensorOf(name, 0, 0, 0).path);
            return reply;
        };
        m_source.instances = [this](const ObjectPath& /*path*/) {
            m_asked.push_back("instances");
            Reply reply;
            for (const std::string& name : m_names) {
                if (m_failing.count(name) != 0) reply.status.rc = m_failing[name];
                if (m_failing.count(name) != 0) break;
                reply.instances.push_back(sensorOf(name, ++m_reading, 2, 0));
            }
            return reply;
        };
        m_source.get = [this](const ObjectPath& path) {
            const std::string name = path.keys.at(0).value.text;
            m_asked.push_back(name);
            if (m_failing.count(name) != 0) return failure(m_failing[name]);
            return replyOf(CMPI_RC_OK, {sensorOf(name, ++m_reading, 2, 0)});
        };
        m_source.restarted = [this] {
            m_asked.push_back("restart");
            if (m_isCuredByRestart) m_isDown = false;
            return m_canRestart;
        };
    }

    static std::vector<std::string> statesOf(const Round& round) {
        std::vector<std::string> states;
        for (const Sensor& sensor : round.sensors) states.push_back(sensor.name + ' ' + sensor.stateWord());
        return states;
    }

    std::vector<std::string> takeAsked() { return std::exchange(m_asked, {}); }

    using TimeOfDay = std::chrono::system_clock::time_point;
    RoundTiming timing() {
        return {[this] { return m_now; },
                [this](RoundTiming::Clock::duration time) {
                    m_asked.push_back("wait " + std::to_string(time / milliseconds(1)));
                    m_now += time;
                },
                [this] { return TimeOfDay(m_now.time_since_epoch() + m_offset); }};
    }

    FakeSource m_source;
    std::vector<std::string> m_names{"a", "b", "c"};
    std::map<std::string, CMPIrc> m_failing;
    bool m_isDown = false;
    bool m_canRestart = true;
    bool m_isCuredByRestart = true;
    int m_reading = 0;
    std::vector<std::string> m_asked;
    RoundTiming::Clock::time_point m_now;
    milliseconds m_offset{0};  // of the time of day
    SensorRounds m_rounds{m_source, "root/cimv2", timing()};
};

TEST_F(SensorRoundsTest, AsksForNamesAndForAllInstancesAtOnce) {
    const Round round = m_rounds.next();
    EXPECT_THAT(takeAsked(), ElementsAre("names", "instances"));
    EXPECT_THAT(statesOf(round), ElementsAre("a ok", "b ok", "c ok"));
    EXPECT_EQ(round.status.rc, CMPI_RC_OK);
    EXPECT_EQ(host::firstFailure(round), std::nullopt);
}

TEST_F(SensorRoundsTest, SensorThatFailsCostsItselfAlone) {
    m_failing["b"] = CMPI_RC_ERR_FAILED;
    const Round round = m_rounds.next();
    EXPECT_THAT(takeAsked(), ElementsAre("names", "instances", "wait 1100", "a", "b", "c"));
    EXPECT_THAT(statesOf(round), ElementsAre("a ok", "b no reading", "c ok"));
    EXPECT_EQ(round.sensors[1].reason, "the provider answered 1 CMPI_RC_ERR_FAILED");
    EXPECT_EQ(round.status.rc, CMPI_RC_OK);
    EXPECT_EQ(host::firstFailure(round).value().rc, CMPI_RC_ERR_FAILED);
}

// A provider that has just failed answers with the value from before.
TEST_F(SensorRoundsTest, FailureStandsForASecondWithoutBeingAskedAgain) {
    m_failing["b"] = CMPI_RC_ERR_FAILED;
    m_rounds.next();
    m_failing.clear();
    takeAsked();
    m_now += milliseconds(1099);
    EXPECT_THAT(statesOf(m_rounds.next()), ElementsAre("a ok", "b no reading", "c ok"));
    EXPECT_THAT(takeAsked(), ElementsAre("names", "a", "c"));
    m_now += milliseconds(1);
    EXPECT_THAT(statesOf(m_rounds.next()), ElementsAre("a ok", "b ok", "c ok"));
    EXPECT_THAT(takeAsked(), ElementsAre("names", "a", "b", "c"));
    m_rounds.next();
    EXPECT_THAT(takeAsked(), ElementsAre("names", "instances"));
}

TEST_F(SensorRoundsTest, FailureOfAnotherKindIsNotWaitedFor) {
    m_failing["b"] = CMPI_RC_ERR_ACCESS_DENIED;
    EXPECT_THAT(statesOf(m_rounds.next()), ElementsAre("a ok", "b no reading", "c ok"));
    EXPECT_THAT(takeAsked(), ElementsAre("names", "instances", "a", "b", "c"));
}

// An enumeration, even one that succeeds, would let the provider read them through the chip.
TEST_F(SensorRoundsTest, WhereThereAreDrivesEachSensorIsAskedByItself) {
    m_names = {"a", DRIVE};
    EXPECT_THAT(statesOf(m_rounds.next()), ElementsAre("a ok", std::string(DRIVE) + " ok"));
    EXPECT_THAT(takeAsked(), ElementsAre("names", "a", DRIVE));
}

TEST_F(SensorRoundsTest, InstancesOfOtherNamesAreNotTakenForTheseSensors) {
    m_source.instances = [this](const ObjectPath& /*path*/) {
        m_asked.push_back("instances");
        return replyOf(CMPI_RC_OK, {sensorOf("a", 1, 2, 0), sensorOf("x", 1, 2, 0), sensorOf("c", 1, 2, 0)});
    };
    EXPECT_THAT(statesOf(m_rounds.next()), ElementsAre("a ok", "b ok", "c ok"));
    EXPECT_THAT(takeAsked(), ElementsAre("names", "instances", "a", "b", "c"));
}

TEST_F(SensorRoundsTest, Status16RestartsTheSource) {
    m_isDown = true;
    EXPECT_THAT(statesOf(m_rounds.next()), ElementsAre("a ok", "b ok", "c ok"));
    EXPECT_THAT(takeAsked(), ElementsAre("names", "restart", "names", "instances"));
}

TEST_F(SensorRoundsTest, SourceIsRestartedOnceInARoundAtMost) {
    m_failing = {{"a", CMPI_RC_ERR_METHOD_NOT_AVAILABLE}, {"b", CMPI_RC_ERR_METHOD_NOT_AVAILABLE}};
    m_isDown = true;
    EXPECT_THAT(statesOf(m_rounds.next()), ElementsAre("a no reading", "b no reading", "c ok"));
    EXPECT_THAT(takeAsked(), ElementsAre("names", "restart", "names", "instances", "a", "b", "c"));
    m_isDown = true;
    m_isCuredByRestart = false;
    const Round round = m_rounds.next();
    EXPECT_THAT(takeAsked(), ElementsAre("names", "restart", "names"));
    EXPECT_THAT(round.sensors, IsEmpty());
    EXPECT_EQ(host::firstFailure(round).value().rc, CMPI_RC_ERR_METHOD_NOT_AVAILABLE);
}

// The provider would take no reading until the clock has caught up.
TEST_F(SensorRoundsTest, ClockThatIsSetBackRestartsTheSourceOnce) {
    m_rounds.next();
    m_now += milliseconds(2000);
    m_rounds.next();
    takeAsked();
    m_offset -= milliseconds(501);
    m_now += milliseconds(2000);
    m_rounds.next();
    EXPECT_THAT(takeAsked(), ElementsAre("restart", "names", "instances"));
    m_now += milliseconds(2000);
    m_rounds.next();
    EXPECT_THAT(takeAsked(), ElementsAre("names", "instances"));
}

TEST_F(SensorRoundsTest, RestartForTheClockIsTheOnlyOneInItsRound) {
    m_rounds.next();
    m_isDown = true;
    m_isCuredByRestart = false;
    m_offset -= milliseconds(501);
    takeAsked();
    EXPECT_EQ(m_rounds.next().status.rc, CMPI_RC_ERR_METHOD_NOT_AVAILABLE);
    EXPECT_THAT(takeAsked(), ElementsAre("restart", "names"));
}

TEST_F(SensorRoundsTest, ClockThatIsSetForwardOrDriftsRestartsNothing) {
    for (const int change : {500, 3'600'000, -500, 0}) {
        m_offset += milliseconds(change);
        m_now += milliseconds(2000);
        m_rounds.next();
        EXPECT_THAT(takeAsked(), ElementsAre("names", "instances")) << change;
    }
}

TEST_F(SensorRoundsTest, SourceThatCannotBeRestartedIsNotAskedAgain) {
    m_isDown = true;
    m_canRestart = false;
    m_isCuredByRestart = false;
    EXPECT_EQ(m_rounds.next().status.rc, CMPI_RC_ERR_METHOD_NOT_AVAILABLE);
    EXPECT_THAT(takeAsked(), ElementsAre("names", "restart"));
}

TEST_F(SensorRoundsTest, FewSensorsAreAskedForByThemselvesInTheOrderOfTheChoice) {
    const auto one = [](const std::vector<std::string>& names) {
        EXPECT_THAT(names, ElementsAre("a", "b", "c"));
        return std::vector<std::size_t>{1};
    };
    EXPECT_THAT(statesOf(m_rounds.next(one)), ElementsAre("b ok"));
    EXPECT_THAT(takeAsked(), ElementsAre("names", "b"));
    const auto most = [](const std::vector<std::string>&) { return std::vector<std::size_t>{2, 0}; };
    EXPECT_THAT(statesOf(m_rounds.next(most)), ElementsAre("c ok", "a ok"));
    EXPECT_THAT(takeAsked(), ElementsAre("names", "instances"));
}

TEST_F(SensorRoundsTest, EmptyAnswerIsNoReading) {
    m_names = {"a", DRIVE};
    m_source.get = [](const ObjectPath& /*path*/) { return Reply{}; };
    const Round round = m_rounds.next();
    EXPECT_THAT(statesOf(round), ElementsAre("a no reading", std::string(DRIVE) + " no reading"));
    EXPECT_EQ(round.sensors[0].reason, "the provider's answer is empty");
}

}  // namespace
