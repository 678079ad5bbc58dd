#include "PrivateMounts.h"

#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <system_error>

namespace {

[[noreturn]] void fail(const std::string& what, int error = errno) {
    throw std::system_error(error, std::generic_category(), what);
}

class Descriptor {
  public:
    Descriptor(const char* path, int flags) : m_number(open(path, flags | O_CLOEXEC)) {
        if (m_number < 0) fail(path);
    }
    ~Descriptor() { close(m_number); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int number() const { return m_number; }

  private:
    int m_number;
};

void writeProcFile(const char* path, const std::string& text) {
    const Descriptor file(path, O_WRONLY);
    if (write(file.number(), text.data(), text.size()) != static_cast<ssize_t>(text.size())) fail(path);
}

std::string idMap(unsigned inside, unsigned outside) {
    return std::to_string(inside) + " " + std::to_string(outside) + " 1";
}

void unshareMounts(uid_t user, gid_t group) {
    const std::string users = idMap(user, geteuid());
    const std::string groups = idMap(group, getegid());
    if (unshare(CLONE_NEWNS) == 0) return;
    if (unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0) fail("unshare");
    writeProcFile("/proc/self/setgroups", "deny");
    writeProcFile("/proc/self/uid_map", users);
    writeProcFile("/proc/self/gid_map", groups);
}

bool makePrivate() {
    return mount("none", "/", "none", MS_REC | MS_PRIVATE, nullptr) == 0;
}

// The chroot's "/" lies on a mount that is out of its sight. setns() leads to the namespace's own root, even from
// inside the namespace; from there all mounts are in sight.
void makePrivateFromChroot() {
    const Descriptor root("/", O_PATH | O_DIRECTORY);
    const Descriptor directory(".", O_PATH | O_DIRECTORY);
    const Descriptor mounts("/proc/self/ns/mnt", O_RDONLY);
    if (setns(mounts.number(), CLONE_NEWNS) != 0) fail("setns");
    const int error = makePrivate() ? 0 : errno;
    if (fchdir(root.number()) != 0 || chroot(".") != 0 || fchdir(directory.number()) != 0) {
        std::perror("back into the chroot");  // outside of it nothing must go on
        std::abort();
    }
    if (error != 0) fail("mount on the namespace's root", error);
}

}  // namespace

void enterPrivateMounts(uid_t user, gid_t group) {
    unshareMounts(user, group);
    if (makePrivate()) return;
    if (errno != EINVAL) fail("mount on /");
    makePrivateFromChroot();
}
