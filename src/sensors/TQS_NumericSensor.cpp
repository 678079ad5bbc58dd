#include "TQS_NumericSensor.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdio>

#include "CimModel.h"
#include "log.h"

namespace {

constexpr char CLASS_NAME[] = "TQS_NumericSensor";
constexpr int SHORTEST_UPDATE_INTERVAL = 500;  // milliseconds
constexpr int LONGEST_UPDATE_INTERVAL = 2500;

void setIfAvailable(InstanceBuilder& builder, const char* property, int number) {
    if (number != NOT_AVAILABLE) builder.sint32(property, number);
}

void setIfAvailable(InstanceBuilder& builder, const char* property, unsigned int number) {
    if (number != static_cast<unsigned int>(NOT_AVAILABLE)) builder.uint32(property, number);
}

}  // namespace

TQS_NumericSensor::TQS_NumericSensor(unsigned int handle) : m_handle(handle) {
    gettimeofday(&m_lastRead, nullptr);
}

void TQS_NumericSensor::setUpdateInterval(int milliseconds) {
    m_updateInterval = std::clamp(milliseconds, SHORTEST_UPDATE_INTERVAL, LONGEST_UPDATE_INTERVAL);
}

bool TQS_NumericSensor::needsReading() {
    timeval now{};
    if (gettimeofday(&now, nullptr) < 0) {
        Log(LOG_ERROR, "gettimeofday failed, errno=%d", errno);
        return true;
    }
    std::fprintf(stderr, "now=%d:%dus, prev=%d:%dus\n", static_cast<int>(now.tv_sec), static_cast<int>(now.tv_usec),
                 static_cast<int>(m_lastRead.tv_sec), static_cast<int>(m_lastRead.tv_usec));
    const int diff = tvdiff_ms(&now, &m_lastRead);
    if (m_updateInterval > diff) {
        std::fprintf(stderr, "no need to read - diff is %d, update interval is %d\n", diff, m_updateInterval);
        return false;
    }
    m_lastRead = now;
    std::fprintf(stderr, "read sensor - diff was %d, update interval is %d\n", diff, m_updateInterval);
    return true;
}

// The added second, taken off again at the end, keeps the microseconds above zero where they are divided. Unsigned
// numbers, since those may wrap around.
int TQS_NumericSensor::tvdiff_ms(const timeval* later, const timeval* earlier) {
    const std::uint32_t seconds =
        static_cast<std::uint32_t>(later->tv_sec) - static_cast<std::uint32_t>(earlier->tv_sec);
    const std::int64_t milliseconds = (later->tv_usec + 1000000 - earlier->tv_usec) / 1000;
    return static_cast<int>(seconds * 1000U + static_cast<std::uint32_t>(milliseconds) - 1000U);
}

CMPIObjectPath* TQS_NumericSensor::getObjectPath(const CMPIBroker* broker) const {
    return newNamedPath(broker, CLASS_NAME, m_name.c_str());
}

CMPIInstance* TQS_NumericSensor::getInstance(const CMPIBroker* broker) const {
    InstanceBuilder builder(broker, newNamedPath(broker, CLASS_NAME, m_name.c_str()));
    setIfAvailable(builder, "Accuracy", m_accuracy);
    builder.uint16("BaseUnits", m_baseUnits);
    builder.text("Caption", m_caption.c_str());
    builder.text("CreationClassName", CLASS_NAME);
    builder.sint32("CurrentReading", m_currentReading);
    builder.text("Description", m_description.c_str());
    builder.text("DeviceID", m_deviceID.c_str());
    setIfAvailable(builder, "Hysteresis", m_hysteresis);
    builder.boolean("IsLinear", m_isLinear);
    setIfAvailable(builder, "LowerThresholdCritical", m_lowerThresholdCritical);
    setIfAvailable(builder, "LowerThresholdFatal", m_lowerThresholdFatal);
    setIfAvailable(builder, "LowerThresholdNonCritical", m_lowerThresholdNonCritical);
    setIfAvailable(builder, "MaxReadable", m_maxReadable);
    setIfAvailable(builder, "MinReadable", m_minReadable);
    builder.text("Name", m_name.c_str());
    setIfAvailable(builder, "NominalReading", m_nominalReading);
    builder.text("OtherSensorTypeDescription", m_otherSensorTypeDescription.c_str());
    builder.uint16("RateUnits", m_rateUnits);
    setIfAvailable(builder, "Resolution", m_resolution);
    builder.uint16("SensorType", m_sensorType);
    builder.text("SystemCreationClassName", SYSTEM_CREATION_CLASS_NAME);
    builder.text("SystemName", SYSTEM_NAME);
    builder.sint32("UnitModifier", m_unitModifier);
    setIfAvailable(builder, "UpperThresholdCritical", m_upperThresholdCritical);
    setIfAvailable(builder, "UpperThresholdFatal", m_upperThresholdFatal);
    setIfAvailable(builder, "UpperThresholdNonCritical", m_upperThresholdNonCritical);
    return builder.instance();
}
