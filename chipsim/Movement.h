// How a sensor's reading moves: a list of values that is walked step by step. A step is one reading of the sensor, a
// piece of the wall clock, or a moment of a recording. The value depends on the number of the step alone, so it can be
// foretold and repeated.
#ifndef ZELSENSORS_CHIPSIM_MOVEMENT_H
#define ZELSENSORS_CHIPSIM_MOVEMENT_H

#include <cstdint>
#include <memory>
#include <vector>

// What follows the last value of the list.
enum class AtEnd { Repeat, Hold, Back };

// The wall clock, in milliseconds since 1970.
std::uint64_t wallClockMilliseconds();

// Milliseconds since the chip was initialised, from the first to the last, each later than the one before; never empty.
using RecordedTimes = std::vector<int>;

// When a sensor is read.
struct Moment {
    std::uint64_t call;       // of this sensor, counted from 0
    std::int64_t sinceStart;  // milliseconds since the chip was initialised; negative where the clock was set back
};

struct Movement {
    std::shared_ptr<const std::vector<int>> values;  // never empty; copies of a sensor share them
    AtEnd atEnd = AtEnd::Repeat;
    unsigned stepMilliseconds = 0;  // 0: one step per call; otherwise steps of the wall clock, counted from 1970
    std::uint64_t ahead = 0;        // steps by which this sensor runs before its scenario's list
    std::shared_ptr<const RecordedTimes> times;  // not null: a recording, whose n-th value holds from the n-th time on

    int valueAt(const Moment& moment) const;

  private:
    std::uint64_t stepAt(const Moment& moment) const;
};

// One round of round(middle + amplitude * sin(2 pi step / period)). The results must fit an int.
std::vector<int> sineValues(int middle, int amplitude, unsigned period);
// steps + 1 values from `first` to `last`, both included, evenly spaced and cut toward `first`.
std::vector<int> rampValues(int first, int last, unsigned steps);

struct WalkBounds {
    int start;
    int step;  // greatest change from one value to the next
    int lowest;
    int highest;
};

constexpr unsigned WALK_LENGTH = 1000;

// WALK_LENGTH values, the first being `start`; equal seeds give equal values on every system.
std::vector<int> walkValues(const WalkBounds& bounds, std::uint64_t seed);

#endif
