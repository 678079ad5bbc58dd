// What a terminal answered over some time: enough for the simulated chip library to play it again.
#ifndef ZELSENSORS_HEALTH_RECORDING_H
#define ZELSENSORS_HEALTH_RECORDING_H

#include <chrono>
#include <cstddef>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "broker/Model.h"
#include "health/SensorRounds.h"
#include "source/Source.h"

namespace host {

struct RecordedSensor {
    std::string name;
    broker::Instance instance;     // as it was answered first
    std::vector<Number> readings;  // CurrentReading in each round; none: it failed, or was not there
};

struct Recording {
    std::vector<std::chrono::milliseconds> times;  // when each round began, counted from the first; each after the last
    std::vector<RecordedSensor> sensors;           // in the provider's order, new ones at the end
    broker::Status start;                          // other than 0: no round gave a name, for this reason

    std::optional<broker::Instance> eventLog;  // as it was answered last
    std::vector<bool> eventLogFailures;        // in each round
    std::vector<std::string> losses;           // what a scenario cannot hold, in sentences; bytes as they came
};

// Asks for all that a scenario holds, round by round. recording() may be called from another thread meanwhile.
class Recorder {
  public:
    using Time = std::chrono::steady_clock::time_point;

    // The source must outlive this object.
    Recorder(Source& source, std::string nameSpace, RoundTiming timing = realTiming());

    // One round: the readings of all sensors, and the event log. Throws what the source throws; the round is not in the
    // recording then.
    void round();

    struct Counts {
        std::size_t rounds;
        std::size_t sensors;
        std::size_t unread;  // of them, in the last round
    };
    Counts counts() const;

    // What all rounds gave; empty before the first.
    Recording recording() const;

  private:
    struct Answers;  // of one round

    void describeNewcomers(Answers& answers);
    void add(const Answers& answers);
    void addTime(Time time);
    void addReadings(const Answers& answers);
    void addEventLog(const Answers& answers);
    void lose(const std::string& sentence);

    Source& m_source;
    std::string m_nameSpace;
    RoundTiming m_timing;
    SensorRounds m_rounds;
    std::optional<Time> m_first;
    bool m_hasAskedAgain = false;  // in this round, after a failure
    bool m_wasStarted = false;
    std::unordered_map<std::string, std::size_t> m_places;  // in the recording, by the sensors' names
    mutable std::mutex m_mutex;                             // of m_recording
    Recording m_recording;
};

}  // namespace host

#endif
