#include "AdditionalInfo.h"

#include <cstdio>
#include <string>

#include "SettingsFile.h"
#include "chip.h"
#include "log.h"

namespace {

constexpr char SETTINGS_PATH[] = "/etc/tarn/sensor.conf";

// Drives are counted from 1 towards clients.
std::string nameOfDriveSensor(unsigned int number) {
    char hexadecimal[sizeof "00000000"];
    std::snprintf(hexadecimal, sizeof hexadecimal, "%08x", number);
    return "SSD" + std::to_string(number) + " Temperature(" + hexadecimal + ")";
}

TQS_NumericSensor makeDriveSensor(unsigned int position, const SsdDevice& drive, unsigned short celsius) {
    const unsigned int number = position + 1;
    const std::string name = nameOfDriveSensor(number);
    TQS_NumericSensor sensor(position);
    sensor.isAdditional = true;
    sensor.setAccuracy(0);
    sensor.setBaseUnits(0);
    sensor.setHysteresis(0);
    sensor.setIsLinear(false);
    sensor.setLowerThresholdFatal(0);
    sensor.setLowerThresholdNonCritical(0);
    sensor.setMaxReadable(0);
    sensor.setMinReadable(0);
    sensor.setNominalReading(0);
    sensor.setOtherSensorTypeDescription("");
    sensor.setRateUnits(0);
    sensor.setResolution(0);
    sensor.setSensorType(0);
    sensor.setUnitModifier(0);
    sensor.setUpperThresholdFatal(0);
    sensor.setUpperThresholdNonCritical(0);
    sensor.setName(name);
    sensor.setCaption("Temperature ");
    sensor.setCurrentReading(celsius);
    sensor.setDescription(name + ": Temperature sensor");
    sensor.setDeviceID(std::to_string(number));
    sensor.setUpperThresholdCritical(drive.overTemperatureThreshold);
    sensor.setLowerThresholdCritical(drive.underTemperatureThreshold);
    return sensor;
}

}  // namespace

void AdditionalInfo::initialise(std::vector<TQS_NumericSensor>* sensors) {
    int nvmeReadings = 0;
    getConfig(nvmeReadings);
    if (CPOSSystem::s_instance.IsGrebel() && nvmeReadings != 0) {
        Log(LOG_DEBUG, "AdditionalInfo::initialise is grebel");
        processGrebel(sensors);
    }
    if (CPOSSystem::s_instance.IsZan() && nvmeReadings != 0) Log(LOG_DEBUG, "AdditionalInfo::initialise is ZAN");
    initialised = true;
}

void AdditionalInfo::processGrebel(std::vector<TQS_NumericSensor>* sensors) {
    Log(LOG_INFO, "Processing additionals for Grebel machine");
    if (!nvmeSsd.scanNVMeDevices()) {
        Log(LOG_DEBUG, "AdditionalInfo::processGrebel - NvmeSsd devices not added.");
        return;
    }
    const std::vector<SsdDevice> drives = nvmeSsd.getSsdList();
    for (unsigned int position = 0; position < drives.size(); ++position) {
        const unsigned short celsius = nvmeSsd.getSsdTemperature(static_cast<int>(position));
        sensors->push_back(makeDriveSensor(position, drives[position], celsius));
    }
}

void AdditionalInfo::updateReading(TQS_NumericSensor& sensor) {
    LogQuick(LOG_DEBUG, "AdditionalInfo::UpdateReading (Sensor)");
    if (!sensor.needsReading()) {
        Log(LOG_DEBUG, "SensorProvider::UpdateReading - No need to update sensor %s yet", sensor.getName());
        return;
    }
    const std::vector<SsdDevice> drives = nvmeSsd.getSsdList();
    for (unsigned int position = 0; position < drives.size(); ++position) {
        const SsdDevice& drive = drives[position];
        Log(LOG_DEBUG, "AdditionalInfo::UpdateReading - Adding SsdDevice devPath=%s, fw_rev=%s, physicalDisk=%s",
            drive.devPath.c_str(), drive.fw_rev.c_str(), drive.physicalDisk.c_str());
        if (nameOfDriveSensor(position + 1) == sensor.getName()) {
            sensor.setCurrentReading(nvmeSsd.getSsdTemperature(static_cast<int>(position)));
            return;
        }
    }
}

void AdditionalInfo::getConfig(int& nvmeReadings) {
    readSettings(SETTINGS_PATH, [&nvmeReadings](const std::string& key, const std::string& value) {
        if (key != "NvmeReadings") {
            std::fputs(" Sensor configs not found.\n", stderr);
            return;
        }
        unsigned long number = 0;
        if (scanUnsigned(value, number) && number <= 1) nvmeReadings = static_cast<int>(number);
    });
}
