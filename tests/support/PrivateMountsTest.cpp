// What a chroot whose "/" is no mount needs for mounts of its own, as package builders' roots do.
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <exception>
#include <filesystem>

#include "PrivateMounts.h"
#include "Sandbox.h"

namespace fs = std::filesystem;

namespace {

const fs::path ROOT = "/var/log/root";

class PrivateMountsTest : public testing::Test {
  protected:
    // A plain directory to be a root, on a mount that passes on what is mounted on it.
    void SetUp() override {
        REQUIRE_SANDBOX();
        fs::create_directories(ROOT / "proc");
        fs::create_directories(ROOT / "mine");
        ASSERT_EQ(mount("none", "/var/log", "none", MS_SHARED, nullptr), 0);
        ASSERT_EQ(mount("/proc", (ROOT / "proc").c_str(), "none", MS_BIND | MS_REC, nullptr), 0);
    }
    void TearDown() override {
        umount2((ROOT / "mine").c_str(), MNT_DETACH);
        umount2((ROOT / "proc").c_str(), MNT_DETACH);
        mount("none", "/var/log", "none", MS_PRIVATE, nullptr);
    }
};

bool isSameDirectory(const char* one, const char* other) {
    struct stat first {};
    struct stat second {};
    return stat(one, &first) == 0 && stat(other, &second) == 0 && first.st_dev == second.st_dev &&
           first.st_ino == second.st_ino;
}

// In a process of its own. 0: it has mounted a file system on /mine and is where it was.
int mountInChroot() {
    if (chroot(ROOT.c_str()) != 0 || chdir("/proc") != 0) return 1;
    try {
        enterPrivateMounts(geteuid(), getegid());
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 2;
    }
    if (mount("tmpfs", "/mine", "tmpfs", 0, nullptr) != 0 || mkdir("/mine/here", 0700) != 0) return 3;
    return isSameDirectory(".", "/proc") && access("/var", F_OK) != 0 ? 0 : 4;
}

TEST_F(PrivateMountsTest, OfAChrootThatIsNoMountReachNobodyElse) {
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) _exit(mountInChroot());
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(mount("none", (ROOT / "mine").c_str(), "none", MS_PRIVATE, nullptr), -1) << "the mount has come through";
}

}  // namespace
