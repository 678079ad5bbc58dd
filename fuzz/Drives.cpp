#include "Drives.h"

#include <fcntl.h>
#include <glob.h>
#include <linux/nvme_ioctl.h>
#include <sys/ioctl.h>

#include <cerrno>
#include <cstdarg>
#include <cstring>
#include <map>

#include "Property.h"

namespace {

constexpr int FIRST_DESCRIPTOR = 1000000;  // above all that the system hands out
constexpr std::uint32_t ALL_NAMESPACES = 0xFFFFFFFF;

drives::Drives s_drives;
int s_globCode = 0;
int s_nextDescriptor = FIRST_DESCRIPTOR;
std::map<int, drives::Drive*> s_open;
unsigned s_unreleased = 0;

std::string pathOf(std::size_t number) {
    return "/dev/nvme" + std::to_string(number);
}

drives::Drive* findDrive(const std::string& path) {
    for (std::size_t number = 0; number < s_drives.size(); ++number) {
        if (path == pathOf(number)) return &s_drives[number];
    }
    return nullptr;
}

drives::Drive& driveOf(int descriptor) {
    const auto found = s_open.find(descriptor);
    if (found == s_open.end()) fail("descriptor " + std::to_string(descriptor) + " is used though it is not open");
    return *found->second;
}

int openDrive(drives::Drive& drive, int flags) {
    require((flags & ~O_CLOEXEC) == (O_RDONLY | O_NONBLOCK), "a drive is opened for reading, without waiting");
    const int error = drive.openings++ == 0 ? drive.openError : drive.laterOpenError;
    if (error != 0) {
        errno = error;
        return -1;
    }
    s_open[s_nextDescriptor] = &drive;
    return s_nextDescriptor++;
}

// Fills the answer in, and `page` into the command's buffer.
int answer(nvme_admin_cmd& command, const drives::Answer& answer, const void* page) {
    if (answer.returned == -1) {
        errno = EIO;
        return -1;
    }
    if (page != nullptr) std::memcpy(reinterpret_cast<void*>(command.addr), page, command.data_len);
    command.result = answer.result;
    return answer.returned;
}

// What a command must be, apart from where its data goes.
nvme_admin_cmd command(std::uint8_t opcode, std::uint32_t nsid, std::uint32_t length, std::uint32_t cdw10,
                       std::uint32_t cdw11 = 0) {
    nvme_admin_cmd made{};
    made.opcode = opcode;
    made.nsid = nsid;
    made.data_len = length;
    made.cdw10 = cdw10;
    made.cdw11 = cdw11;
    return made;
}

bool isSame(nvme_admin_cmd sent, const nvme_admin_cmd& expected) {
    if ((sent.addr != 0) != (expected.data_len != 0)) return false;
    sent.addr = 0;
    return std::memcmp(&sent, &expected, sizeof sent) == 0;
}

int answerCommand(drives::Drive& drive, nvme_admin_cmd& sent) {
    static const std::array<char, 4096> namespacePage{};
    if (isSame(sent, command(0x06, 0, 4096, 1))) {
        return answer(sent, drive.identifyController, drive.controllerPage.data());
    }
    if (isSame(sent, command(0x06, sent.nsid, 4096, 0))) {
        drive.askedForNamespaces.push_back(sent.nsid);
        return answer(sent, drive.identifyNamespace, namespacePage.data());
    }
    if (isSame(sent, command(0x0A, ALL_NAMESPACES, 0, 0x104, 0x100000))) return answer(sent, drive.under, nullptr);
    if (isSame(sent, command(0x0A, ALL_NAMESPACES, 0, 0x104, 0))) return answer(sent, drive.over, nullptr);
    if (isSame(sent, command(0x02, ALL_NAMESPACES, 512, 0x007F0002))) {
        return answer(sent, drive.health, drive.healthPage.data());
    }
    fail("a command is none of those that the provider sends");
}

int answerIoctl(drives::Drive& drive, unsigned long request, void* argument) {
    if (request == NVME_IOCTL_ID) {
        if (drive.namespaceId == -1) errno = ENOTTY;
        return drive.namespaceId;
    }
    require(request == NVME_IOCTL_ADMIN_CMD, "a drive gets NVMe requests only");
    return answerCommand(drive, *static_cast<nvme_admin_cmd*>(argument));
}

}  // namespace

namespace drives {

void set(const Drives& drives, int globCode) {
    require(s_open.empty(), "no drive is open when the drives change");
    s_drives = drives;
    s_globCode = globCode;
    s_nextDescriptor = FIRST_DESCRIPTOR;
}

const Drives& now() {
    return s_drives;
}

unsigned openDescriptors() {
    return static_cast<unsigned>(s_open.size());
}

unsigned unreleasedMatches() {
    return s_unreleased;
}

}  // namespace drives

// The linker sends the code under test here (--wrap). The names are its own.
extern "C" {
int __real_open(const char* path, int flags, ...);
int __real_close(int descriptor);
int __real_fcntl(int descriptor, int request, ...);
int __real_ioctl(int descriptor, unsigned long request, ...);

int __wrap_open(const char* path, int flags, ...);
int __wrap_close(int descriptor);
int __wrap_fcntl(int descriptor, int request, ...);
int __wrap_ioctl(int descriptor, unsigned long request, ...);
int __wrap_glob(const char* pattern, int flags, int (*failed)(const char*, int), glob_t* matches);
void __wrap_globfree(glob_t* matches);

int __wrap_open(const char* path, int flags, ...) {
    if (drives::Drive* drive = findDrive(path)) return openDrive(*drive, flags);
    require(std::string(path).rfind("/dev/nvme", 0) != 0, "no other device is opened");
    va_list arguments;
    va_start(arguments, flags);
    const unsigned mode = va_arg(arguments, unsigned);
    va_end(arguments);
    return __real_open(path, flags, mode);
}

int __wrap_close(int descriptor) {
    if (descriptor < FIRST_DESCRIPTOR) return __real_close(descriptor);
    driveOf(descriptor);
    s_open.erase(descriptor);
    return 0;
}

int __wrap_fcntl(int descriptor, int request, ...) {
    va_list arguments;
    va_start(arguments, request);
    const long argument = va_arg(arguments, long);
    va_end(arguments);
    if (descriptor < FIRST_DESCRIPTOR) return __real_fcntl(descriptor, request, argument);
    require(request == F_SETFD && static_cast<int>(argument) == FD_CLOEXEC, "a drive is closed on exec");
    if (driveOf(descriptor).takesFlag) return 0;
    errno = EBADF;
    return -1;
}

int __wrap_ioctl(int descriptor, unsigned long request, ...) {
    va_list arguments;
    va_start(arguments, request);
    void* argument = va_arg(arguments, void*);
    va_end(arguments);
    if (descriptor < FIRST_DESCRIPTOR) return __real_ioctl(descriptor, request, argument);
    return answerIoctl(driveOf(descriptor), request, argument);
}

int __wrap_glob(const char* pattern, int flags, int (*failed)(const char*, int), glob_t* matches) {
    requireSame(pattern, "/dev/nvme[0-9]", "the pattern");
    require(flags == GLOB_ERR && failed == nullptr, "glob is called without options but GLOB_ERR");
    matches->gl_pathc = 0;
    matches->gl_pathv = new char*[s_drives.size() + 1];
    for (std::size_t number = 0; number < s_drives.size(); ++number) {
        if (s_drives[number].isListed) matches->gl_pathv[matches->gl_pathc++] = strdup(pathOf(number).c_str());
    }
    matches->gl_pathv[matches->gl_pathc] = nullptr;
    ++s_unreleased;
    return s_globCode;
}

void __wrap_globfree(glob_t* matches) {
    require(s_unreleased > 0, "matches are released once");
    --s_unreleased;
    for (std::size_t i = 0; i < matches->gl_pathc; ++i) free(matches->gl_pathv[i]);
    delete[] matches->gl_pathv;
    matches->gl_pathv = nullptr;
}
}
