// What this process holds of the system.
#ifndef ZELSENSORS_TESTS_RESOURCEUSAGE_H
#define ZELSENSORS_TESTS_RESOURCEUSAGE_H

#include <cstddef>
#include <ostream>

struct ResourceUsage {
    std::size_t descriptors;
    std::size_t threads;
    std::size_t heapBytes;      // taken from the C library's memory and not given back; 0 where another takes its place
    std::size_t residentBytes;  // 0 likewise, since a sanitizer's own memory grows
    // What no file backs, be it resident or swapped out; 0 likewise. Of what is resident the system takes pages of
    // files away where memory gets short, and gives them back later.
    std::size_t ownBytes;

    static ResourceUsage now();
};

std::ostream& operator<<(std::ostream& stream, const ResourceUsage& usage);

// Fails the test where the process holds more than before: other numbers of descriptors or threads, or memory beyond
// what the C library's own bookkeeping may need.
void expectNoneGained(const ResourceUsage& before, const ResourceUsage& after);

#endif
