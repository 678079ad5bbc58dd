// The chip library of this program, which the loaded provider takes before the simulated one: a Grebel terminal with
// two sensors and a short event log, all texts too long for a string's own buffer. It takes memory for nothing else.
#include <atomic>

#include "chip.h"

namespace {

std::atomic<int> s_reading{50};

}  // namespace

CChip::CChip() : m_state(nullptr) {}

CChip::~CChip() {
    m_state = nullptr;
}

sscode CChip::Initialise() {
    return 0;
}

sscode CChip::EnumerateSensorHandles(CSensorHandleList& handles) {
    handles.push_back(0);  // an enumeration asks the chip under a drive's number, too
    handles.push_back(1);
    return 0;
}

sscode CChip::GetSensorInformation(unsigned int handle, CSensorInformation& information) {
    information.name = handle == 0 ? "Processor die temperature" : "Chassis intake fan number one";
    information.otherSensorTypeDescription = "Of a kind that the model does not have a word for";
    information.sensorType = 1;
    return 0;
}

sscode CChip::ReadSensor(unsigned int, CSensorReading& result) {
    result.value = s_reading.fetch_add(1);
    return 0;
}

sscode CChip::GetSystemEventLog(CSystemEventLog& log) {
    log.lines = {"0001 2026-02-09 07:42:10 System: power on",
                 "0002 2026-02-09 07:42:31 Disk: checked without an error"};
    log.logValid = 1;
    return 0;
}

CPOSSystem CPOSSystem::s_instance;

bool CPOSSystem::IsGrebel() {
    return true;
}

bool CPOSSystem::IsZan() {
    return false;
}
