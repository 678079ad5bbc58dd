#include "Stage.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <stdexcept>
#include <string>
#include <vector>

#include "FakeClock.h"
#include "Terminal.h"

namespace {

constexpr char PROVIDER_NAME[] = "SensorProvider";
const broker::ObjectPath CLASS_PATH{"", "root/cimv2", "TQS_NumericSensor", {}};

broker::ObjectPath pathOf(int position) {
    std::array<char, 9> handle{};
    std::snprintf(handle.data(), handle.size(), "%08x", FIRST_HANDLE + static_cast<unsigned>(position));
    const std::string name = "Probe " + std::to_string(position + 1) + "(" + handle.data() + ")";
    broker::ObjectPath path = CLASS_PATH;
    path.keys.push_back({"Name", broker::Value::ofText(name)});
    return path;
}

template <typename Call>
void ask(broker::Broker& broker, Call call) {
    broker::Request request(broker);
    const CMPIStatus status = call(request);
    if (status.rc != CMPI_RC_OK || request.reply().doneCalls != 1) throw std::runtime_error("a request failed");
}

void askNames(broker::Broker& broker, CMPIInstanceMI* mi) {
    ask(broker, [mi](broker::Request& request) {
        return mi->ft->enumerateInstanceNames(mi, request.context(), request.result(), request.makePath(CLASS_PATH));
    });
}

void askInstances(broker::Broker& broker, CMPIInstanceMI* mi) {
    ask(broker, [mi](broker::Request& request) {
        return mi->ft->enumerateInstances(mi, request.context(), request.result(), request.makePath(CLASS_PATH),
                                          nullptr);
    });
}

void askInstance(broker::Broker& broker, CMPIInstanceMI* mi, int position) {
    const broker::ObjectPath path = pathOf(position);
    ask(broker, [mi, &path](broker::Request& request) {
        return mi->ft->getInstance(mi, request.context(), request.result(), request.makePath(path), nullptr);
    });
}

// The calls of all three requests.
std::vector<broker::RecordedCall> callsOf(broker::Broker& broker, CMPIInstanceMI* mi) {
    broker.startRecording();
    askNames(broker, mi);
    askInstances(broker, mi);
    fakeclock::advanceMilliseconds(1000);
    askInstances(broker, mi);
    askInstance(broker, mi, 0);
    askInstance(broker, mi, 9);
    return broker.recordedCalls();
}

bool isSame(const broker::RecordedCall& left, const broker::RecordedCall& right) {
    return left.function == right.function && left.name == right.name && left.value == right.value;
}

void requireSameCalls(const broker::ProviderLibrary& library) {
    playTerminal(10);
    broker::Broker broker;
    broker::InstanceProvider provider(library, PROVIDER_NAME, broker);
    Floor floor(broker.handle(), provider.enumerateInstances(CLASS_PATH).instances);
    const auto providers = callsOf(broker, provider.mi());
    const auto floors = callsOf(broker, floor.mi());
    if (!std::equal(providers.begin(), providers.end(), floors.begin(), floors.end(), isSame)) {
        throw std::runtime_error("the floor does not make the broker calls of the provider");
    }
}

}  // namespace

Stage::Stage() : m_library(PROVIDER_LIBRARY) {
    timeval now{};
    gettimeofday(&now, nullptr);
    fakeclock::set(now);
    requireSameCalls(m_library);
}

Stage& Stage::get() {
    static Stage stage;
    return stage;
}

void Stage::setSensors(int count) {
    if (!m_provider || m_count != count) {
        m_provider.reset();
        playTerminal(count);
        m_provider.emplace(m_library, PROVIDER_NAME, m_broker);
        m_count = count;
    }
    std::unique_ptr<Floor>& itsFloor = m_floors[count];
    if (itsFloor == nullptr) {
        itsFloor = std::make_unique<Floor>(m_broker.handle(), m_provider->enumerateInstances(CLASS_PATH).instances);
    }
    // Whatever is due is read now.
    askInstances(provider());
    askInstances(floor());
}

void Stage::advanceToNextReading() {
    fakeclock::advanceMilliseconds(1000);
}

void Stage::askNames(CMPIInstanceMI* mi) {
    ::askNames(m_broker, mi);
}

void Stage::askInstances(CMPIInstanceMI* mi) {
    ::askInstances(m_broker, mi);
}

void Stage::askInstance(CMPIInstanceMI* mi, int position) {
    ::askInstance(m_broker, mi, position);
}

void Stage::startAndStop(int sensors) {
    m_provider.reset();
    playTerminal(sensors);
    const broker::InstanceProvider provider(m_library, PROVIDER_NAME, m_broker);
}
