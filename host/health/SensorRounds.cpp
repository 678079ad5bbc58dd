#include "health/SensorRounds.h"

#include <algorithm>
#include <numeric>
#include <optional>
#include <thread>
#include <utility>

#include "health/SensorNames.h"
#include "source/Answer.h"

namespace host {
namespace {

using broker::ObjectPath;
using broker::Reply;
using Clock = RoundTiming::Clock;

}  // namespace

// One round's requests.
class SensorRounds::Asking {
  public:
    Asking(SensorRounds& rounds, bool hasRestarted)
        : m_rounds(rounds), m_source(rounds.m_source), m_before(rounds.m_failures), m_hasRestarted(hasRestarted) {}

    Round round(const ChooseNames* choose) {
        m_names = ask([this] { return m_source.enumerateInstanceNames(m_rounds.m_classPath); });
        m_round.status = m_names.status;
        m_nameTexts = namesIn(m_names.paths);
        if (m_nameTexts.empty()) return std::move(m_round);
        std::vector<std::size_t> wanted(m_nameTexts.size());
        std::iota(wanted.begin(), wanted.end(), 0U);
        if (choose != nullptr) wanted = (*choose)(m_nameTexts);
        m_rounds.m_failures.clear();
        const bool isWorthAll = wanted.size() * 2 > m_nameTexts.size();
        const bool hasDrives = std::any_of(m_nameTexts.begin(), m_nameTexts.end(), isNameOfDriveSensor);
        if (!isWorthAll || hasDrives || !m_before.empty() || !takeAll(wanted)) takeEach(wanted);
        return std::move(m_round);
    }

  private:
    // After status 16 once more, from a source that has been restarted.
    template <typename Operation>
    Reply ask(Operation operation) {
        Reply reply = operation();
        if (reply.status.rc != CMPI_RC_ERR_METHOD_NOT_AVAILABLE || m_hasRestarted) return reply;
        m_hasRestarted = true;
        return m_source.restart() ? operation() : reply;
    }

    // False where the answer is not one instance for each name.
    bool takeAll(const std::vector<std::size_t>& wanted) {
        const Reply all = ask([this] { return m_source.enumerateInstances(m_rounds.m_classPath); });
        if (all.status.rc == CMPI_RC_ERR_FAILED) m_rounds.m_timing.wait(NEXT_READING);
        if (all.status.rc != CMPI_RC_OK || all.instances.size() != m_names.paths.size()) return false;
        for (const std::size_t place : wanted) m_round.sensors.push_back(Sensor::of(all.instances.at(place)));
        const auto isOther = [this, n = std::size_t{0}](std::size_t place) mutable {
            return m_round.sensors[n++].name != m_nameTexts[place];
        };
        if (std::none_of(wanted.begin(), wanted.end(), isOther)) return true;
        m_round.sensors.clear();
        return false;
    }

    void takeEach(const std::vector<std::size_t>& wanted) {
        for (const std::size_t place : wanted)
            m_round.sensors.push_back(single(m_nameTexts.at(place), m_names.paths[place]));
    }

    Sensor single(const std::string& name, const ObjectPath& path) {
        const auto before = m_before.find(name);
        if (before != m_before.end() && m_rounds.m_timing.now() - before->second.time < NEXT_READING) {
            m_rounds.m_failures.insert(*before);
            return before->second.sensor;
        }
        const Reply reply = ask([&] { return m_source.getInstance(path); });
        Sensor sensor = sensorIn(reply, name);
        if (sensor.failure) m_rounds.m_failures[name] = {m_rounds.m_timing.now(), sensor};
        return sensor;
    }

    SensorRounds& m_rounds;
    Source& m_source;
    const std::map<std::string, Failure> m_before;
    Reply m_names;
    std::vector<std::string> m_nameTexts;  // of m_names
    Round m_round;
    bool m_hasRestarted;
};

std::optional<broker::Status> firstFailure(const Round& round) {
    if (round.status.rc != CMPI_RC_OK) return round.status;
    for (const Sensor& sensor : round.sensors) {
        if (sensor.failure) return sensor.failure;
    }
    return std::nullopt;
}

Sensor sensorIn(const Reply& reply, const std::string& name) {
    if (reply.status.rc == CMPI_RC_OK && !reply.instances.empty()) return Sensor::of(reply.instances.front());
    if (reply.status.rc == CMPI_RC_OK) return Sensor::withoutReading(name, "the provider's answer is empty");
    Sensor sensor = Sensor::withoutReading(name, "the provider answered " + statusText(reply.status));
    sensor.failure = reply.status;
    return sensor;
}

RoundTiming realTiming() {
    return {Clock::now, [](Clock::duration time) { std::this_thread::sleep_for(time); },
            std::chrono::system_clock::now};
}

SensorRounds::SensorRounds(Source& source, const std::string& nameSpace, RoundTiming timing)
    : m_source(source), m_classPath{"", nameSpace, SENSOR_CLASS, {}}, m_timing(std::move(timing)) {}

Round SensorRounds::next() {
    return Asking(*this, hasRestartedAfterSetBack()).round(nullptr);
}

Round SensorRounds::next(const ChooseNames& choose) {
    return Asking(*this, hasRestartedAfterSetBack()).round(&choose);
}

bool SensorRounds::hasRestartedAfterSetBack() {
    // More than clocks drift from each other between two rounds, and less than a reading may be old anyway.
    constexpr std::chrono::milliseconds tolerance(500);
    const Moment now{m_timing.now(), m_timing.timeOfDay()};
    const bool isSetBack =
        m_lastRound && (now.steady - m_lastRound->steady) - (now.ofDay - m_lastRound->ofDay) > tolerance;
    m_lastRound = now;
    return isSetBack && m_source.restart();
}

}  // namespace host
