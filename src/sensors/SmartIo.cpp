#include "SmartIo.h"

#include <fcntl.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>

#include "FileDescriptor.h"
#include "NvmeAdmin.h"
#include "log.h"

namespace {

using IdentifyPage = std::array<char, nvme::IDENTIFY_SIZE>;

std::uint32_t numberOfNamespaces(const IdentifyPage& controller) {
    std::uint32_t number = 0;
    for (unsigned i = 4; i > 0; --i) {
        number = number << 8 | static_cast<std::uint8_t>(controller[nvme::NUMBER_OF_NAMESPACES_OFFSET + i - 1]);
    }
    return number;
}

// What the drive says about the namespace is not used. It only matters that the drive answers, and not even that where
// the namespace was guessed.
bool identifyNamespace(int fd, int namespaceId, const IdentifyPage& controller) {
    IdentifyPage page{};
    if (namespaceId == -1) {
        if (numberOfNamespaces(controller) == 1) {
            SmartIo::nvme_read_identify(fd, 1, nvme::CNS_NAMESPACE, page.data(), nvme::IDENTIFY_SIZE);
        }
        return true;
    }
    if (!SmartIo::nvme_read_identify(fd, static_cast<unsigned int>(namespaceId), nvme::CNS_NAMESPACE, page.data(),
                                     nvme::IDENTIFY_SIZE)) {
        Log(LOG_ERROR, "SmartIo::getIdentifyNVMeData - nvme_read_identify failed id_ns");
        return false;
    }
    return true;
}

// `which` is the threshold's name in the log. A refusal by the kernel counts as a threshold of 0 K; only one by the
// drive is a failure.
bool readThreshold(int fd, std::uint32_t type, const char* which, int& celsius) {
    nvme_admin_cmd command{};
    command.opcode = nvme::OPCODE_GET_FEATURES;
    command.nsid = nvme::ALL_NAMESPACES;
    command.cdw10 = nvme::DEFAULT_TEMPERATURE_THRESHOLD;
    command.cdw11 = type;
    if (ioctl(fd, NVME_IOCTL_ADMIN_CMD, &command) > 0) {
        Log(LOG_ERROR, "NvmeSsd::getIdentifyNVMeData - error reading %s Temperature Threshold", which);
        return false;
    }
    Log(LOG_DEBUG, "NvmeSsd::getIdentifyNVMeData - %s Temperature Threshold RESULT: %ld\n", which,
        static_cast<long>(command.result));
    celsius = static_cast<int>(command.result & 0xFFFF) - nvme::ZERO_CELSIUS;
    return true;
}

void takeTexts(const IdentifyPage& controller, IdentifyData& data) {
    data.modelNumber.assign(&controller[nvme::MODEL_NUMBER_OFFSET], nvme::MODEL_NUMBER_SIZE);
    Log(LOG_DEBUG, "Model Number: %s", data.modelNumber.c_str());
    data.serialNumber.assign(&controller[nvme::SERIAL_NUMBER_OFFSET], nvme::SERIAL_NUMBER_SIZE);
    Log(LOG_DEBUG, "Serial Number: %s", data.serialNumber.c_str());
    data.firmwareVersion.assign(&controller[nvme::FIRMWARE_REVISION_OFFSET], nvme::FIRMWARE_REVISION_SIZE);
    Log(LOG_DEBUG, "Firmware Version: %s", data.firmwareVersion.c_str());
}

}  // namespace

bool SmartIo::nvme_read_identify(int fd, unsigned int nsid, unsigned char cns, void* data, unsigned int data_len) {
    std::memset(data, 0, data_len);
    nvme_admin_cmd command{};
    command.opcode = nvme::OPCODE_IDENTIFY;
    command.nsid = nsid;
    command.addr = nvme::addressOf(data);
    command.data_len = data_len;
    command.cdw10 = cns;
    if (ioctl(fd, NVME_IOCTL_ADMIN_CMD, &command) < 0) {
        Log(LOG_ERROR, "SmartIo::nvme_read_identify - NVME_IOCTL_ADMIN_CMD failed: %s", std::strerror(errno));
        return false;
    }
    if (command.result != 0) {
        Log(LOG_ERROR, "SmartIo::nvme_read_identify - result failed: %d", static_cast<int>(command.result));
        return false;
    }
    return true;
}

bool SmartIo::getIdentifyNVMeData(const std::string& devPath, IdentifyData& data) {
    const FileDescriptor device(open(devPath.c_str(), O_RDONLY | O_NONBLOCK));
    if (!device.isOpen()) {
        Log(LOG_ERROR, "SmartIo::getIdentifyNVMeData - Open %s failed, %d", devPath.c_str(), errno);
        return false;
    }
    const int fd = device.get();
    if (fcntl(fd, F_SETFD, FD_CLOEXEC) < 0) {
        Log(LOG_ERROR, "SmartIo::getIdentifyNVMeData - fcntl %s failed, %d", devPath.c_str(), errno);
        return false;
    }
    data.namespaceId = ioctl(fd, NVME_IOCTL_ID);
    IdentifyPage controller;
    if (!nvme_read_identify(fd, 0, nvme::CNS_CONTROLLER, controller.data(), nvme::IDENTIFY_SIZE)) {
        Log(LOG_ERROR, "SmartIo::getIdentifyNVMeData - nvme_read_identify failed");
        return false;
    }
    if (!identifyNamespace(fd, data.namespaceId, controller)) return false;
    if (!readThreshold(fd, nvme::UNDER_TEMPERATURE, "Under", data.underTemperatureThreshold)) return false;
    if (!readThreshold(fd, nvme::OVER_TEMPERATURE, "Over", data.overTemperatureThreshold)) return false;
    takeTexts(controller, data);
    return true;
}
