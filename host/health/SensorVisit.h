// One look at all sensors of a terminal, as a series of requests that somebody else sends: many terminals are looked at
// at the same time. What a round tells is what SensorRounds would tell.
#ifndef ZELSENSORS_HEALTH_SENSORVISIT_H
#define ZELSENSORS_HEALTH_SENSORVISIT_H

#include <cstddef>
#include <deque>
#include <string>
#include <vector>

#include "broker/Model.h"
#include "health/SensorRounds.h"
#include "source/Servers.h"

namespace host {

// Asks for all instances first: a terminal that is well costs one request. Where that fails, asks for the names, and
// for each sensor by itself. Where there are sensors of drives, asks for each of these by itself, since the enumeration
// has asked the chip for them. Both wait for the next reading first (see SensorRounds), so that it is one.
class SensorVisit {
  public:
    explicit SensorVisit(const std::string& nameSpace);

    bool isDone() const { return m_next == Next::Nothing; }
    // What is to be asked now; not where isDone().
    Reading reading() const;
    // Not before NEXT_READING has passed since the last answer.
    bool isAfterNextReading() const { return m_isAfterNextReading; }
    void take(broker::Reply reply);

    // Where isDone().
    const Round& round() const { return m_round; }

  private:
    enum class Next { Instances, Names, Each, Nothing };

    void takeInstances(broker::Reply reply);
    void takeNames(broker::Reply reply);
    void takeSingle(const broker::Reply& reply);
    void askEach();

    struct Pending {
        std::size_t place;  // in the round
        broker::ObjectPath path;
    };

    broker::ObjectPath m_classPath;
    Next m_next = Next::Instances;
    bool m_isAfterNextReading = false;
    std::deque<Pending> m_pending;  // to be asked one by one
    Round m_round;
};

}  // namespace host

#endif
