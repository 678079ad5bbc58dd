#include "Movement.h"

#include <sys/time.h>

#include <algorithm>
#include <cmath>

namespace {

std::uint64_t position(std::uint64_t step, std::uint64_t length, AtEnd atEnd) {
    if (atEnd == AtEnd::Hold) return std::min(step, length - 1);
    if (atEnd == AtEnd::Repeat || length == 1) return step % length;
    const std::uint64_t last = length - 1;
    const std::uint64_t there = step % (2 * last);
    return there <= last ? there : 2 * last - there;
}

// The splitmix64 generator: the distributions of <random> may differ from one C++ library to the next.
std::uint64_t nextRandom(std::uint64_t& state) {
    state += 0x9e3779b97f4a7c15U;
    std::uint64_t mixed = state;
    mixed = (mixed ^ (mixed >> 30)) * 0xbf58476d1ce4e5b9U;
    mixed = (mixed ^ (mixed >> 27)) * 0x94d049bb133111ebU;
    return mixed ^ (mixed >> 31);
}

}  // namespace

std::uint64_t wallClockMilliseconds() {
    timeval now{};
    gettimeofday(&now, nullptr);
    return static_cast<std::uint64_t>(now.tv_sec) * 1000 + static_cast<std::uint64_t>(now.tv_usec) / 1000;
}

std::uint64_t Movement::stepAt(const Moment& moment) const {
    if (times) {
        const auto later = std::upper_bound(times->begin(), times->end(), moment.sinceStart);
        return later == times->begin() ? 0 : static_cast<std::uint64_t>(later - times->begin()) - 1;
    }
    return stepMilliseconds == 0 ? moment.call : wallClockMilliseconds() / stepMilliseconds;
}

int Movement::valueAt(const Moment& moment) const {
    return (*values)[position(stepAt(moment) + ahead, values->size(), atEnd)];
}

std::vector<int> sineValues(int middle, int amplitude, unsigned period) {
    const double fullTurn = 2.0 * std::acos(-1.0);
    std::vector<int> values(period);
    for (unsigned step = 0; step < period; ++step) {
        values[step] = static_cast<int>(std::lround(middle + amplitude * std::sin(fullTurn * step / period)));
    }
    return values;
}

std::vector<int> rampValues(int first, int last, unsigned steps) {
    const std::int64_t distance = std::int64_t{last} - first;
    std::vector<int> values(steps + 1U);
    for (unsigned step = 0; step <= steps; ++step) {
        values[step] = static_cast<int>(first + distance * step / steps);
    }
    return values;
}

std::vector<int> walkValues(const WalkBounds& bounds, std::uint64_t seed) {
    const std::uint64_t choices = 2 * static_cast<std::uint64_t>(bounds.step) + 1;
    std::vector<int> values(WALK_LENGTH);
    std::int64_t value = bounds.start;
    for (int& reading : values) {
        reading = static_cast<int>(value);
        value += static_cast<std::int64_t>(nextRandom(seed) % choices) - bounds.step;
        value = std::clamp<std::int64_t>(value, bounds.lowest, bounds.highest);
    }
    return values;
}
