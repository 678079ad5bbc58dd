// The lines that a drive in the driver's recovery causes.
#ifndef ZELSENSORS_TESTS_RECOVERY_H
#define ZELSENSORS_TESTS_RECOVERY_H

constexpr char FIRST[] = "SSD1 Temperature(00000001), device 1: 28, limits -15 to 85";
constexpr char FIRST_UNREAD[] = "SSD1 Temperature(00000001), device 1: 0, limits -15 to 85";
constexpr char SECOND[] = "SSD2 Temperature(00000002), device 2: 47, limits -15 to 85";
constexpr char OTHERS[] = "others: 48, 12048, 2 log lines";

constexpr char NOT_OPENED[] = "Error NvmeSsd::getSsdTemperature - Error while read /dev/nvme0 file";
constexpr char NOT_OPENED_ON_STANDARD_ERROR[] = "/dev/nvme0: Resource temporarily unavailable";
constexpr char INTERRUPTED[] =
    "Error SmartIo::nvme_read_identify - NVME_IOCTL_ADMIN_CMD failed: Interrupted system call";
constexpr char NOT_IDENTIFIED[] = "Error SmartIo::getIdentifyNVMeData - nvme_read_identify failed";

#endif
