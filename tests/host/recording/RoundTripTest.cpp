// A terminal is recorded and played back: the same answers, in this process, with the clock in the test's hand.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdlib.h>

#include <algorithm>

#include "FakeClock.h"
#include "FileContents.h"
#include "RandomScenario.h"
#include "Sandbox.h"
#include "TemporaryDirectory.h"
#include "cli/Locations.h"
#include "format/JsonFormat.h"
#include "format/ScenarioText.h"
#include "health/Recording.h"
#include "source/ChipLibrary.h"
#include "source/Session.h"

namespace {

using host::Command;
using testing::IsEmpty;
using testing::SizeIs;

constexpr const char* LOST_FAILURE =
    "a failure was over when the sensors were asked again; the recording does not have it";

// Time that passes when the test says so, the same for the provider, the chip library and the recorder.
class Time {
  public:
    Time() { set(); }
    ~Time() { fakeclock::useReal(); }
    Time(const Time&) = delete;
    Time& operator=(const Time&) = delete;

    std::chrono::milliseconds now() const { return m_now; }
    void pass(std::chrono::milliseconds time) {
        m_now += time;
        set();
    }
    // The time of day; the rounds' clock goes on.
    void setBack(std::chrono::milliseconds time) {
        m_setBack += time;
        set();
    }
    host::RoundTiming timing() {
        return {[this] { return host::RoundTiming::Clock::time_point(m_now); },
                [this](host::RoundTiming::Clock::duration time) {
                    pass(std::chrono::duration_cast<std::chrono::milliseconds>(time));
                },
                [this] { return std::chrono::system_clock::time_point(ofDay()); }};
    }

  private:
    std::chrono::milliseconds ofDay() const { return m_now - m_setBack; }
    void set() const { fakeclock::set({ofDay().count() / 1000, ofDay().count() % 1000 * 1000}); }
    std::chrono::milliseconds m_now{1000000000};
    std::chrono::milliseconds m_setBack{0};
};

// A terminal that plays a scenario file, with its provider.
class Played {
  public:
    explicit Played(const std::string& file) : m_chip(chosen(file)), m_session(PROVIDER, "SensorProvider") {}
    host::Source& source() { return m_session; }

  private:
    static host::ChipChoice chosen(const std::string& file) {
        setenv("ZELCHIP_SCENARIO", file.c_str(), 1);
        return {CHIP, "", true};
    }
    host::ChipLibrary m_chip;
    host::Session m_session;
};

std::string jsonOf(Command command, const std::string& className, const broker::Reply& reply) {
    return host::jsonText({command, "root/cimv2", className, reply}, host::JsonLayout::Indented);
}

// The answers to every reading request.
std::vector<std::string> answersOf(host::Source& source) {
    std::vector<std::string> answers;
    for (const char* className : {host::SENSOR_CLASS, host::EVENT_LOG_CLASS}) {
        const broker::ObjectPath classPath{"", "root/cimv2", className, {}};
        const broker::Reply names = source.enumerateInstanceNames(classPath);
        answers.push_back(jsonOf(Command::Names, className, names));
        answers.push_back(jsonOf(Command::Instances, className, source.enumerateInstances(classPath)));
        for (const broker::ObjectPath& path : names.paths) {
            answers.push_back(jsonOf(Command::Get, className, source.getInstance(path)));
        }
    }
    return answers;
}

class RoundTripTest : public testing::Test {
  protected:
    void SetUp() override { REQUIRE_SANDBOX(); }

    static host::Recording record(host::Source& source, Time& time, unsigned rounds) {
        host::Recorder recorder(source, "root/cimv2", time.timing());
        for (unsigned i = 0; i < rounds; ++i) {
            if (i > 0) time.pass(std::chrono::milliseconds(1000));
            recorder.round();
        }
        return recorder.recording();
    }

    // Each round begins at its time, also where the one before took longer or shorter.
    static host::Recording recordAt(const std::vector<std::chrono::milliseconds>& times, host::Source& source,
                                    Time& time) {
        host::Recorder recorder(source, "root/cimv2", time.timing());
        const std::chrono::milliseconds start = time.now();
        for (const std::chrono::milliseconds each : times) {
            time.pass(start + each - time.now());
            recorder.round();
        }
        return recorder.recording();
    }

    std::string written(const host::Recording& recording) const {
        const host::ScenarioText text = host::scenarioText(recording, {"A test's.", false});
        EXPECT_THAT(text.losses, IsEmpty());
        return m_directory.write("recorded.toml", text.text);
    }

    // Of a file's terminal: its answers, and its recording of one round, at one moment.
    void expectSameAnswers(const std::string& file) const {
        std::vector<std::string> before;
        std::string recorded;
        {
            Time time;
            Played played(file);
            before = answersOf(played.source());
            recorded = written(record(played.source(), time, 1));
        }
        const Time time;
        Played played(recorded);
        EXPECT_EQ(answersOf(played.source()), before) << contentsOf(recorded);
    }

    // Recorded while it is played back, a recording is the same again, step by step, and loses nothing. Gives what was
    // lost of the file's terminal.
    std::vector<std::string> expectSameOverTime(const std::string& file, unsigned rounds) const {
        host::Recording recording;
        {
            Time time;
            Played played(file);
            recording = record(played.source(), time, rounds);
        }
        const host::ScenarioText first = host::scenarioText(recording, {"A test's.", false});
        Time time;
        Played played(m_directory.write("first.toml", first.text));
        EXPECT_EQ(contentsOf(written(recordAt(recording.times, played.source(), time))), first.text);
        return first.losses;
    }

    // Asked at each second, a terminal without failures answers the same when its recording is played.
    void expectSameAnswersAtEachStep(const std::string& file) const {
        constexpr unsigned rounds = 5;
        const std::vector<std::vector<std::string>> before = answersAtEachStep(file, rounds);
        std::string recorded;
        {
            Time time;
            Played played(file);
            recorded = written(record(played.source(), time, rounds));
        }
        EXPECT_EQ(answersAtEachStep(recorded, rounds), before) << contentsOf(recorded);
    }
    static std::vector<std::vector<std::string>> answersAtEachStep(const std::string& file, unsigned rounds) {
        Time time;
        Played played(file);
        std::vector<std::vector<std::string>> answers;
        for (unsigned i = 0; i < rounds; ++i) {
            if (i > 0) time.pass(std::chrono::milliseconds(1000));
            answers.push_back(answersOf(played.source()));
        }
        return answers;
    }

    TemporaryDirectory m_directory;
};

class ShippedRoundTripTest : public RoundTripTest, public testing::WithParamInterface<std::string> {};

TEST_P(ShippedRoundTripTest, EveryAnswerIsTheSame) {
    expectSameAnswers(SCENARIOS "/" + GetParam() + ".toml");
}

TEST_P(ShippedRoundTripTest, ReadingsComeAtTheSameSteps) {
    const std::string file = SCENARIOS "/" + GetParam() + ".toml";
    EXPECT_THAT(expectSameOverTime(file, GetParam() == "thousand-sensors" ? 2 : 12), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Scenarios, ShippedRoundTripTest, testing::ValuesIn(host::scenarioNames(SCENARIOS)),
                         [](const testing::TestParamInfo<std::string>& scenario) {
                             std::string name = scenario.param;
                             std::replace(name.begin(), name.end(), '-', '_');
                             return name;
                         });

TEST_F(RoundTripTest, ClockThatIsSetBackHoldsNoReadingUp) {
    Time time;
    Played played(
        m_directory.write("moving.toml",
                          "[[sensor]]\nhandle = 1\nname = \"A\"\n"
                          "reading = { kind = \"series\", values = [1, 2, 3, 4, 5, 6, 7], step-ms = 1000 }\n"));
    host::Recorder recorder(played.source(), "root/cimv2", time.timing());
    for (int round = 0; round < 6; ++round) {
        if (round > 0) time.pass(std::chrono::milliseconds(1000));
        if (round == 3) time.setBack(std::chrono::hours(1));
        recorder.round();
    }
    const host::Recording recording = recorder.recording();
    EXPECT_THAT(recording.losses, IsEmpty());
    ASSERT_THAT(recording.sensors, SizeIs(1));
    for (std::size_t i = 0; i < 6; ++i) EXPECT_EQ(recording.times.at(i).count(), 1000 * static_cast<long>(i));
    // The seconds since 1970, and those an hour earlier.
    std::vector<host::Number> expected;
    for (const int second : {1000000, 1000001, 1000002, 996403, 996404, 996405}) expected.emplace_back(second % 7 + 1);
    EXPECT_EQ(recording.sensors[0].readings, expected);
}

TEST_F(RoundTripTest, EveryAnswerOfAThousandRandomTerminalsIsTheSame) {
    for (unsigned seed = 1; seed <= 1000 && !HasFailure(); ++seed) {
        SCOPED_TRACE(seed);
        expectSameAnswers(m_directory.write("random.toml", randomScenario(seed)));
    }
}

TEST_F(RoundTripTest, ReadingsOfRandomTerminalsComeAtTheSameSteps) {
    for (unsigned seed = 1; seed <= 100 && !HasFailure(); ++seed) {
        SCOPED_TRACE(seed);
        const std::string scenario = randomScenario(seed);
        const std::vector<std::string> losses = expectSameOverTime(m_directory.write("random.toml", scenario), 12);
        // A round asks twice after a failure. One that lasts longer is in the recording, any other is named.
        const bool isShort = scenario.find("\ncalls = 1\n") != std::string::npos;
        const bool isLong = !isShort && scenario.find("\ncalls = ") != std::string::npos;
        EXPECT_EQ(losses, isShort ? std::vector<std::string>{LOST_FAILURE} : std::vector<std::string>{});
        EXPECT_EQ(contentsOf(m_directory.path("first.toml")).find("[[fault]]") != std::string::npos, isLong);
    }
}

TEST_F(RoundTripTest, EveryAnswerIsTheSameAtEachStep) {
    expectSameAnswersAtEachStep(SCENARIOS "/healthy.toml");
    expectSameAnswersAtEachStep(SCENARIOS "/overheating.toml");
    for (unsigned seed = 1; seed <= 100 && !HasFailure(); ++seed) {
        SCOPED_TRACE(seed);
        const std::string scenario = randomScenario(seed);
        expectSameAnswersAtEachStep(m_directory.write("random.toml", scenario.substr(0, scenario.find("[[fault]]"))));
    }
}

}  // namespace
