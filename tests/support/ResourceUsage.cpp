#include "ResourceUsage.h"

#include <gtest/gtest.h>
#include <malloc.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "OpenDescriptors.h"

namespace fs = std::filesystem;

namespace {

constexpr std::size_t HEAP_SLACK = 16384;             // freed blocks that malloc keeps in its caches count as taken
constexpr std::size_t OWN_SLACK = 2UL * 1024 * 1024;  // arenas and the loader's tables settle late

std::size_t threadsNow() {
    const fs::directory_iterator all("/proc/self/task");
    return static_cast<std::size_t>(std::distance(begin(all), end(all)));
}

std::size_t residentBytesNow() {
    std::size_t total = 0;
    std::size_t resident = 0;
    std::ifstream("/proc/self/statm") >> total >> resident;
    return resident * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

std::size_t ownBytesNow() {
    std::size_t kilobytes = 0;
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.rfind("RssAnon:", 0) == 0 || line.rfind("VmSwap:", 0) == 0)
            kilobytes += std::stoul(line.substr(line.find(':') + 1));
    }
    return kilobytes * 1024;
}

}  // namespace

ResourceUsage ResourceUsage::now() {
    // Sanitizers and valgrind answer nothing here.
    const struct mallinfo2 heap = mallinfo2();
    const std::size_t taken = heap.uordblks + heap.hblkhd;
    return {openDescriptors(), threadsNow(), taken, taken == 0 ? 0 : residentBytesNow(),
            taken == 0 ? 0 : ownBytesNow()};
}

std::ostream& operator<<(std::ostream& stream, const ResourceUsage& usage) {
    return stream << usage.descriptors << " descriptors, " << usage.threads << " threads, " << usage.heapBytes
                  << " bytes of heap, " << usage.residentBytes / 1024 << " KiB resident";
}

void expectNoneGained(const ResourceUsage& before, const ResourceUsage& after) {
    EXPECT_EQ(after.descriptors, before.descriptors);
    EXPECT_EQ(after.threads, before.threads);
    EXPECT_LE(after.heapBytes, before.heapBytes + HEAP_SLACK);
    EXPECT_LE(after.ownBytes, before.ownBytes + OWN_SLACK);
}
