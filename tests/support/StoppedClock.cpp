#include "StoppedClock.h"

#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <ctime>

namespace {

constexpr long RUNNING = -1;

std::atomic<long> s_stoppedAt{RUNNING};  // milliseconds

}  // namespace

StoppedClock::StoppedClock() {
    s_stoppedAt = 1000000;
}

StoppedClock::~StoppedClock() {
    s_stoppedAt = RUNNING;
}

void StoppedClock::advanceMilliseconds(long milliseconds) {
    s_stoppedAt += milliseconds;
}

extern "C" __attribute__((visibility("default"))) int clock_gettime(clockid_t clock, timespec* time) noexcept {
    const long moment = s_stoppedAt;
    if (clock != CLOCK_MONOTONIC || moment == RUNNING) return static_cast<int>(syscall(SYS_clock_gettime, clock, time));
    time->tv_sec = moment / 1000;
    time->tv_nsec = moment % 1000 * 1000000;
    return 0;
}
