#include "FakeClock.h"

#include <cerrno>
#include <ctime>
#include <mutex>

namespace {

enum class Mode { Real, Set, Failing };

std::mutex guard;
Mode mode = Mode::Real;
timeval setTime{};
int failure = 0;
unsigned callsToFailure = 0;  // 0: no single call is to fail
int singleFailure = 0;

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
    const std::lock_guard<std::mutex> lock(guard);
    mode = Mode::Set;
    setTime = now;
}

void advanceMilliseconds(long milliseconds) {
    const std::lock_guard<std::mutex> lock(guard);
    const timeval step{milliseconds / 1000, (milliseconds % 1000) * 1000};
    timeradd(&setTime, &step, &setTime);
    if (setTime.tv_usec < 0) {
        setTime.tv_usec += 1000000;
        --setTime.tv_sec;
    }
}

void failWith(int error) {
    const std::lock_guard<std::mutex> lock(guard);
    mode = Mode::Failing;
    failure = error;
}

void failCall(unsigned nth, int error) {
    const std::lock_guard<std::mutex> lock(guard);
    callsToFailure = nth;
    singleFailure = error;
}

bool isFailurePending() {
    const std::lock_guard<std::mutex> lock(guard);
    return callsToFailure > 0;
}

void useReal() {
    const std::lock_guard<std::mutex> lock(guard);
    mode = Mode::Real;
}

}  // namespace fakeclock

extern "C" __attribute__((visibility("default"))) int gettimeofday(timeval* __restrict now, void* __restrict) noexcept {
    const std::lock_guard<std::mutex> lock(guard);
    if (callsToFailure > 0 && --callsToFailure == 0) {
        errno = singleFailure;
        return -1;
    }
    if (mode == Mode::Real) return realTime(now);
    if (mode == Mode::Failing) {
        errno = failure;
        return -1;
    }
    *now = setTime;
    return 0;
}
