#include "Smbios.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <string>
#include <utility>

#include "EventLog.h"
#include "Status.h"

namespace {

constexpr char STRUCTURE[] = "/sys/firmware/dmi/entries/15-0/raw";
constexpr char AREA[] = "/sys/firmware/dmi/entries/15-0/system_event_log/raw_event_log";

// Far more than the standard's 16 bits allow.
constexpr std::size_t LONGEST = 1 << 20;

class Descriptor {
  public:
    explicit Descriptor(const char* path) : m_number(open(path, O_RDONLY | O_CLOEXEC)) {}
    ~Descriptor() {
        if (m_number >= 0) close(m_number);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int number() const { return m_number; }

  private:
    int m_number;
};

// 0, or the errno of what failed.
int readFile(const char* path, std::string& contents) {
    const Descriptor file(path);
    if (file.number() < 0) return errno;
    std::array<char, 4096> block{};
    while (contents.size() < LONGEST) {
        const ssize_t count = read(file.number(), block.data(), block.size());
        if (count == 0) break;
        if (count > 0)
            contents.append(block.data(), static_cast<std::size_t>(count));
        else if (errno != EINTR)
            return errno;
    }
    return 0;
}

sscode statusOf(int error) {
    switch (error) {
        case EACCES:
        case EPERM:
            return STATUS_LOG_FORBIDDEN;
        case ENOMEM:
        case EMFILE:
        case ENFILE:
            return STATUS_SHORTAGE;
        default:
            return STATUS_LOG_UNREADABLE;
    }
}

bool isAbsence(int error) {
    return error == ENOENT || error == ENOTDIR;
}

}  // namespace

sscode readEventLog(CSystemEventLog& log) {
    std::string structure;
    std::string area;
    if (const int error = readFile(STRUCTURE, structure)) {
        if (!isAbsence(error)) return statusOf(error);
    } else if (const int areaError = readFile(AREA, area)) {
        // EIO is the kernel's answer for a method of access that it does not have.
        if (!isAbsence(areaError) && areaError != EIO) return statusOf(areaError);
        structure.clear();
    }
    CSystemEventLog decoded = decodeEventLog(structure, area);
    log = std::move(decoded);
    return 0;
}
