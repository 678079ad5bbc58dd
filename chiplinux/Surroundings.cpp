#include "Surroundings.h"

#include <algorithm>
#include <filesystem>
#include <fstream>

namespace {

namespace fs = std::filesystem;

bool isThere(const char* path) {
    std::error_code error;
    return fs::exists(path, error);
}

// What /proc/cpuinfo says of the first processor after that word; empty where it does not.
std::string ofProcessor(const std::string& word) {
    std::ifstream file("/proc/cpuinfo");
    for (std::string line; std::getline(file, line);) {
        if (line.compare(0, word.size(), word) != 0) continue;
        const std::size_t colon = line.find(':');
        if (colon != std::string::npos) return line.substr(std::min(colon + 2, line.size()));
    }
    return "";
}

bool hasFlag(const std::string& flag) {
    return (' ' + ofProcessor("flags") + ' ').find(' ' + flag + ' ') != std::string::npos;
}

// By the marks that systemd, podman and docker leave.
bool isContainer() {
    return isThere("/run/systemd/container") || isThere("/run/.containerenv") || isThere("/.dockerenv");
}

// The driver for the sensors inside the processor; empty where none is known.
std::string driverOfProcessor() {
    if (hasFlag("hypervisor")) return "";
    const std::string maker = ofProcessor("vendor_id");
    if (maker == "GenuineIntel" && hasFlag("dtherm")) return "coretemp";
    return maker == "AuthenticAMD" ? "k10temp" : "";
}

// SCSI's word for a disk behind a SATA controller.
bool isSataDisk(const fs::path& disk) {
    std::ifstream file(disk / "device/vendor");
    std::string vendor;
    return std::getline(file, vendor) && vendor.compare(0, 4, "ATA ") == 0;
}

bool hasSataDisk() {
    std::error_code error;
    for (fs::directory_iterator disks("/sys/class/block", error); !error && disks != fs::directory_iterator();
         disks.increment(error)) {
        if (isSataDisk(disks->path())) return true;
    }
    return false;
}

Finding missing(const std::string& driver, const std::string& of) {
    return {"driver", driver, "it is not loaded, and would show " + of,
            "modprobe " + driver + "; if its sensors come, add the line " + driver +
                " to /etc/modules-load.d/sensors.conf, which loads it at each boot"};
}

}  // namespace

std::vector<Finding> whyNoChip() {
    std::vector<Finding> findings;
    const auto report = [&](const std::string& area, const std::string& text, const std::string& advice) {
        findings.push_back({area, "-", text, advice});
    };
    if (isContainer())
        report("machine", "it is a container, which mostly sees no sensors",
               "in a container: ask on the machine itself, outside of it");
    if (hasFlag("hypervisor"))
        report("machine", "it is virtual, and such a machine mostly has no sensors",
               "in a virtual machine: ask on the machine that it runs on");
    if (!isThere("/sys/class/hwmon")) {
        report("chip", "the kernel has no hardware monitoring: there is no /sys/class/hwmon",
               "mount /sys if it is not; otherwise boot a kernel with hardware monitoring, such as that of the package "
               "linux-image-amd64, since kernels for the cloud have none");
    } else {
        report("chip", "no driver is loaded that knows one",
               "run sensors-detect, of the package lm-sensors: it looks for chips and names their drivers; put those "
               "into /etc/modules-load.d/sensors.conf, and load them with modprobe");
    }
    return findings;
}

std::vector<Finding> missingDrivers(const std::vector<std::string>& prefixes) {
    const auto isLoaded = [&](const std::string& driver) {
        return std::find(prefixes.begin(), prefixes.end(), driver) != prefixes.end();
    };
    std::vector<Finding> findings;
    const std::string processor = driverOfProcessor();
    if (!processor.empty() && !isLoaded(processor))
        findings.push_back(missing(processor, "the processor's temperature"));
    if (hasSataDisk() && !isLoaded("drivetemp"))
        findings.push_back(missing("drivetemp", "the temperatures of SATA disks"));
    return findings;
}
