// The terminal's NVMe drives: finding them, and reading their temperatures.
//
// Failures are answered, never thrown; which of them are logged is said below. Not thread-safe.
#ifndef ZELSENSORS_NVMESSD_H
#define ZELSENSORS_NVMESSD_H

#include <string>
#include <vector>

#include "SmartIo.h"
#include "SsdDevice.h"

class NvmeSsd {
  public:
    // Looks for the controllers /dev/nvme0 to /dev/nvme9 and appends those that can be identified, in the order of
    // their names. True when at least one was appended. A second scan appends them again. What cannot be identified is
    // logged.
    bool scanNVMeDevices();

    // A copy of the list, in the order of discovery.
    std::vector<SsdDevice> getSsdList() const { return m_devices; }

    // Appends one drive. Always true.
    bool addSsdDevice(const IdentifyData& data, const std::string& physicalDisk, const std::string& devPath);

    // The composite temperature in °C, modulo 65536, of the controller /dev/nvme<index>. 0 when it cannot be opened
    // (logged) or the drive refuses (not logged); a real 0 °C looks the same. 65263, which is 0 K, when the kernel
    // refuses (not logged). The index is a number in /dev, not a position in the list.
    unsigned short getSsdTemperature(int index);

    // In whole degrees. The readings above are converted already.
    int kelvinToCelsius(int kelvin);

  protected:
    std::vector<SsdDevice> m_devices;
};

#endif
