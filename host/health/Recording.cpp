#include "health/Recording.h"

#include <algorithm>
#include <map>
#include <utility>

#include "source/Answer.h"

namespace host {
namespace {

std::optional<broker::Instance> onlyInstance(const broker::Reply& reply) {
    if (reply.status.rc != CMPI_RC_OK || reply.instances.empty()) return std::nullopt;
    return reply.instances.front();
}

}  // namespace

struct Recorder::Answers {
    Time time;
    Round round;
    std::map<std::string, std::optional<broker::Instance>> newcomers;  // by the names of sensors not known yet
    std::optional<broker::Instance> eventLog;
};

Recorder::Recorder(Source& source, std::string nameSpace, RoundTiming timing)
    : m_source(source),
      m_nameSpace(std::move(nameSpace)),
      m_timing(std::move(timing)),
      m_rounds(source, m_nameSpace,
               {m_timing.now,
                [this](RoundTiming::Clock::duration time) {
                    m_hasAskedAgain = true;
                    m_timing.wait(time);
                },
                m_timing.timeOfDay}) {}

void Recorder::round() {
    Answers answers;
    answers.time = m_timing.now();
    m_hasAskedAgain = false;
    answers.round = m_rounds.next();
    describeNewcomers(answers);
    answers.eventLog = onlyInstance(m_source.enumerateInstances({"", m_nameSpace, EVENT_LOG_CLASS, {}}));
    const std::lock_guard<std::mutex> lock(m_mutex);
    add(answers);
}

// Asked for again within a second, the provider gives what it read last, also where the sensor fails.
void Recorder::describeNewcomers(Answers& answers) {
    for (const Sensor& sensor : answers.round.sensors) {
        if (m_places.count(sensor.name) == 0) answers.newcomers[sensor.name];
    }
    if (answers.newcomers.empty()) return;
    broker::Reply all = m_source.enumerateInstances({"", m_nameSpace, SENSOR_CLASS, {}});
    for (broker::Instance& instance : all.instances) {
        const broker::Value* name = instance.findProperty("Name");
        const auto newcomer = name == nullptr ? answers.newcomers.end() : answers.newcomers.find(name->text);
        if (newcomer != answers.newcomers.end()) newcomer->second = std::move(instance);
    }
    for (auto& [name, instance] : answers.newcomers) {
        const broker::ObjectPath path{"", m_nameSpace, SENSOR_CLASS, {{"Name", broker::Value::ofText(name)}}};
        if (!instance) instance = onlyInstance(m_source.getInstance(path));
    }
}

Recorder::Counts Recorder::counts() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    const std::vector<RecordedSensor>& sensors = m_recording.sensors;
    const auto unread = std::count_if(sensors.begin(), sensors.end(),
                                      [](const RecordedSensor& sensor) { return !sensor.readings.back(); });
    return {m_recording.times.size(), sensors.size(), static_cast<std::size_t>(unread)};
}

Recording Recorder::recording() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_recording;
}

void Recorder::add(const Answers& answers) {
    addTime(answers.time);
    addReadings(answers);
    addEventLog(answers);
}

void Recorder::addTime(Time time) {
    if (!m_first) m_first = time;
    const auto sinceFirst = std::chrono::duration_cast<std::chrono::milliseconds>(time - *m_first);
    std::vector<std::chrono::milliseconds>& times = m_recording.times;
    // The times of a recording differ, also where two rounds began within a millisecond.
    times.push_back(times.empty() ? sinceFirst : std::max(sinceFirst, times.back() + std::chrono::milliseconds(1)));
}

void Recorder::addReadings(const Answers& answers) {
    const std::size_t rounds = m_recording.times.size();
    const bool isStarted = answers.round.status.rc == CMPI_RC_OK || !answers.round.sensors.empty();
    if (isStarted && !m_wasStarted && rounds > 1) {
        lose("the provider did not answer at first; played back, its sensors fail so long");
    }
    if (!isStarted && m_wasStarted) {
        lose("the names of the sensors could not be had for a time; played back, the sensors fail so long");
    }
    if (m_hasAskedAgain && !firstFailure(answers.round)) {
        lose("a failure was over when the sensors were asked again; the recording does not have it");
    }
    for (const auto& [name, instance] : answers.newcomers) {
        if (!instance) lose(name + " gave no description; it is left out");
        if (instance && m_wasStarted) lose(name + " came later; played back, it is there from the start");
    }
    m_wasStarted |= isStarted;
    m_recording.start = m_wasStarted ? broker::Status() : answers.round.status;
    for (const Sensor& sensor : answers.round.sensors) {
        const auto newcomer = answers.newcomers.find(sensor.name);
        if (newcomer != answers.newcomers.end() && newcomer->second) {
            m_places.emplace(sensor.name, m_recording.sensors.size());
            m_recording.sensors.push_back({sensor.name, *newcomer->second, std::vector<Number>(rounds - 1)});
        }
        const auto place = m_places.find(sensor.name);
        if (place == m_places.end()) continue;
        m_recording.sensors[place->second].readings.push_back(sensor.failure ? std::nullopt : sensor.rawReading);
        if (sensor.failure && sensor.failure->rc != CMPI_RC_ERR_FAILED) {
            lose(sensor.name + " failed with status " + statusText(*sensor.failure) + "; played back, it is 1");
        }
    }
    for (RecordedSensor& sensor : m_recording.sensors) {
        if (sensor.readings.size() < rounds && answers.round.status.rc == CMPI_RC_OK) {
            lose(sensor.name + " went; played back, it is there and fails");
        }
        sensor.readings.resize(rounds);
    }
}

void Recorder::addEventLog(const Answers& answers) {
    m_recording.eventLogFailures.push_back(!answers.eventLog);
    if (!answers.eventLog) return;
    if (m_recording.eventLog && !(*m_recording.eventLog == *answers.eventLog)) {
        lose("the event log changed; played back, it is the last one from the start");
    }
    m_recording.eventLog = answers.eventLog;
}

void Recorder::lose(const std::string& sentence) {
    std::vector<std::string>& losses = m_recording.losses;
    if (std::find(losses.begin(), losses.end(), sentence) == losses.end()) losses.push_back(sentence);
}

}  // namespace host
