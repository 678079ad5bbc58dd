// Time that nobody sets.
#ifndef ZELSENSORS_CHIPLINUX_MOMENT_H
#define ZELSENSORS_CHIPLINUX_MOMENT_H

#include <chrono>
#include <ctime>

using Nanoseconds = std::chrono::nanoseconds;

// Since some fixed point in the past.
inline Nanoseconds now() {
    timespec time{};
    clock_gettime(CLOCK_MONOTONIC, &time);
    return std::chrono::seconds(time.tv_sec) + Nanoseconds(time.tv_nsec);
}

#endif
