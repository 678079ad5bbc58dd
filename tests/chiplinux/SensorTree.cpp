#include "SensorTree.h"

#include <array>
#include <cstdio>
#include <fstream>
#include <stdexcept>

namespace fs = std::filesystem;

namespace sensortree {

namespace {

const fs::path CLASS = "/sys/class/hwmon";

std::string numbered(const std::string& name, int number) {
    return name + std::to_string(number);
}

fs::path addDirectory(int number, const std::string& driver, const fs::path& above, const Attributes& attributes) {
    const fs::path directory = above / "hwmon" / numbered("hwmon", number);
    fs::create_directories(directory);
    write(directory, "name", driver);
    for (const auto& [name, contents] : attributes) write(directory, name, contents);
    fs::create_directories(CLASS);
    fs::create_symlink(directory, CLASS / directory.filename());
    return directory;
}

}  // namespace

fs::path add(int number, const std::string& driver, const std::string& bus, const std::string& device,
             const Attributes& attributes) {
    const fs::path path = fs::path("/sys/devices") / device;
    fs::path directory = addDirectory(number, driver, path, attributes);
    if (!fs::is_symlink(path / "subsystem")) fs::create_symlink("/sys/bus/" + bus, path / "subsystem");
    fs::create_symlink("../..", directory / "device");
    return directory;
}

void addAdapter(int adapter, const std::string& name) {
    const fs::path directory = fs::path("/sys/class/i2c-adapter") / numbered("i2c-", adapter);
    fs::create_directories(directory);
    write(directory, "name", name);
}

fs::path addI2c(int number, const std::string& driver, int adapter, unsigned address, const Attributes& attributes) {
    std::array<char, 64> device{};
    std::snprintf(device.data(), device.size(), "pci0000:00/0000:00:1f.3/i2c-%d/%d-%04x", adapter, adapter, address);
    return add(number, driver, "i2c", device.data(), attributes);
}

fs::path addVirtual(int number, const std::string& driver, const Attributes& attributes) {
    return addDirectory(number, driver, "/sys/devices/virtual", attributes);
}

void write(const fs::path& chip, const std::string& attribute, const std::string& contents) {
    std::ofstream file(chip / attribute, std::ios::binary | std::ios::trunc);
    file << contents << '\n';
    file.close();
    if (!file) throw std::runtime_error("cannot write " + (chip / attribute).string());
}

void remove(const fs::path& chip) {
    fs::remove(CLASS / chip.filename());
    fs::remove_all(chip);
}

}  // namespace sensortree
