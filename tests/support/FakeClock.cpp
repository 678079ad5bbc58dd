#include "FakeClock.h"

#include <cerrno>
#include <ctime>
#include <mutex>

namespace {

enum class Mode { Real, Set, Failing };

std::mutex s_guard;
Mode s_mode = Mode::Real;
timeval s_setTime{};
int s_failure = 0;
unsigned s_callsToFailure = 0;  // 0: no single call is to fail
int s_singleFailure = 0;

int realTime(timeval* now) {
    timespec precise{};
    const int result = clock_gettime(CLOCK_REALTIME, &precise);
    now->tv_sec = precise.tv_sec;
    now->tv_usec = precise.tv_nsec / 1000;
    return result;
}

}  // namespace

namespace fakeclock {

void set(timeval now) {
    const std::lock_guard<std::mutex> lock(s_guard);
    s_mode = Mode::Set;
    s_setTime = now;
}

void advanceMilliseconds(long milliseconds) {
    const std::lock_guard<std::mutex> lock(s_guard);
    const timeval step{milliseconds / 1000, (milliseconds % 1000) * 1000};
    timeradd(&s_setTime, &step, &s_setTime);
    if (s_setTime.tv_usec < 0) {
        s_setTime.tv_usec += 1000000;
        --s_setTime.tv_sec;
    }
}

void failWith(int error) {
    const std::lock_guard<std::mutex> lock(s_guard);
    s_mode = Mode::Failing;
    s_failure = error;
}

void failCall(unsigned nth, int error) {
    const std::lock_guard<std::mutex> lock(s_guard);
    s_callsToFailure = nth;
    s_singleFailure = error;
}

bool isFailurePending() {
    const std::lock_guard<std::mutex> lock(s_guard);
    return s_callsToFailure > 0;
}

void useReal() {
    const std::lock_guard<std::mutex> lock(s_guard);
    s_mode = Mode::Real;
}

}  // namespace fakeclock

extern "C" __attribute__((visibility("default"))) int gettimeofday(timeval* __restrict now, void* __restrict) noexcept {
    const std::lock_guard<std::mutex> lock(s_guard);
    if (s_callsToFailure > 0 && --s_callsToFailure == 0) {
        errno = s_singleFailure;
        return -1;
    }
    if (s_mode == Mode::Real) return realTime(now);
    if (s_mode == Mode::Failing) {
        errno = s_failure;
        return -1;
    }
    *now = s_setTime;
    return 0;
}
