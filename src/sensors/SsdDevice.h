// One NVMe drive as it was found: a plain record, copied member by member. Its making and the destruction of each copy
// are logged, copying is not.
#ifndef ZELSENSORS_SSDDEVICE_H
#define ZELSENSORS_SSDDEVICE_H

#include <string>

#include "SmartIo.h"

class SsdDevice {
  public:
    SsdDevice();
    SsdDevice(const SsdDevice&) = default;
    SsdDevice& operator=(const SsdDevice&) = default;
    ~SsdDevice();

    // Fills the record. Always true.
    bool initialise(const IdentifyData& data, const std::string& disk, const std::string& path);

    bool present = true;
    std::string physicalDisk;  // "nvme0"
    std::string devPath;       // "/dev/nvme0"
    std::string modelNumber;
    std::string serialNumber;
    std::string fw_rev;
    int overTemperatureThreshold = 0;  // °C
    int underTemperatureThreshold = 0;
};

#endif
