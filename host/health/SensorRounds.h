// All sensors of a terminal, asked in rounds.
#ifndef ZELSENSORS_HEALTH_SENSORROUNDS_H
#define ZELSENSORS_HEALTH_SENSORROUNDS_H

#include <chrono>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "broker/Model.h"
#include "health/Sensor.h"
#include "source/Source.h"

namespace host {

struct Round {
    std::vector<Sensor> sensors;  // in the provider's order; also those without a reading
    broker::Status status;        // other than 0: the names could not be had, or not all of them
};

// The first status other than 0 in the round, its own or a sensor's.
std::optional<broker::Status> firstFailure(const Round& round);

// Which of the names are wanted, by their places; may throw, which ends the round.
using ChooseNames = std::function<std::vector<std::size_t>(const std::vector<std::string>&)>;

// The clock that the rounds look at, and how they wait; watch waits until it is interrupted.
struct RoundTiming {
    using Clock = std::chrono::steady_clock;
    std::function<Clock::time_point()> now;
    std::function<void(Clock::duration)> wait;
    std::function<std::chrono::system_clock::time_point()> timeOfDay;
};
RoundTiming realTiming();

// The provider's update interval, and some of its clock's grain and pace.
constexpr RoundTiming::Clock::duration NEXT_READING = std::chrono::milliseconds(1100);

// The sensor in the answer to a request for it alone; without a reading, and with the reason, where it is not there.
Sensor sensorIn(const broker::Reply& reply, const std::string& name);

// One after the other, of the sensor class in a namespace.
//
// The provider takes no second reading within a second, not even after a failure: asked again so soon it gives the
// value from before, as if all were well. So a round that has to ask again after a failure waits for that second, and
// rounds that follow each other faster repeat the failure.
//
// It measures that second by the time of day: when that is set back, it goes on to give the values from before, for as
// long as the clock takes to catch up. A round that finds it set back restarts the source, which then reads anew; a
// source that cannot be restarted may give old values.
class SensorRounds {
  public:
    // The source must outlive this object.
    SensorRounds(Source& source, const std::string& nameSpace, RoundTiming timing = realTiming());

    // Asks for all sensors, or those chosen, which come in the order of the choice. Asks for the names first; then for
    // all instances at once where that is safe, and for each by itself where there are sensors of drives (see
    // isNameOfDriveSensor()), where few are wanted, and where asking at once has failed: a sensor that fails costs
    // itself alone. After status 16 the source is restarted, once in a round at most, and asked again. Throws what
    // the source and the choice throw.
    Round next();
    Round next(const ChooseNames& choose);

  private:
    class Asking;  // one round
    struct Failure {
        RoundTiming::Clock::time_point time;
        Sensor sensor;  // as it was shown
    };

    struct Moment {
        RoundTiming::Clock::time_point steady;
        std::chrono::system_clock::time_point ofDay;
    };
    bool hasRestartedAfterSetBack();

    Source& m_source;
    broker::ObjectPath m_classPath;
    RoundTiming m_timing;
    std::optional<Moment> m_lastRound;
    std::map<std::string, Failure> m_failures;  // of the last round, by name
};

}  // namespace host

#endif
