// A chip library whose classes have more members than chip.h describes: as many as the callers leave room for. Each
// call looks whether the caller has zeroed that room, and fills it. This program has it in the place of the simulated
// one.
#include <algorithm>
#include <cstddef>
#include <string>
#include <vector>

// Declared as such a library's own header would do it, not by chip.h.
typedef unsigned int sscode;

namespace {

constexpr sscode ROOM_NOT_ZERO = 0xE0000010;

template <std::size_t bytes>
struct FurtherMembers {
    unsigned char all[bytes];

    // 0, having written to all of them, where each was zero.
    sscode use() {
        const bool wereZero = std::all_of(all, all + bytes, [](unsigned char byte) { return byte == 0; });
        std::fill(all, all + bytes, static_cast<unsigned char>(0xA5));
        return wereZero ? 0 : ROOM_NOT_ZERO;
    }
};

}  // namespace

class CSensorHandleList : public std::vector<unsigned int> {
  public:
    FurtherMembers<512> more;
};

class CSensorInformation {
  public:
    int accuracy;
    unsigned short baseUnits;
    std::string name;
    int hysteresis;
    bool isLinear;
    int numbers[6];
    std::string otherSensorTypeDescription;
    unsigned short rateUnits;
    int resolution;
    unsigned short sensorType;
    int unitModifier;
    int unread;
    int upperThresholds[3];
    FurtherMembers<512> more;
};

class CSensorReading {
  public:
    int value;
    long long preset;
    FurtherMembers<512> more;
};

class CSystemEventLog {
  public:
    unsigned char logFull;
    std::vector<std::string> lines;
    unsigned char multipleEventCountIncrement;
    unsigned char multipleEventTimeWindow;
    unsigned char logValid;
    FurtherMembers<512> more;
};

class __attribute__((visibility("default"))) CChip {
  public:
    CChip();
    ~CChip();
    sscode Initialise();
    sscode EnumerateSensorHandles(CSensorHandleList& handles);
    sscode GetSensorInformation(unsigned int handle, CSensorInformation& information);
    sscode ReadSensor(unsigned int handle, CSensorReading& reading);
    sscode GetSystemEventLog(CSystemEventLog& log);

  private:
    void* m_state;
    FurtherMembers<4096> m_more;
};

class __attribute__((visibility("default"))) CPOSSystem {
  public:
    static CPOSSystem s_instance;
    bool IsGrebel();
    bool IsZan();
};

CChip::CChip() : m_state(nullptr) {}

CChip::~CChip() {
    m_more.use();
    m_state = nullptr;
}

// Not in the constructor: until its end the members count as without a value, whatever the memory holds.
sscode CChip::Initialise() {
    return m_more.use();
}

sscode CChip::EnumerateSensorHandles(CSensorHandleList& handles) {
    handles.assign({1, 2});
    return handles.more.use();
}

sscode CChip::GetSensorInformation(unsigned int handle, CSensorInformation& information) {
    information.name = "Sensor " + std::to_string(handle);
    information.upperThresholds[2] = 80;
    return information.more.use();
}

sscode CChip::ReadSensor(unsigned int handle, CSensorReading& reading) {
    reading.value = 40 + static_cast<int>(handle);
    return reading.more.use();
}

sscode CChip::GetSystemEventLog(CSystemEventLog& log) {
    log.lines = {"one", "two"};
    log.logValid = 1;
    return log.more.use();
}

CPOSSystem CPOSSystem::s_instance;

bool CPOSSystem::IsGrebel() {
    return false;
}

bool CPOSSystem::IsZan() {
    return false;
}
