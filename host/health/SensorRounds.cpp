#include "health/SensorRounds.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "source/Answer.h"
#include "text/Utf8.h"

namespace host {
namespace {

using broker::Instance;
using broker::ObjectPath;
using broker::Reply;

std::string nameIn(const ObjectPath& path) {
    const broker::Value* name = path.findKey("Name");
    return name == nullptr ? "" : name->text;
}

bool isDriveSensor(const ObjectPath& path) {
    return isNameOfDriveSensor(nameIn(path));
}

// One round's requests.
class Asking {
  public:
    Asking(Source& source, const ObjectPath& classPath) : m_source(source), m_classPath(classPath) {}

    Round round() {
        const Reply names = ask([this] { return m_source.enumerateInstanceNames(m_classPath); });
        Round round;
        round.status = names.status;
        if (names.paths.empty()) return round;
        if (std::none_of(names.paths.begin(), names.paths.end(), isDriveSensor) && takeAll(round)) return round;
        for (const ObjectPath& path : names.paths) round.sensors.push_back(single(path));
        return round;
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

    bool takeAll(Round& round) {
        const Reply all = ask([this] { return m_source.enumerateInstances(m_classPath); });
        if (all.status.rc != CMPI_RC_OK) return false;
        for (const Instance& instance : all.instances) round.sensors.push_back(Sensor::of(instance));
        return true;
    }

    Sensor single(const ObjectPath& path) {
        const Reply reply = ask([&] { return m_source.getInstance(path); });
        if (reply.status.rc != CMPI_RC_OK) {
            return Sensor::withoutReading(nameIn(path), "the provider answered " + statusText(reply.status));
        }
        if (reply.instances.empty()) return Sensor::withoutReading(nameIn(path), "the answer is empty");
        return Sensor::of(reply.instances.front());
    }

    Source& m_source;
    const ObjectPath& m_classPath;
    bool m_hasRestarted = false;
};

}  // namespace

SensorRounds::SensorRounds(Source& source, const std::string& nameSpace)
    : m_source(source), m_classPath{"", nameSpace, SENSOR_CLASS, {}} {}

Round SensorRounds::next() {
    return Asking(m_source, m_classPath).round();
}

}  // namespace host
