// One numeric sensor of the terminal, and how it is shown as an instance of the CIM class TQS_NumericSensor.
//
// The sensor reads no hardware: whoever builds it fills it through the setters, and whoever refreshes it asks
// needsReading() first. A number that holds NOT_AVAILABLE (in an unsigned member the same bits) is left out of the
// instance, where the chip may lack it. A plain value, copied member by member. Not thread-safe: the provider lets one
// thread in at a time.
#ifndef ZELSENSORS_TQS_NUMERICSENSOR_H
#define ZELSENSORS_TQS_NUMERICSENSOR_H

#include <cmpidt.h>
#include <cmpift.h>
#include <sys/time.h>

#include <string>

#include "chip.h"

class TQS_NumericSensor {
  public:
    // The handle under which the sensor is read. The present moment counts as the time of the first reading.
    explicit TQS_NumericSensor(unsigned int handle);
    TQS_NumericSensor(const TQS_NumericSensor&) = default;
    TQS_NumericSensor& operator=(const TQS_NumericSensor&) = default;
    virtual ~TQS_NumericSensor() = default;

    // True for a drive's sensor, which AdditionalInfo makes and refreshes; false for one of the chip's.
    bool isAdditional = false;

    unsigned int getHandle() const { return m_handle; }
    // Valid while the sensor lives and its name is not set anew.
    const char* getName() const { return m_name.c_str(); }

    void setAccuracy(int accuracy) { m_accuracy = accuracy; }
    void setBaseUnits(unsigned short baseUnits) { m_baseUnits = baseUnits; }
    void setCaption(const std::string& caption) { m_caption = caption; }
    void setCurrentReading(int currentReading) { m_currentReading = currentReading; }
    void setDescription(const std::string& description) { m_description = description; }
    void setDeviceID(const std::string& deviceID) { m_deviceID = deviceID; }
    void setHysteresis(unsigned int hysteresis) { m_hysteresis = hysteresis; }
    void setIsLinear(bool isLinear) { m_isLinear = isLinear; }
    void setLowerThresholdCritical(int threshold) { m_lowerThresholdCritical = threshold; }
    void setLowerThresholdFatal(int threshold) { m_lowerThresholdFatal = threshold; }
    void setLowerThresholdNonCritical(int threshold) { m_lowerThresholdNonCritical = threshold; }
    void setMaxReadable(int maxReadable) { m_maxReadable = maxReadable; }
    void setMinReadable(int minReadable) { m_minReadable = minReadable; }
    void setName(const std::string& name) { m_name = name; }
    void setNominalReading(int nominalReading) { m_nominalReading = nominalReading; }
    void setOtherSensorTypeDescription(const std::string& description) { m_otherSensorTypeDescription = description; }
    void setRateUnits(unsigned short rateUnits) { m_rateUnits = rateUnits; }
    void setResolution(unsigned int resolution) { m_resolution = resolution; }
    void setSensorType(unsigned short sensorType) { m_sensorType = sensorType; }
    void setUnitModifier(int unitModifier) { m_unitModifier = unitModifier; }
    void setUpperThresholdCritical(int threshold) { m_upperThresholdCritical = threshold; }
    void setUpperThresholdFatal(int threshold) { m_upperThresholdFatal = threshold; }
    void setUpperThresholdNonCritical(int threshold) { m_upperThresholdNonCritical = threshold; }

    // The least age of a reading before the next is taken; brought into 500 to 2500 ms.
    void setUpdateInterval(int milliseconds);
    // Whether a reading is due. If so, now becomes the time of the last reading: the caller is to take one. True also
    // when the time cannot be had. Reports on standard error how it decided.
    bool needsReading();
    // How much later the one time is, in whole milliseconds; wraps around in 32 bits.
    static int tvdiff_ms(const timeval* later, const timeval* earlier);

    // Both belong to the broker and are never null; a broker's refusal is thrown as a CMPIStatus* (see CimModel.h).
    CMPIObjectPath* getObjectPath(const CMPIBroker* broker) const;
    CMPIInstance* getInstance(const CMPIBroker* broker) const;

  protected:
    unsigned int m_handle;
    int m_updateInterval = 1000;  // milliseconds
    timeval m_lastRead{};         // stays zero when the clock fails at construction
    int m_accuracy = NOT_AVAILABLE;
    unsigned short m_baseUnits = 0;
    std::string m_caption;
    int m_currentReading = 0;
    std::string m_description;
    std::string m_deviceID;
    unsigned int m_hysteresis = static_cast<unsigned int>(NOT_AVAILABLE);
    bool m_isLinear = false;
    int m_lowerThresholdCritical = NOT_AVAILABLE;
    int m_lowerThresholdFatal = NOT_AVAILABLE;
    int m_lowerThresholdNonCritical = NOT_AVAILABLE;
    int m_maxReadable = NOT_AVAILABLE;
    int m_minReadable = NOT_AVAILABLE;
    std::string m_name;
    int m_nominalReading = NOT_AVAILABLE;
    std::string m_otherSensorTypeDescription;
    unsigned short m_rateUnits = 0;
    unsigned int m_resolution = static_cast<unsigned int>(NOT_AVAILABLE);
    unsigned short m_sensorType = 0;
    int m_unitModifier = 0;
    int m_upperThresholdCritical = NOT_AVAILABLE;
    int m_upperThresholdFatal = NOT_AVAILABLE;
    int m_upperThresholdNonCritical = NOT_AVAILABLE;
};

#endif
