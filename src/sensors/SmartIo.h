// What an NVMe drive says about itself, asked through the kernel's admin pass-through. No state, and each call has a
// descriptor of its own.
#ifndef ZELSENSORS_SMARTIO_H
#define ZELSENSORS_SMARTIO_H

#include <string>

// The texts have the full width of their fields, with the blanks and NUL bytes that fill it.
struct IdentifyData {
    std::string serialNumber;          // 20 bytes
    std::string modelNumber;           // 40 bytes
    std::string firmwareVersion;       // 8 bytes
    int overTemperatureThreshold = 0;  // °C
    int underTemperatureThreshold = 0;
    int namespaceId = -1;  // -1: unknown
};

class SmartIo {
  public:
    // Opens the controller device and fills `data`. False: it could not be opened or identified, which has been logged;
    // `data` then holds what was learnt until then.
    static bool getIdentifyNVMeData(const std::string& devPath, IdentifyData& data);

    // One Identify command. `cns` chooses the structure (nvme::CNS_...), which fills `data` of `data_len` bytes. False,
    // with a line in the log: the kernel refused, or the command's result is not 0. A drive's refusal by status alone
    // counts as success, and leaves `data` zero.
    static bool nvme_read_identify(int fd, unsigned int nsid, unsigned char cns, void* data, unsigned int data_len);
};

#endif
