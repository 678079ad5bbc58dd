// Preloaded into a program: an hour passes backwards as soon as the file exists that SET_BACK_CLOCK names. Clocks that
// nobody can set go on.
#include <sys/syscall.h>
#include <sys/time.h>
#include <unistd.h>

#include <cstdlib>
#include <ctime>

namespace {

constexpr long HOUR = 3600;

bool isSetBack() {
    const char* file = std::getenv("SET_BACK_CLOCK");
    return file != nullptr && syscall(SYS_access, file, F_OK) == 0;
}

bool canBeSet(clockid_t clock) {
    return clock == CLOCK_REALTIME || clock == CLOCK_REALTIME_COARSE;
}

}  // namespace

// Seen by whoever loads it, which is not the default of this project.
#pragma GCC visibility push(default)
extern "C" {

int clock_gettime(clockid_t clock, timespec* time) noexcept {
    const auto result = static_cast<int>(syscall(SYS_clock_gettime, clock, time));
    if (result == 0 && canBeSet(clock) && isSetBack()) time->tv_sec -= HOUR;
    return result;
}

int gettimeofday(timeval* time, void* /*zone*/) noexcept {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    time->tv_sec = now.tv_sec;
    time->tv_usec = now.tv_nsec / 1000;
    return 0;
}

time_t time(time_t* result) noexcept {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    if (result != nullptr) *result = now.tv_sec;
    return now.tv_sec;
}

}  // extern "C"
#pragma GCC visibility pop
