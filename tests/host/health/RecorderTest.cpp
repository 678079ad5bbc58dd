// What a recording holds of a terminal that changes while it is recorded, and what it names as lost.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <map>
#include <sstream>
#include <utility>

#include "FakeSource.h"
#include "Instances.h"
#include "format/ScenarioText.h"
#include "health/Recording.h"

namespace {

using broker::ObjectPath;
using broker::Reply;
using broker::Value;
using host::Number;
using host::Recording;
using std::chrono::milliseconds;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

class RecorderTest : public testing::Test {
  protected:
    RecorderTest() {
        m_source.names = [this](const ObjectPath& /*path*/) {
            Reply reply = replyOf(m_status, {});
            if (m_status != CMPI_RC_OK) return reply;
            for (const auto& [name, reading] : m_readings) reply.paths.push_back(sensorOf(name, 0, 0, 0).path);
            return reply;
        };
        m_source.instances = [this](const ObjectPath& path) {
            return path.className == host::SENSOR_CLASS ? sensors() : eventLog();
        };
        m_source.get = [this](const ObjectPath& path) {
            const std::string& name = path.keys.at(0).value.text;
            const Number reading = m_readings.at(name);
            // As the provider: soon after a failure the reading from before.
            if (!reading && m_now - m_failed[name] >= milliseconds(1000)) {
                m_failed[name] = m_now;
                return replyOf(CMPI_RC_ERR_FAILED, {});
            }
            return replyOf(CMPI_RC_OK, {sensorOf(name, static_cast<int>(reading.value_or(0)), 2, 0)});
        };
    }

    Reply sensors() {
        Reply reply;
        if (std::exchange(m_failsOnce, false)) return replyOf(CMPI_RC_ERR_FAILED, {});
        for (const auto& [name, reading] : m_readings) {
            if (!reading) return replyOf(CMPI_RC_ERR_FAILED, {});
            reply.instances.push_back(sensorOf(name, static_cast<int>(*reading), 2, 0));
        }
        return reply;
    }
    Reply eventLog() const {
        if (!m_line) return replyOf(CMPI_RC_ERR_FAILED, {});
        return replyOf(CMPI_RC_OK, {instanceOf("TQS_SystemEventLog", "Log",
                                               {{"LogLines", Value::ofArray({Value::ofText(*m_line)}, CMPI_chars)}})});
    }

    void round() {
        m_recorder.round();
        m_now += milliseconds(1000);
    }
    host::ScenarioText text(bool isRedacted = false) const {
        return host::scenarioText(m_recorder.recording(), {"A test's.", isRedacted});
    }

    std::map<std::string, Number> m_readings{{"A(00000001)", 1}};
    std::map<std::string, milliseconds> m_failed;
    CMPIrc m_status = CMPI_RC_OK;
    bool m_failsOnce = false;  // the next enumeration of sensors
    std::optional<std::string> m_line = "line";
    milliseconds m_now{5000};
    milliseconds m_setBack{0};  // by so much the time of day is late
    FakeSource m_source;
    host::Recorder m_recorder{
        m_source,
        "root/cimv2",
        {[this] { return host::RoundTiming::Clock::time_point(m_now); },
         [this](host::RoundTiming::Clock::duration time) { m_now += std::chrono::duration_cast<milliseconds>(time); },
         [this] { return std::chrono::system_clock::time_point(m_now - m_setBack); }}};
};

TEST_F(RecorderTest, ReadingsStandAtTheirTimes) {
    round();
    m_readings["A(00000001)"] = 7;
    m_now += milliseconds(34);
    round();
    const Recording recording = m_recorder.recording();
    EXPECT_THAT(recording.times, ElementsAre(milliseconds(0), milliseconds(1034)));
    ASSERT_THAT(recording.sensors, SizeIs(1));
    EXPECT_THAT(recording.sensors[0].readings, ElementsAre(Number(1), Number(7)));
    EXPECT_THAT(text().text, HasSubstr("reading = { kind = \"recorded\", values = [\n    1, 7] }\n"));
    EXPECT_THAT(text().losses, IsEmpty());
}

TEST_F(RecorderTest, HourOfFourteenSensorsStaysUnderAMegabyte) {
    constexpr int seconds = 3600;
    constexpr int lowest = std::numeric_limits<int>::min();
    Recording recording;
    for (int i = 0; i < seconds; ++i) recording.times.emplace_back(1000 * i);
    recording.eventLogFailures.resize(seconds);
    for (int i = 10; i < 24; ++i) {
        const std::string name = "A(000000" + std::to_string(i) + ')';
        recording.sensors.push_back({name, sensorOf(name, 0, 2, 0), {}});
        for (int second = 0; second < seconds; ++second) {
            recording.sensors.back().readings.emplace_back(lowest + second);
        }
    }
    EXPECT_LT(host::scenarioText(recording, {"A test's.", false}).text.size(), 1000000U);
}

TEST_F(RecorderTest, UnsignedNumbersAreThoseOfTheChip) {
    Recording recording;
    recording.times.emplace_back(0);
    recording.eventLogFailures.push_back(false);
    broker::Instance sensor = sensorOf("A(00000001)", 0, 2, 0);
    sensor.properties.push_back({"Hysteresis", Value::ofUnsigned(4294967295U, CMPI_uint32)});
    recording.sensors.push_back({"A(00000001)", sensor, {Number(0)}});
    EXPECT_THAT(host::scenarioText(recording, {"A test's.", false}).text, HasSubstr("\nhysteresis = -1\n"));
}

TEST_F(RecorderTest, RoundsWithinAMillisecondHaveTimesOfTheirOwn) {
    for (int i = 0; i < 3; ++i) m_recorder.round();
    EXPECT_THAT(m_recorder.recording().times, ElementsAre(milliseconds(0), milliseconds(1), milliseconds(2)));
}

TEST_F(RecorderTest, ClockThatIsSetBackChangesNoTimeAndTheSourceReadsAnew) {
    int restarts = 0;
    m_source.restarted = [&restarts] { return ++restarts > 0; };
    round();
    m_setBack = std::chrono::hours(1);
    m_readings["A(00000001)"] = 2;
    round();
    m_readings["A(00000001)"] = 3;
    round();
    EXPECT_THAT(m_recorder.recording().times, ElementsAre(milliseconds(0), milliseconds(1000), milliseconds(2000)));
    EXPECT_THAT(m_recorder.recording().sensors[0].readings, ElementsAre(Number(1), Number(2), Number(3)));
    EXPECT_EQ(restarts, 1);
}

TEST_F(RecorderTest, FailuresStandWhereTheyCame) {
    round();
    m_readings["A(00000001)"] = std::nullopt;
    round();
    round();
    m_readings["A(00000001)"] = 3;
    round();
    EXPECT_THAT(m_recorder.recording().sensors[0].readings,
                ElementsAre(Number(1), std::nullopt, std::nullopt, Number(3)));
    EXPECT_THAT(text().text, HasSubstr("values = [\n    1, 1, 1, 3] }"));
    EXPECT_THAT(text().text, HasSubstr("\n[[fault]]\noperation = \"read\"\nhandle = 0x00000001\nfrom-call = 2\n"));
}

TEST_F(RecorderTest, FailureThatIsOverWhenAskedAgainIsNamed) {
    round();
    m_failsOnce = true;
    round();
    EXPECT_THAT(m_recorder.recording().sensors[0].readings, ElementsAre(Number(1), Number(1)));
    EXPECT_THAT(m_recorder.recording().losses,
                ElementsAre("a failure was over when the sensors were asked again; the recording does not have it"));
}

TEST_F(RecorderTest, FailuresStandInTheOrderInWhichTheyCame) {
    m_readings = {{"A(00000001)", 1}, {"B(00000002)", 2}, {"C(00000003)", 3}};
    for (const char* name : {"B(00000002)", "C(00000003)", "A(00000001)"}) {
        round();
        m_readings[name] = std::nullopt;
    }
    m_line = std::nullopt;
    round();
    std::vector<std::string> failures;
    std::istringstream lines(text().text);
    for (std::string line; std::getline(lines, line);) {
        if (line != "[[fault]]") continue;
        std::getline(lines, line);
        if (line == "operation = \"read\"") std::getline(lines, line);
        failures.push_back(line);
    }
    EXPECT_THAT(failures, ElementsAre("handle = 0x00000002", "handle = 0x00000003", "handle = 0x00000001",
                                      "operation = \"event-log\""));
}

TEST_F(RecorderTest, ProviderThatDiesHalfWayLeavesItsSensorsFailing) {
    round();
    m_status = CMPI_RC_ERROR_SYSTEM;
    m_line = std::nullopt;
    round();
    const Recording recording = m_recorder.recording();
    EXPECT_EQ(recording.start.rc, CMPI_RC_OK);
    EXPECT_THAT(recording.sensors[0].readings, ElementsAre(Number(1), std::nullopt));
    EXPECT_THAT(recording.eventLogFailures, ElementsAre(false, true));
    EXPECT_EQ(m_recorder.counts().unread, 1U);
    EXPECT_THAT(recording.losses, ElementsAre("the names of the sensors could not be had for a time; played back, the "
                                              "sensors fail so long"));
    EXPECT_THAT(text().text, HasSubstr("operation = \"read\"\nhandle = 0x00000001\nfrom-call = 2\nfrom-ms = 1000\n"
                                       "status = 0x00010005\n"));
    EXPECT_THAT(text().text, HasSubstr("operation = \"event-log\"\nfrom-ms = 1000\nstatus = 0x00010005\n"));
}

TEST_F(RecorderTest, SensorThatComesLaterIsThereFromTheStartAndNamed) {
    round();
    m_readings["B(00000002)"] = 4;
    round();
    const Recording recording = m_recorder.recording();
    EXPECT_THAT(recording.sensors[1].readings, ElementsAre(std::nullopt, Number(4)));
    EXPECT_THAT(recording.losses, ElementsAre("B(00000002) came later; played back, it is there from the start"));
}

TEST_F(RecorderTest, SensorThatGoesFailsFromThenOnAndIsNamed) {
    m_readings["B(00000002)"] = 4;
    round();
    m_readings.erase("B(00000002)");
    round();
    const Recording recording = m_recorder.recording();
    EXPECT_THAT(recording.sensors[1].readings, ElementsAre(Number(4), std::nullopt));
    EXPECT_THAT(recording.losses, ElementsAre("B(00000002) went; played back, it is there and fails"));
}

TEST_F(RecorderTest, ProviderThatStartsLaterIsNamed) {
    m_status = CMPI_RC_ERR_METHOD_NOT_AVAILABLE;
    m_line = std::nullopt;
    round();
    EXPECT_EQ(m_recorder.recording().start.rc, CMPI_RC_ERR_METHOD_NOT_AVAILABLE);
    EXPECT_EQ(text().text, "# A test's.\n\n[[fault]]\noperation = \"initialise\"\nstatus = 0x00010002\n");
    m_status = CMPI_RC_OK;
    round();
    const Recording recording = m_recorder.recording();
    EXPECT_EQ(recording.start.rc, CMPI_RC_OK);
    EXPECT_THAT(recording.losses,
                ElementsAre("the provider did not answer at first; played back, its sensors fail so long"));
}

TEST_F(RecorderTest, TerminalWithoutSensorsHasNoFault) {
    m_status = CMPI_RC_ERR_FAILED;
    round();
    EXPECT_EQ(m_recorder.recording().start.rc, CMPI_RC_ERR_FAILED);
    EXPECT_EQ(text().text, "# A test's.\n\n[event-log]\nlines = [\n    \"line\",\n]\n");
}

TEST_F(RecorderTest, EventLogIsTheLastOneAndItsChangeIsNamed) {
    round();
    m_line = "another";
    round();
    EXPECT_THAT(text().text, HasSubstr("lines = [\n    \"another\",\n]\n"));
    EXPECT_THAT(text().losses, ElementsAre("the event log changed; played back, it is the last one from the start"));
}

TEST_F(RecorderTest, DrivesSensorIsNamed) {
    m_readings = {{"SSD1 Temperature(00000001)", 30}};
    round();
    EXPECT_THAT(text().text, HasSubstr("handle = 0x00000001\nname = \"SSD1 Temperature\"\n"));
    EXPECT_THAT(text().losses, ElementsAre("SSD1 Temperature(00000001) is a drive's; played back, it is the chip's"));
}

TEST_F(RecorderTest, NameWithoutAHandleGetsOne) {
    m_readings = {{"A(00000001)", 1}, {"Plain", 2}, {"Z(00000002)", 4}, {"a(0000000G)", 3}};
    round();
    EXPECT_THAT(text().text, HasSubstr("handle = 0x00000003\nname = \"Plain\"\n"));
    EXPECT_THAT(text().text, HasSubstr("handle = 0x00000002\nname = \"Z\"\n"));
    EXPECT_THAT(text().text, HasSubstr("handle = 0x00000004\nname = \"a(0000000G)\"\n"));
    EXPECT_THAT(text().losses, SizeIs(2));
}

TEST_F(RecorderTest, RedactedNamesAreTheSameWordForTheSameText) {
    m_readings = {{"A(00000001)", 1}, {"A(00000002)", 2}, {"B(00000003)", 3}};
    m_line = "12 2026-02-01T00:00 0170 1234567";
    round();
    const std::string redacted = text(true).text;
    EXPECT_THAT(redacted, HasSubstr("handle = 0x00000001\nname = \"Sensor 1\"\n"));
    EXPECT_THAT(redacted, HasSubstr("handle = 0x00000002\nname = \"Sensor 1\"\n"));
    EXPECT_THAT(redacted, HasSubstr("handle = 0x00000003\nname = \"Sensor 2\"\n"));
    EXPECT_THAT(redacted, HasSubstr("    \"12 2026-02-01T00:00 Text 1\",\n"));
}

TEST_F(RecorderTest, BytesThatAreNoUtf8AreWrittenOutAndNamed) {
    m_readings = {{"\xe9t\x01\"\\\x7f(00000001)", 1}};
    m_line = "fine \xc3\xa9";
    round();
    EXPECT_THAT(text().text, HasSubstr("name = \"\\\\xe9t\\\\x01\\\"\\\\\\\\x7f\"\n"));
    EXPECT_THAT(text().text, HasSubstr("    \"fine \xc3\xa9\",\n"));
    EXPECT_THAT(text().losses, SizeIs(1));
}

TEST_F(RecorderTest, ControlCharactersAreEscapes) {
    m_readings = {{"\x01\"\\\x7f\n(00000001)", 1}};
    round();
    EXPECT_THAT(text().text, HasSubstr("name = \"\\u0001\\\"\\\\\\u007f\\u000a\"\n"));
    EXPECT_THAT(text().losses, IsEmpty());
}

}  // namespace
