#include "health/SensorVisit.h"

#include <utility>

#include "health/SensorNames.h"
#include "source/Request.h"

namespace host {

SensorVisit::SensorVisit(const std::string& nameSpace) : m_classPath{"", nameSpace, SENSOR_CLASS, {}} {}

Reading SensorVisit::reading() const {
    switch (m_next) {
        case Next::Instances:
            return {Reading::Operation::Instances, m_classPath};
        case Next::Names:
            return {Reading::Operation::Names, m_classPath};
        default:
            return {Reading::Operation::Get, m_pending.front().path};
    }
}

void SensorVisit::take(broker::Reply reply) {
    switch (m_next) {
        case Next::Instances:
            return takeInstances(std::move(reply));
        case Next::Names:
            return takeNames(std::move(reply));
        default:
            return takeSingle(reply);
    }
}

void SensorVisit::takeInstances(broker::Reply reply) {
    if (reply.status.rc != CMPI_RC_OK) {
        m_isAfterNextReading = reply.status.rc == CMPI_RC_ERR_FAILED;
        m_next = Next::Names;
        return;
    }
    for (broker::Instance& instance : reply.instances) {
        m_round.sensors.push_back(Sensor::of(instance));
        if (!isNameOfDriveSensor(m_round.sensors.back().name)) continue;
        m_pending.push_back({m_round.sensors.size() - 1, std::move(instance.path)});
    }
    m_isAfterNextReading = !m_pending.empty();
    askEach();
}

void SensorVisit::takeNames(broker::Reply reply) {
    m_isAfterNextReading = false;
    m_round.status = std::move(reply.status);
    const std::vector<std::string> names = namesIn(reply.paths);
    for (std::size_t i = 0; i < names.size(); ++i) {
        m_round.sensors.push_back(Sensor::withoutReading(names[i], ""));
        m_pending.push_back({i, std::move(reply.paths[i])});
    }
    askEach();
}

void SensorVisit::takeSingle(const broker::Reply& reply) {
    m_isAfterNextReading = false;
    Sensor& sensor = m_round.sensors.at(m_pending.front().place);
    sensor = sensorIn(reply, sensor.name);
    m_pending.pop_front();
    askEach();
}

void SensorVisit::askEach() {
    m_next = m_pending.empty() ? Next::Nothing : Next::Each;
}

}  // namespace host
