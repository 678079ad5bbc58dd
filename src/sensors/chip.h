// The terminal's chip service library, libzelchip.so.0, as this provider uses it.
//
// The library is closed and comes with the terminal, so these declarations are a binary contract: the order and the
// types of the members and the mangled names must stay as they are. Nothing here is virtual or const. The simulated
// library is built against the same file.
//
// What the caller makes, the library fills by its own declarations, which may have more members behind the ones
// described here; how large its CChip is nobody outside knows. So each of these classes ends in reserved room, zero
// when the library gets it. Without it a larger library would write into the caller's stack and heap.
//
// Every operation answers an sscode: 0 is success, anything else a failure whose meaning is the library's own. The
// records are made and destroyed by the caller and filled by the library; what a record holds after a failure is
// undefined. The library is not thread-safe: the caller lets one thread in at a time.
#ifndef ZELSENSORS_CHIP_H
#define ZELSENSORS_CHIP_H

#include <climits>
#include <cstddef>
#include <string>
#include <vector>

#define ZELCHIP_EXPORT __attribute__((visibility("default")))

typedef unsigned int sscode;

// Bytes of reserved room, far more than any such class is expected to have of its own.
constexpr std::size_t RECORD_ROOM = 512;
constexpr std::size_t CHIP_ROOM = 4096;

// The handles of all sensors, in the library's order.
class CSensorHandleList : public std::vector<unsigned int> {
  public:
    unsigned char reserved[RECORD_ROOM] = {};
};

// What a 32-bit number of a record holds that the chip does not report: the bit pattern 0x80000000.
constexpr int NOT_AVAILABLE = INT_MIN;

// The fixed description of one sensor.
class CSensorInformation {
  public:
    int accuracy;
    unsigned short baseUnits;  // CIM BaseUnits code
    std::string name;          // the chip's label
    int hysteresis;
    bool isLinear;
    int lowerThresholdCritical;
    int lowerThresholdFatal;
    int lowerThresholdNonCritical;
    int maxReadable;
    int minReadable;
    int nominalReading;
    std::string otherSensorTypeDescription;
    unsigned short rateUnits;  // CIM RateUnits code
    int resolution;
    unsigned short sensorType;  // CIM SensorType code
    int unitModifier;           // power of ten
    int unread;                 // part of the record; not used by this provider
    int upperThresholdCritical;
    int upperThresholdFatal;
    int upperThresholdNonCritical;
    unsigned char reserved[RECORD_ROOM] = {};
};

// One reading.
class CSensorReading {
  public:
    int value;         // in the sensor's units
    long long preset;  // the caller sets READING_PRESET before each call and never reads it back
    unsigned char reserved[RECORD_ROOM] = {};
};

// What this provider has always put into CSensorReading::preset. What the library makes of it is not known; that it
// needs this value is an assumption.
constexpr long long READING_PRESET = 1;

// The contents of the motherboard's event log.
class CSystemEventLog {
  public:
    unsigned char logFull;
    std::vector<std::string> lines;  // one entry per log record
    unsigned char multipleEventCountIncrement;
    unsigned char multipleEventTimeWindow;
    unsigned char logValid;
    unsigned char reserved[RECORD_ROOM] = {};
};

// The chip service. One object per process, made and owned by the caller, who zeroes its memory beforehand: the
// library's constructor knows the library's own members alone.
class ZELCHIP_EXPORT CChip {
  public:
    CChip();
    ~CChip();
    CChip(const CChip&) = delete;
    CChip& operator=(const CChip&) = delete;

    // Opens the kernel service driver. To be called once, before everything else; non-zero: it could not be opened.
    sscode Initialise();
    // Appends every sensor's handle to the list.
    sscode EnumerateSensorHandles(CSensorHandleList& handles);
    sscode GetSensorInformation(unsigned int handle, CSensorInformation& information);
    sscode ReadSensor(unsigned int handle, CSensorReading& reading);
    sscode GetSystemEventLog(CSystemEventLog& log);

  private:
    void* m_state;
    [[maybe_unused]] unsigned char m_reserved[CHIP_ROOM];
};

// The terminal's model.
class ZELCHIP_EXPORT CPOSSystem {
  public:
    static CPOSSystem s_instance;  // owned by the library
    bool IsGrebel();
    bool IsZan();
};

#endif
