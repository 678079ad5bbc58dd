#include "FailingAllocations.h"

#include <cstdlib>
#include <new>

namespace {

thread_local unsigned s_allocationsLeft = 0;  // up to and including the one that fails; 0: none fails
thread_local bool s_failed = false;
thread_local bool s_staysFailed = false;

void* allocate(std::size_t size) noexcept {
    if (s_allocationsLeft > 0 && --s_allocationsLeft == 0) {
        s_failed = true;
        if (s_staysFailed) s_allocationsLeft = 1;
        return nullptr;
    }
    return std::malloc(size == 0 ? 1 : size);
}

void* allocateOrThrow(std::size_t size) {
    void* memory = allocate(size);
    if (memory == nullptr) throw std::bad_alloc();
    return memory;
}

}  // namespace

FailingAllocation::FailingAllocation(unsigned n, bool andAllAfter) {
    s_failed = false;
    s_staysFailed = andAllAfter;
    s_allocationsLeft = n;
}

FailingAllocation::~FailingAllocation() {
    s_allocationsLeft = 0;
}

bool FailingAllocation::hasFailed() {
    return s_failed;
}

void* operator new(std::size_t size) {
    return allocateOrThrow(size);
}
void* operator new[](std::size_t size) {
    return allocateOrThrow(size);
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return allocate(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return allocate(size);
}
void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete[](void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}
void operator delete[](void* memory, std::size_t) noexcept {
    std::free(memory);
}
void operator delete(void* memory, const std::nothrow_t&) noexcept {
    std::free(memory);
}
void operator delete[](void* memory, const std::nothrow_t&) noexcept {
    std::free(memory);
}
