// A made-up /sys/class/hwmon and what it links to, laid out as the kernel does it. All of it lies in the sandbox's
// memory and goes with its reset.
#ifndef ZELSENSORS_TESTS_CHIPLINUX_SENSORTREE_H
#define ZELSENSORS_TESTS_CHIPLINUX_SENSORTREE_H

#include <filesystem>
#include <map>
#include <string>

namespace sensortree {

// Names and contents; a line feed is put behind each.
using Attributes = std::map<std::string, std::string>;

// A chip of this driver on a device, whose path begins below /sys/devices and ends in what its bus calls it. The
// kernel's number for it is `number`. Gives the directory of its attributes.
std::filesystem::path add(int number, const std::string& driver, const std::string& bus, const std::string& device,
                          const Attributes& attributes);

// An adapter at i2c-N and, below it, a chip.
void addAdapter(int adapter, const std::string& name);
std::filesystem::path addI2c(int number, const std::string& driver, int adapter, unsigned address,
                             const Attributes& attributes);
// One without a device.
std::filesystem::path addVirtual(int number, const std::string& driver, const Attributes& attributes);

void write(const std::filesystem::path& chip, const std::string& attribute, const std::string& contents);

// As when its driver is unbound: the link and the directory are gone.
void remove(const std::filesystem::path& chip);

}  // namespace sensortree

#endif
