#include "chip.h"

#include <exception>
#include <memory>
#include <new>

#include "Diagnosis.h"
#include "Finding.h"
#include "Machine.h"
#include "Smbios.h"
#include "Status.h"

namespace {

// No exception leaves the library: the host's compiler and run time may be others.
template <typename Call>
sscode answer(Call call) {
    try {
        return call();
    } catch (const std::bad_alloc&) {
        return STATUS_SHORTAGE;
    } catch (const std::exception&) {
        return STATUS_FAILED;
    }
}

}  // namespace

// NOLINTNEXTLINE(readability-identifier-naming): a C name, as those of loaders are
extern "C" __attribute__((visibility("default"))) unsigned zelchip_diagnose(ZelchipReport report, void* context) {
    return answer([&]() -> sscode {
        for (const Finding& one : diagnose()) {
            const ZelchipFinding finding{one.area.c_str(), one.subject.c_str(), one.text.c_str(),
                                         one.advice.empty() ? nullptr : one.advice.c_str()};
            report(context, &finding);
        }
        return 0;
    });
}

CChip::CChip() : m_state(nullptr), m_reserved() {}

CChip::~CChip() {
    delete static_cast<Machine*>(m_state);
}

sscode CChip::Initialise() {
    return answer([this]() -> sscode {
        if (m_state != nullptr) return 0;
        auto machine = std::make_unique<Machine>();
        const sscode status = machine->initialise();
        if (status == 0) m_state = machine.release();
        return status;
    });
}

sscode CChip::EnumerateSensorHandles(CSensorHandleList& handles) {
    if (m_state == nullptr) return STATUS_NOT_INITIALISED;
    return answer([&] { return static_cast<Machine*>(m_state)->enumerate(handles); });
}

sscode CChip::GetSensorInformation(unsigned handle, CSensorInformation& information) {
    if (m_state == nullptr) return STATUS_NOT_INITIALISED;
    return answer([&] { return static_cast<Machine*>(m_state)->information(handle, information); });
}

sscode CChip::ReadSensor(unsigned handle, CSensorReading& reading) {
    if (m_state == nullptr) return STATUS_NOT_INITIALISED;
    return answer([&] { return static_cast<Machine*>(m_state)->read(handle, reading); });
}

sscode CChip::GetSystemEventLog(CSystemEventLog& log) {
    if (m_state == nullptr) return STATUS_NOT_INITIALISED;
    return answer([&] { return readEventLog(log); });
}
