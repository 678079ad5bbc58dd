#include "chip.h"

#include <cstdio>
#include <exception>

#include "ScenarioFile.h"
#include "Terminal.h"

namespace {

// Null, with what is wrong on standard error, where the scenario cannot be used.
Terminal* makeTerminal() {
    try {
        return new Terminal(loadScenario());
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return nullptr;
    }
}

}  // namespace

// By this symbol whoever shows the answers knows that they are no terminal's. The value has no meaning.
// NOLINTNEXTLINE(readability-identifier-naming): a C name, as those of loaders are
extern "C" __attribute__((visibility("default"))) const int zelchip_is_simulated = 1;

CChip::CChip() : m_state(nullptr), m_reserved() {}

CChip::~CChip() {
    delete static_cast<Terminal*>(m_state);
}

sscode CChip::Initialise() {
    if (m_state == nullptr) m_state = makeTerminal();
    return m_state == nullptr ? STATUS_FAULTY_SCENARIO : static_cast<Terminal*>(m_state)->initialise();
}

sscode CChip::EnumerateSensorHandles(CSensorHandleList& handles) {
    return m_state == nullptr ? STATUS_NOT_INITIALISED : static_cast<Terminal*>(m_state)->enumerate(handles);
}

sscode CChip::GetSensorInformation(unsigned handle, CSensorInformation& information) {
    return m_state == nullptr ? STATUS_NOT_INITIALISED
                              : static_cast<Terminal*>(m_state)->information(handle, information);
}

sscode CChip::ReadSensor(unsigned handle, CSensorReading& reading) {
    return m_state == nullptr ? STATUS_NOT_INITIALISED : static_cast<Terminal*>(m_state)->read(handle, reading);
}

sscode CChip::GetSystemEventLog(CSystemEventLog& log) {
    return m_state == nullptr ? STATUS_NOT_INITIALISED : static_cast<Terminal*>(m_state)->eventLog(log);
}
