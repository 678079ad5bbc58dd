#include "Terminal.h"

#include <algorithm>
#include <chrono>
#include <thread>
#include <utility>

namespace {

bool matches(const SimulatedFault& fault, Operation operation, std::optional<unsigned> handle) {
    return fault.operation == operation && (!fault.handle || fault.handle == handle);
}

bool hits(const SimulatedFault& fault, std::uint64_t call) {
    return call >= fault.fromCall && (!fault.calls || call - fault.fromCall < *fault.calls);
}

bool isAlwaysInTime(const SimulatedFault& fault) {
    return fault.fromMilliseconds == 0 && !fault.milliseconds;
}

bool isInTime(const SimulatedFault& fault, std::int64_t sinceStart) {
    const std::int64_t late = std::max<std::int64_t>(sinceStart, 0) - fault.fromMilliseconds;
    return late >= 0 && (!fault.milliseconds || late < *fault.milliseconds);
}

}  // namespace

Terminal::Terminal(Scenario scenario) : m_scenario(std::move(scenario)), m_faultCalls(m_scenario.faults.size()) {
    for (const SimulatedSensor& sensor : m_scenario.sensors) m_sensors.emplace(sensor.handle, Sensor{&sensor});
}

sscode Terminal::initialise() {
    if (!m_start) m_start = wallClockMilliseconds();
    const sscode status = sufferFaults(Operation::Initialise);
    if (status == 0) m_initialised = true;
    return status;
}

sscode Terminal::enumerate(CSensorHandleList& handles) {
    if (!m_initialised) return STATUS_NOT_INITIALISED;
    if (const sscode status = sufferFaults(Operation::Enumerate)) return status;
    handles.reserve(handles.size() + m_scenario.sensors.size());
    for (const SimulatedSensor& sensor : m_scenario.sensors) handles.push_back(sensor.handle);
    return 0;
}

sscode Terminal::information(unsigned handle, CSensorInformation& information) {
    if (!m_initialised) return STATUS_NOT_INITIALISED;
    if (const sscode status = sufferFaults(Operation::Information, handle)) return status;
    const Sensor* sensor = find(handle);
    if (sensor == nullptr) return STATUS_UNKNOWN_HANDLE;
    information = sensor->description->information;
    return 0;
}

sscode Terminal::read(unsigned handle, CSensorReading& reading) {
    if (!m_initialised) return STATUS_NOT_INITIALISED;
    if (reading.preset != READING_PRESET) return STATUS_WRONG_PRESET;
    Sensor* sensor = find(handle);
    const std::uint64_t call = sensor == nullptr ? 0 : sensor->calls++;
    if (const sscode status = sufferFaults(Operation::Read, handle)) return status;
    if (sensor == nullptr) return STATUS_UNKNOWN_HANDLE;
    const Movement& movement = sensor->description->movement;
    reading.value = movement.valueAt({call, movement.times ? millisecondsSinceStart() : 0});
    return 0;
}

sscode Terminal::eventLog(CSystemEventLog& log) {
    if (!m_initialised) return STATUS_NOT_INITIALISED;
    if (const sscode status = sufferFaults(Operation::EventLog)) return status;
    log = m_scenario.eventLog;
    return 0;
}

sscode Terminal::sufferFaults(Operation operation, std::optional<unsigned> handle) {
    sscode status = 0;
    std::chrono::milliseconds delay{0};
    for (std::size_t i = 0; i < m_scenario.faults.size(); ++i) {
        const SimulatedFault& fault = m_scenario.faults[i];
        if (!matches(fault, operation, handle) || !hits(fault, ++m_faultCalls[i])) continue;
        if (!isAlwaysInTime(fault) && !isInTime(fault, millisecondsSinceStart())) continue;
        delay += std::chrono::milliseconds(fault.delayMilliseconds);
        if (status == 0) status = fault.status;
    }
    if (delay.count() > 0) std::this_thread::sleep_for(delay);
    return status;
}

std::int64_t Terminal::millisecondsSinceStart() const {
    return m_start ? static_cast<std::int64_t>(wallClockMilliseconds() - *m_start) : 0;
}

Terminal::Sensor* Terminal::find(unsigned handle) {
    const auto found = m_sensors.find(handle);
    return found == m_sensors.end() ? nullptr : &found->second;
}
