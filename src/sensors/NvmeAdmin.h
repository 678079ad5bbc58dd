// The NVMe admin commands that are sent, as the NVM Express Base Specification numbers them, and the kernel's way to
// send them.
#ifndef ZELSENSORS_NVMEADMIN_H
#define ZELSENSORS_NVMEADMIN_H

#include <linux/nvme_ioctl.h>
#include <sys/ioctl.h>

#include <cstdint>

// The kernel's interface is fixed; these guard against headers of another shape.
static_assert(NVME_IOCTL_ADMIN_CMD == 0xC0484E41);
static_assert(NVME_IOCTL_ID == 0x4E40);
static_assert(sizeof(nvme_admin_cmd) == 72);

namespace nvme {

// "Admin Command Set", opcodes.
constexpr std::uint8_t OPCODE_GET_LOG_PAGE = 0x02;
constexpr std::uint8_t OPCODE_IDENTIFY = 0x06;
constexpr std::uint8_t OPCODE_GET_FEATURES = 0x0A;

constexpr std::uint32_t ALL_NAMESPACES = 0xFFFFFFFF;

// "Identify command", the Controller or Namespace Structure (CNS) in command dword 10.
constexpr std::uint8_t CNS_NAMESPACE = 0;
constexpr std::uint8_t CNS_CONTROLLER = 1;
constexpr unsigned IDENTIFY_SIZE = 4096;
// "Identify Controller data structure", first bytes and sizes.
constexpr unsigned SERIAL_NUMBER_OFFSET = 4;
constexpr unsigned SERIAL_NUMBER_SIZE = 20;
constexpr unsigned MODEL_NUMBER_OFFSET = 24;
constexpr unsigned MODEL_NUMBER_SIZE = 40;
constexpr unsigned FIRMWARE_REVISION_OFFSET = 64;
constexpr unsigned FIRMWARE_REVISION_SIZE = 8;
constexpr unsigned NUMBER_OF_NAMESPACES_OFFSET = 516;  // 32 bits, little-endian

// "Get Features command", dword 10: feature 04h (Temperature Threshold), select 1 (its default value). The answer is in
// the low 16 bits of the completion's dword 0, in Kelvin.
constexpr std::uint32_t DEFAULT_TEMPERATURE_THRESHOLD = 0x104;
// "Temperature Threshold" feature, dword 11: threshold type select, for the composite temperature.
constexpr std::uint32_t OVER_TEMPERATURE = 0x000000;
constexpr std::uint32_t UNDER_TEMPERATURE = 0x100000;

// "Get Log Page command", dword 10: page 02h (SMART / Health Information), 0x7F + 1 dwords.
constexpr std::uint32_t WHOLE_HEALTH_PAGE = 0x007F0002;
constexpr unsigned HEALTH_PAGE_SIZE = 512;
constexpr unsigned COMPOSITE_TEMPERATURE_OFFSET = 1;  // 16 bits, little-endian, in Kelvin

// Drives give whole Kelvin; 0 °C counts as 273 of them.
constexpr int ZERO_CELSIUS = 273;

// How a command says where its data goes.
inline std::uint64_t addressOf(void* data) {
    return reinterpret_cast<std::uintptr_t>(data);
}

}  // namespace nvme

#endif
