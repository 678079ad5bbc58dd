// Memory for the private copy of libsensors: the host's. Blocks that are taken during a search are all known here, so
// that nothing is lost when a call of libsensors does not return. A read frees what it takes before it ends.
#ifndef ZELSENSORS_CHIPLINUX_TRACKEDMEMORY_H
#define ZELSENSORS_CHIPLINUX_TRACKEDMEMORY_H

#include <atomic>
#include <cstddef>
#include <mutex>

#include "private/PrivateCopy.h"

// Thread-safe but for its end, which frees all noted blocks that are left: nobody may use one any longer.
class TrackedMemory {
  public:
    TrackedMemory();
    ~TrackedMemory();
    TrackedMemory(const TrackedMemory&) = delete;
    TrackedMemory& operator=(const TrackedMemory&) = delete;

    const HostMemory* functions() const { return &m_functions; }  // valid as long as this object

    // Between these two, blocks are noted down.
    void track();
    void endTracking() { m_isTracking = false; }
    // Whether memory was refused since the last track().
    bool wasShort() const { return m_ranShort; }

  private:
    // Before each block; as long as malloc's alignment. Null pointers where it is not noted down.
    struct alignas(std::max_align_t) Block {
        Block* previous;
        Block* next;
    };

    void* allocate(std::size_t size);
    void* reallocate(void* contents, std::size_t size);
    void release(void* contents);
    void* link(Block* block);
    void unlink(Block* block);

    const HostMemory m_functions;
    std::mutex m_guard;
    Block m_all;  // the ring's head, no block itself
    std::atomic<bool> m_isTracking{false};
    std::atomic<bool> m_ranShort{false};
};

#endif
