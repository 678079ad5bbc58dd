// The sensors that the chip does not report: on a Grebel terminal one temperature per NVMe drive, where
// /etc/tarn/sensor.conf switches them on. On a Zan terminal the switch is only logged.
//
// A drive's sensor has the drive's position in the list, from 0, as its handle, which may equal a chip's handle; only
// its name leads back to the drive. Not thread-safe: the provider lets one thread in at a time.
#ifndef ZELSENSORS_ADDITIONALINFO_H
#define ZELSENSORS_ADDITIONALINFO_H

#include <vector>

#include "NvmeSsd.h"
#include "TQS_NumericSensor.h"

class AdditionalInfo {
  public:
    // To be called once, after the chip's sensors are in the list; may append to it. The list stays the caller's.
    void initialise(std::vector<TQS_NumericSensor>* sensors);
    // Finds the drives and appends a sensor for each.
    void processGrebel(std::vector<TQS_NumericSensor>* sensors);
    // Reads the temperature of the sensor's drive when a reading is due. A sensor whose name fits no drive keeps its
    // value.
    void updateReading(TQS_NumericSensor& sensor);
    // Reads the switch, 0 or 1. Not written when the file is missing or sets no valid value.
    void getConfig(int& nvmeReadings);

  protected:
    NvmeSsd nvmeSsd;
    bool initialised = false;  // whether initialise() has come to its end
};

#endif
