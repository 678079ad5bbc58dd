// Preloaded into a program: as it forces a regular file to the disk, the signal comes whose number SIGNAL_AT_SYNC
// holds, and the disk takes as many seconds as SECONDS_OF_SYNC says.
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <ctime>

namespace {

long numberIn(const char* variable) {
    const char* number = std::getenv(variable);
    return number == nullptr ? 0 : std::strtol(number, nullptr, 10);
}

}  // namespace

// Seen by whoever loads it, which is not the default of this project.
#pragma GCC visibility push(default)
extern "C" {

int fsync(int file) {
    struct stat status {};
    if (fstat(file, &status) == 0 && S_ISREG(status.st_mode)) {
        kill(getpid(), static_cast<int>(numberIn("SIGNAL_AT_SYNC")));
        const timespec duration{numberIn("SECONDS_OF_SYNC"), 0};
        nanosleep(&duration, nullptr);
    }
    return static_cast<int>(syscall(SYS_fsync, file));
}

}  // extern "C"
#pragma GCC visibility pop
