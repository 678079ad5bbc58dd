// A chip library that says nothing of being simulated, as a terminal's own does not: one sensor, Real(00000001), at 21,
// and an event log of one line. Where PLAIN_CHIP_FAILS is in the environment, it cannot be initialised.
#include <cstdlib>

#include "chip.h"

CChip::CChip() : m_state(nullptr), m_reserved() {}
CChip::~CChip() = default;

sscode CChip::Initialise() {
    if (std::getenv("PLAIN_CHIP_FAILS") != nullptr) return 0x00010002;
    m_state = this;
    return 0;
}

sscode CChip::EnumerateSensorHandles(CSensorHandleList& handles) {
    if (m_state == nullptr) return 0x00010003;
    handles.push_back(1);
    return 0;
}

sscode CChip::GetSensorInformation(unsigned /*handle*/, CSensorInformation& information) {
    information.name = "Real";
    return 0;
}

sscode CChip::ReadSensor(unsigned /*handle*/, CSensorReading& reading) {
    reading.value = 21;
    return 0;
}

sscode CChip::GetSystemEventLog(CSystemEventLog& log) {
    log.lines = {"one"};
    return 0;
}

CPOSSystem CPOSSystem::s_instance;

bool CPOSSystem::IsGrebel() {
    return false;
}

bool CPOSSystem::IsZan() {
    return false;
}
