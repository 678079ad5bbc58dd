#include "Chip.h"

#include <sys/time.h>

#include <utility>

#include "Property.h"

namespace {

chip::Answers s_answers;
std::vector<chip::Read> s_reads;
int s_objects = 0;
std::int64_t s_milliseconds = 0;

}  // namespace

namespace chip {

Answers& answers() {
    return s_answers;
}

std::vector<Read> takeReads() {
    return std::exchange(s_reads, {});
}

int objects() {
    return s_objects;
}

void setClock(std::int64_t milliseconds) {
    s_milliseconds = milliseconds;
}

}  // namespace chip

CPOSSystem CPOSSystem::s_instance;

bool CPOSSystem::IsGrebel() {
    return s_answers.isGrebel;
}
bool CPOSSystem::IsZan() {
    return s_answers.isZan;
}

CChip::CChip() : m_state(nullptr) {
    ++s_objects;
}
CChip::~CChip() {
    require(m_state == nullptr, "the provider keeps its hands off the chip object");
    --s_objects;
}

sscode CChip::Initialise() {
    return s_answers.initialise;
}

sscode CChip::EnumerateSensorHandles(CSensorHandleList& handles) {
    require(handles.empty(), "the list of handles is empty");
    handles.assign(s_answers.handles.begin(), s_answers.handles.end());
    return s_answers.enumerate;
}

sscode CChip::GetSensorInformation(unsigned int handle, CSensorInformation& information) {
    require(information.name.empty() && information.otherSensorTypeDescription.empty(), "the record's texts are empty");
    return s_answers.information(handle, information);
}

sscode CChip::ReadSensor(unsigned int handle, CSensorReading& reading) {
    require(reading.preset == 1, "a reading is preset with 1");
    const sscode status = s_answers.read(handle, reading.value);
    s_reads.push_back({handle, status, reading.value});
    return status;
}

sscode CChip::GetSystemEventLog(CSystemEventLog& log) {
    require(log.lines.empty(), "the record has no lines");
    log = s_answers.eventLog;
    return s_answers.eventLogStatus;
}

// The linker sends the code under test here (--wrap). The name is its own.
extern "C" {
int __wrap_gettimeofday(timeval* now, void* zone);

int __wrap_gettimeofday(timeval* now, void* /*zone*/) {
    now->tv_sec = s_milliseconds / 1000;
    now->tv_usec = s_milliseconds % 1000 * 1000;
    return 0;
}
}
