#include "NvmeSsd.h"

#include <fcntl.h>
#include <glob.h>

#include <array>
#include <cstdint>
#include <cstdio>

#include "FileDescriptor.h"
#include "NvmeAdmin.h"
#include "log.h"

namespace {

// Controllers only: neither their namespaces (nvme0n1) nor numbers of two digits.
constexpr char CONTROLLERS[] = "/dev/nvme[0-9]";

// The matches of a pattern, sorted; released with the object.
class GlobMatches {
  public:
    explicit GlobMatches(const char* pattern) : m_code(glob(pattern, GLOB_ERR, nullptr, &m_matches)) {}
    ~GlobMatches() { globfree(&m_matches); }
    GlobMatches(const GlobMatches&) = delete;
    GlobMatches& operator=(const GlobMatches&) = delete;

    int code() const { return m_code; }  // what glob() answered
    char** begin() const { return m_matches.gl_pathv; }
    char** end() const { return m_matches.gl_pathv + m_matches.gl_pathc; }

  private:
    glob_t m_matches{};
    int m_code;
};

}  // namespace

bool NvmeSsd::scanNVMeDevices() {
    Log(LOG_DEBUG, "NvmeSsd::scanNVMeDevices");
    const GlobMatches controllers(CONTROLLERS);
    if (controllers.code() != 0) {
        if (controllers.code() == GLOB_NOSPACE) Log(LOG_ERROR, "SsdManager::scanNVMeDevice - GLOB_NOSPACE");
        return false;
    }
    bool added = false;
    for (const char* match : controllers) {
        const std::string devPath = match;
        IdentifyData data;
        if (!SmartIo::getIdentifyNVMeData(devPath, data)) continue;
        const std::string physicalDisk = devPath.substr(devPath.rfind('/') + 1);
        if (addSsdDevice(data, physicalDisk, devPath)) added = true;
    }
    return added;
}

bool NvmeSsd::addSsdDevice(const IdentifyData& data, const std::string& physicalDisk, const std::string& devPath) {
    SsdDevice device;
    LogQuick(LOG_DEBUG, "NvmeSsd::addSsdDevice");
    if (!device.initialise(data, physicalDisk, devPath)) return false;
    m_devices.push_back(device);
    return true;
}

unsigned short NvmeSsd::getSsdTemperature(int index) {
    Log(LOG_DEBUG, "NvmeSsd::getSsdTemperature - starting");
    const std::string path = "/dev/nvme" + std::to_string(index);
    const FileDescriptor device(open(path.c_str(), O_RDONLY | O_NONBLOCK));
    if (!device.isOpen()) {
        std::perror(path.c_str());
        Log(LOG_ERROR, "NvmeSsd::getSsdTemperature - Error while read %s file", path.c_str());
        return 0;
    }
    std::array<std::uint8_t, nvme::HEALTH_PAGE_SIZE> page{};
    nvme_admin_cmd command{};
    command.opcode = nvme::OPCODE_GET_LOG_PAGE;
    command.nsid = nvme::ALL_NAMESPACES;
    command.addr = nvme::addressOf(page.data());
    command.data_len = nvme::HEALTH_PAGE_SIZE;
    command.cdw10 = nvme::WHOLE_HEALTH_PAGE;
    // Where the kernel itself refuses, the page stays zero and is taken as a reading of 0 K.
    if (ioctl(device.get(), NVME_IOCTL_ADMIN_CMD, &command) > 0) return 0;
    const int kelvin = page[nvme::COMPOSITE_TEMPERATURE_OFFSET] + 256 * page[nvme::COMPOSITE_TEMPERATURE_OFFSET + 1];
    return static_cast<unsigned short>(kelvin - nvme::ZERO_CELSIUS);
}

int NvmeSsd::kelvinToCelsius(int kelvin) {
    return kelvin - nvme::ZERO_CELSIUS;
}
