#include "cli/PrivateLog.h"

#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>

namespace host {
namespace {

namespace fs = std::filesystem;

const char* const LOG_DIRECTORY = "/var/log/tarn";

// What is hidden: the log's directory, or the one above, where that one is missing.
std::string hiddenDirectory() {
    std::error_code error;
    return fs::is_directory(LOG_DIRECTORY, error) ? LOG_DIRECTORY : fs::path(LOG_DIRECTORY).parent_path().string();
}

bool isBelow(const std::string& file, const fs::path& directory) {
    std::error_code error;
    const fs::path whole = fs::weakly_canonical(file, error);
    const fs::path above = fs::weakly_canonical(directory, error);
    return std::mismatch(above.begin(), above.end(), whole.begin(), whole.end()).first == above.end();
}

bool writeFile(const char* path, const std::string& text) {
    const int file = open(path, O_WRONLY | O_CLOEXEC);
    if (file < 0) return false;
    const bool isWritten = write(file, text.data(), text.size()) == static_cast<ssize_t>(text.size());
    close(file);
    return isWritten;
}

bool unshareMounts() {
    const std::string user = std::to_string(geteuid());
    const std::string group = std::to_string(getegid());
    if (unshare(CLONE_NEWNS) == 0) return true;
    return unshare(CLONE_NEWUSER | CLONE_NEWNS) == 0 && writeFile("/proc/self/setgroups", "deny") &&
           writeFile("/proc/self/uid_map", user + ' ' + user + " 1") &&
           writeFile("/proc/self/gid_map", group + ' ' + group + " 1");
}

bool enter(const std::string& hidden) {
    return unshareMounts() && mount("none", "/", "none", MS_REC | MS_PRIVATE, nullptr) == 0 &&
           mount("tmpfs", hidden.c_str(), "tmpfs", MS_NOSUID | MS_NODEV | MS_NOEXEC, "mode=755") == 0 &&
           (mkdir(LOG_DIRECTORY, 0755) == 0 || errno == EEXIST);
}

// Tried by a child: what fails half-way could not be taken back.
bool canEnter(const std::string& hidden) {
    const pid_t child = fork();
    if (child == 0) _exit(enter(hidden) ? 0 : 1);
    int status = 0;
    while (child > 0 && waitpid(child, &status, 0) < 0) {
        if (errno != EINTR) return false;
    }
    return child > 0 && status == 0;
}

}  // namespace

bool enterPrivateLog(const std::vector<std::string>& needed) {
    const std::string hidden = hiddenDirectory();
    const bool isNeeded =
        std::any_of(needed.begin(), needed.end(), [&](const std::string& file) { return isBelow(file, hidden); });
    return !isNeeded && canEnter(hidden) && enter(hidden);
}

}  // namespace host
