// The provider's life and its inventory.
#include "SensorProvider.h"

#include <array>
#include <cstdio>
#include <cstring>
#include <memory>
#include <new>

#include "Quietly.h"
#include "log.h"

SensorProvider* drvProvider = nullptr;

namespace {

struct MemoryFreer {
    void operator()(void* memory) const { ::operator delete(memory); }
};

// Null when there is no memory. A function of its own: in the caller the compiler could leave the zeros out, as those
// of an object that is only constructed afterwards.
[[gnu::noinline]] void* zeroedMemory(std::size_t size) {
    void* memory = ::operator new(size, std::nothrow);
    return memory == nullptr ? nullptr : std::memset(memory, 0, size);
}

// In zeroed memory, which its reserved room is to be. Null when there is no memory; passes on what the constructor
// throws.
CChip* makeChip() {
    std::unique_ptr<void, MemoryFreer> memory(zeroedMemory(sizeof(CChip)));
    if (memory == nullptr) return nullptr;
    new (memory.get()) CChip;
    return static_cast<CChip*>(memory.release());
}

}  // namespace

SensorProvider::SensorProvider() {
    quietly([] { LogQuick(LOG_DEBUG, "SensorProvider::constructor"); });
}

SensorProvider::~SensorProvider() {
    quietly([this] { Log(LOG_DEBUG, "SensorProvider::destructor - chip=0x%p", static_cast<void*>(chip)); });
    if (chip != nullptr) {
        quietly([] { LogQuick(LOG_DEBUG, "deleting Chip object"); });
        delete chip;
        chip = nullptr;
    }
    setCurrentProvider(nullptr);
    quietly([] { LogQuick(LOG_INFO, "SensorProvider - provider destroyed"); });
}

void SensorProvider::initialise(const CMPIContext* /*ctx*/) {
    LogQuick(LOG_DEBUG, "SensorProvider::initialise");
    chip = makeChip();
    if (chip == nullptr) {
        LogQuick(LOG_DEBUG, "failed to construct Chip object");
        return;
    }
    sscode status = chip->Initialise();
    if (status != 0) {
        Log(LOG_ERROR, "SensorProvider::initialize - Initialise Service Driver failed - sscode=0x%08x", status);
        return;
    }
    status = initSensorProvider();
    if (status != 0) {
        Log(LOG_ERROR, "SensorProvider::initialize - initSensorProvider failed - sscode=0x%08x", status);
        return;
    }
    __atomic_store_n(&initialised, true, __ATOMIC_RELEASE);
    // From here on the provider works, so a log that cannot be written must not count as a failed start.
    quietly([] { LogQuick(LOG_INFO, "SensorProvider created and initialised"); });
}

sscode SensorProvider::initSensorProvider() {
    LogQuick(LOG_DEBUG, "SensorProvider::InitSensorProvider");
    CSensorHandleList handles;
    const sscode status = chip->EnumerateSensorHandles(handles);
    if (status != 0) {
        Log(LOG_ERROR, "SensorProvider::InitSensorProvider - EnumerateSensorHandles failed, sscode=0x%08x", status);
        return status;
    }
    sensors.reserve(sensors.size() + handles.size());
    for (const unsigned int handle : handles) {
        const sscode added = addChipSensor(handle);
        if (added != 0) return added;
    }
    additional.initialise(&sensors);
    return 0;
}

namespace {

// The texts of a chip sensor, made from its label, its type's word and its handle.
struct SensorTexts {
    std::string name;
    std::string description;
    std::string caption;
    std::string deviceId;
};

SensorTexts makeTexts(unsigned int handle, const CSensorInformation& information) {
    std::array<char, 9> hex{};
    std::snprintf(hex.data(), hex.size(), "%08x", handle);
    std::string type;
    SensorProvider::getSensorTypeString(information.sensorType, type);

    SensorTexts texts;
    texts.deviceId = hex.data();
    texts.name = information.name + "(" + texts.deviceId + ")";
    texts.description = texts.name + ": " + type + " sensor";
    texts.caption = type + "(" + texts.deviceId + ")";
    return texts;
}

void fill(TQS_NumericSensor& sensor, const CSensorInformation& information, int reading, const SensorTexts& texts) {
    sensor.setUpperThresholdCritical(information.upperThresholdCritical);  // and again below, as it always was
    sensor.setAccuracy(information.accuracy);
    sensor.setBaseUnits(information.baseUnits);
    sensor.setCaption(texts.caption);
    sensor.setCurrentReading(reading);
    sensor.setDescription(texts.description);
    sensor.setDeviceID(texts.deviceId);
    sensor.setHysteresis(static_cast<unsigned int>(information.hysteresis));
    sensor.setIsLinear(information.isLinear);
    sensor.setLowerThresholdCritical(information.lowerThresholdCritical);
    sensor.setLowerThresholdFatal(information.lowerThresholdFatal);
    sensor.setLowerThresholdNonCritical(information.lowerThresholdNonCritical);
    sensor.setMaxReadable(information.maxReadable);
    sensor.setMinReadable(information.minReadable);
    sensor.setName(texts.name);
    sensor.setNominalReading(information.nominalReading);
    sensor.setOtherSensorTypeDescription(information.otherSensorTypeDescription);
    sensor.setRateUnits(information.rateUnits);
    sensor.setResolution(static_cast<unsigned int>(information.resolution));
    sensor.setSensorType(information.sensorType);
    sensor.setUnitModifier(information.unitModifier);
    sensor.setUpperThresholdCritical(information.upperThresholdCritical);
    sensor.setUpperThresholdFatal(information.upperThresholdFatal);
    sensor.setUpperThresholdNonCritical(information.upperThresholdNonCritical);
}

}  // namespace

sscode SensorProvider::addChipSensor(unsigned int handle) {
    CSensorInformation information{};
    sscode status = chip->GetSensorInformation(handle, information);
    if (status != 0) {
        Log(LOG_ERROR, "SensorProvider::initSensorProvider - GetSensorInformation failed, sscode=0x%08x\n", status);
        return status;
    }
    CSensorReading reading{0, READING_PRESET};
    status = chip->ReadSensor(handle, reading);
    if (status != 0) {
        Log(LOG_ERROR, "SensorProvider::initSensorProvider - ReadSensor failed, sscode=0x%08x", status);
        return status;
    }
    TQS_NumericSensor sensor(handle);
    fill(sensor, information, reading.value, makeTexts(handle, information));
    sensors.push_back(sensor);
    return 0;
}

void SensorProvider::getSensorTypeString(unsigned short sensorType, std::string& out) {
    // By the code of CIM_Sensor.SensorType.
    static constexpr std::array<const char*, 12> words = {
        "Unknown", "Other",  "Temperature", "Voltage",  "Current",        "Tachometer",
        "Counter", "Switch", "Lock",        "Humidity", "SmokeDetection", "Presence",
    };
    out = sensorType < words.size() ? words[sensorType] : words[0];
}
