// The monotonic clock in the test's hand: this program's own `clock_gettime` takes the place of the C library's, for
// the code under test too. It runs until it is stopped.
#ifndef ZELSENSORS_TESTS_STOPPEDCLOCK_H
#define ZELSENSORS_TESTS_STOPPEDCLOCK_H

// While it lives, the clock stands still. One at a time.
class StoppedClock {
  public:
    StoppedClock();
    ~StoppedClock();
    StoppedClock(const StoppedClock&) = delete;
    StoppedClock& operator=(const StoppedClock&) = delete;

    void advanceMilliseconds(long milliseconds);
};

#endif
