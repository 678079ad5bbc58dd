// Memory that runs out at a chosen moment: this program's own operators new take the place of the C++ library's.
#ifndef ZELSENSORS_TESTS_FAILINGALLOCATIONS_H
#define ZELSENSORS_TESTS_FAILINGALLOCATIONS_H

// While it lives, the n-th allocation by operator new in this thread fails (1: the first), and no other, or all after
// it too.
class FailingAllocation {
  public:
    explicit FailingAllocation(unsigned n, bool andAllAfter = false);
    ~FailingAllocation();
    FailingAllocation(const FailingAllocation&) = delete;
    FailingAllocation& operator=(const FailingAllocation&) = delete;

    // Whether that allocation was asked for.
    static bool hasFailed();
};

#endif
