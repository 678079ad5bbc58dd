// Memory that runs out at a chosen moment. This program has a malloc of its own, so that what the C library takes for
// itself (streams, lines, matches of a pattern, exceptions) can fail too. Where a sanitizer has put its malloc there,
// only operator new can.
#ifndef ZELSENSORS_TESTS_FAULTS_FAILINGMEMORY_H
#define ZELSENSORS_TESTS_FAULTS_FAILINGMEMORY_H

#include "FailingAllocations.h"

#if defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define HAS_SANITIZERS_MALLOC
#endif
#elif defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define HAS_SANITIZERS_MALLOC
#endif

enum class Shortage { OneAllocation, AllFromThere };

// While it lives, the n-th allocation in this thread fails (1: the first), and no other, or all after it too.
class FailingMemory {
  public:
    FailingMemory(unsigned nth, Shortage shortage);
    ~FailingMemory();
    FailingMemory(const FailingMemory&) = delete;
    FailingMemory& operator=(const FailingMemory&) = delete;

    // Whether that allocation was asked for.
    bool hasFailed() const;

  private:
#ifdef HAS_SANITIZERS_MALLOC
    FailingAllocation m_failing;
#endif
};

// The blocks of this process that are not freed yet; always 0 where a sanitizer, which looks for leaks itself, counts
// them.
long liveBlocks();

#endif
