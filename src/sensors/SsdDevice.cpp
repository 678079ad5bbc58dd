#include "SsdDevice.h"

#include "Quietly.h"
#include "log.h"

SsdDevice::SsdDevice() {
    LogQuick(LOG_DEBUG, "SsdDevice constructed");
}

SsdDevice::~SsdDevice() {
    quietly([] { LogQuick(LOG_DEBUG, "SsdDevice destroyed"); });
}

bool SsdDevice::initialise(const IdentifyData& data, const std::string& disk, const std::string& path) {
    Log(LOG_DEBUG, "SsdDevice::initialise - drive %s devPath %s", disk.c_str(), path.c_str());
    physicalDisk = disk;
    devPath = path;
    serialNumber = data.serialNumber;
    modelNumber = data.modelNumber;
    fw_rev = data.firmwareVersion;
    overTemperatureThreshold = data.overTemperatureThreshold;
    underTemperatureThreshold = data.underTemperatureThreshold;
    present = true;
    return true;
}
