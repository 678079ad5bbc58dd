#include "FailingMemory.h"

#ifdef HAS_SANITIZERS_MALLOC

FailingMemory::FailingMemory(unsigned nth, Shortage shortage) : m_failing(nth, shortage == Shortage::AllFromThere) {}

FailingMemory::~FailingMemory() = default;

bool FailingMemory::hasFailed() const {
    return FailingAllocation::hasFailed();
}

long liveBlocks() {
    return 0;
}

#else

#include <atomic>
#include <cerrno>
#include <cstddef>

namespace {

thread_local unsigned s_allocationsLeft = 0;  // up to and including the one that fails; 0: none fails
thread_local bool s_staysShort = false;
thread_local bool s_failed = false;
std::atomic<long> s_blocks{0};

bool isToFail() {
    if (s_allocationsLeft == 0 || --s_allocationsLeft > 0) return false;
    s_failed = true;
    if (s_staysShort) s_allocationsLeft = 1;
    errno = ENOMEM;
    return true;
}

void* counted(void* block) {
    if (block != nullptr) s_blocks.fetch_add(1, std::memory_order_relaxed);
    return block;
}

}  // namespace

FailingMemory::FailingMemory(unsigned nth, Shortage shortage) {
    s_failed = false;
    s_staysShort = shortage == Shortage::AllFromThere;
    s_allocationsLeft = nth;
}

FailingMemory::~FailingMemory() {
    s_allocationsLeft = 0;
}

bool FailingMemory::hasFailed() const {
    return s_failed;
}

long liveBlocks() {
    return s_blocks.load(std::memory_order_relaxed);
}

// The C library's own functions under their other names.
extern "C" void* __libc_malloc(std::size_t size);
extern "C" void* __libc_calloc(std::size_t count, std::size_t size);
extern "C" void* __libc_realloc(void* block, std::size_t size);
extern "C" void __libc_free(void* block);

#define REPLACED extern "C" __attribute__((visibility("default")))

REPLACED void* malloc(std::size_t size) noexcept {
    return isToFail() ? nullptr : counted(__libc_malloc(size));
}

REPLACED void* calloc(std::size_t count, std::size_t size) noexcept {
    return isToFail() ? nullptr : counted(__libc_calloc(count, size));
}

REPLACED void* realloc(void* block, std::size_t size) noexcept {
    if (isToFail()) return nullptr;
    return block == nullptr ? counted(__libc_realloc(block, size)) : __libc_realloc(block, size);
}

REPLACED void free(void* block) noexcept {
    if (block != nullptr) s_blocks.fetch_sub(1, std::memory_order_relaxed);
    __libc_free(block);
}

#endif
