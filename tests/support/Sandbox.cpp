#include "Sandbox.h"

#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <set>
#include <stdexcept>
#include <system_error>

#include "FileContents.h"
#include "PrivateMounts.h"
#include "SandboxEntry.h"

namespace fs = std::filesystem;

namespace {

// Everything that the machine's own directories are still needed for lies below the private /var/log.
const fs::path MACHINE_ETC = "/var/log/.machine-etc";
const fs::path DEV_STAGE = "/var/log/.dev";

std::string s_reason = "the program did not enter its sandbox";
std::set<std::string> s_ownDeviceNames;
bool s_isHardwareHidden = false;

[[noreturn]] void fail(const std::string& what) {
    throw std::system_error(errno, std::generic_category(), what);
}

void mountOver(const char* source, const fs::path& target, const char* type, unsigned long flags, const char* options) {
    if (mount(source, target.c_str(), type, flags, options) != 0) fail("mount on " + target.string());
}

void mountMemory(const fs::path& target) {
    mountOver("tmpfs", target, "tmpfs", MS_NOSUID, "mode=755");
}

// The machine's entries, but for /etc/tarn, seen through symbolic links.
void replaceEtc() {
    fs::create_directory(MACHINE_ETC);
    mountOver("/etc", MACHINE_ETC, "none", MS_BIND | MS_REC, nullptr);
    mountMemory("/etc");
    for (const fs::directory_entry& entry : fs::directory_iterator(MACHINE_ETC)) {
        const fs::path own = "/etc" / entry.path().filename();
        if (own.filename() == "tarn") continue;
        fs::create_symlink(entry.is_symlink() ? fs::read_symlink(entry.path()) : entry.path(), own);
    }
    fs::create_directory("/etc/tarn");
}

void bindDevice(const std::string& name) {
    const fs::path machines = fs::path("/dev") / name;
    if (!fs::exists(machines)) return;
    const fs::path own = DEV_STAGE / name;
    if (fs::is_directory(machines))
        fs::create_directory(own);
    else
        std::ofstream(own).flush();
    mountOver(machines.c_str(), own, "none", MS_BIND | MS_REC, nullptr);
}

void replaceDev() {
    fs::create_directory(DEV_STAGE);
    mountMemory(DEV_STAGE);
    for (const char* name : {"null", "zero", "full", "random", "urandom", "tty", "ptmx", "pts"}) bindDevice(name);
    fs::create_directory(DEV_STAGE / "shm");
    fs::permissions(DEV_STAGE / "shm", fs::perms::all | fs::perms::sticky_bit);
    fs::create_symlink("/proc/self/fd", DEV_STAGE / "fd");
    fs::create_symlink("/proc/self/fd/0", DEV_STAGE / "stdin");
    fs::create_symlink("/proc/self/fd/1", DEV_STAGE / "stdout");
    fs::create_symlink("/proc/self/fd/2", DEV_STAGE / "stderr");
    mountOver(DEV_STAGE.c_str(), "/dev", "none", MS_MOVE, nullptr);
    for (const fs::directory_entry& entry : fs::directory_iterator("/dev"))
        s_ownDeviceNames.insert(entry.path().filename());
}

void makeNamespace() {
    enterPrivateMounts(geteuid(), getegid());
    mountMemory("/var/log");
    fs::create_directory("/var/log/tarn");
    replaceEtc();
    replaceDev();
}

void emptyDirectory(const fs::path& directory) {
    fs::create_directories(directory);
    for (const fs::directory_entry& entry : fs::directory_iterator(directory)) fs::remove_all(entry.path());
}

void writeFile(const fs::path& path, const std::string& contents) {
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file << contents;
    file.close();
    if (!file) throw std::runtime_error("cannot write " + path.string());
}

void emptyHardware() {
    for (const char* directory : {"/sys/class", "/sys/devices", "/sys/firmware", "/etc/sensors.d"})
        emptyDirectory(directory);
    fs::remove("/etc/sensors3.conf");
}

}  // namespace

namespace sandbox {

void enter() {
    try {
        makeNamespace();
        s_reason.clear();
    } catch (const std::exception& error) {
        s_reason = std::string("no private mount namespace: ") + error.what();
    }
}

const std::string& whyUnavailable() {
    return s_reason;
}

void reset() {
    if (!s_reason.empty()) throw std::runtime_error(s_reason);  // these would be the machine's directories
    emptyDirectory("/etc/tarn");
    emptyDirectory("/var/log/tarn");
    for (const fs::directory_entry& entry : fs::directory_iterator("/dev"))
        if (s_ownDeviceNames.count(entry.path().filename()) == 0) fs::remove_all(entry.path());
    if (s_isHardwareHidden) emptyHardware();
}

void writeLogConfiguration(const std::string& contents) {
    writeFile("/etc/tarn/log.conf", contents);
}

void writeSensorConfiguration(const std::string& contents) {
    writeFile("/etc/tarn/sensor.conf", contents);
}

void hideHardware() {
    if (!s_reason.empty()) throw std::runtime_error(s_reason);
    if (s_isHardwareHidden) return;
    for (const char* directory : {"/sys/class", "/sys/devices", "/sys/firmware"}) mountMemory(directory);
    fs::remove("/etc/sensors.d");  // the machine's, a link
    s_isHardwareHidden = true;
    emptyHardware();
}

void writeLibsensorsConfiguration(const std::string& contents) {
    writeFile("/etc/sensors3.conf", contents);
}

std::string readLog() {
    return contentsOf("/var/log/tarn/tarn.log");
}

}  // namespace sandbox
