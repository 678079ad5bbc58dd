#include "TrackedMemory.h"

#include <cstdint>
#include <cstdlib>

TrackedMemory::TrackedMemory()
    : m_functions{this,
                  [](void* context, std::size_t size) { return static_cast<TrackedMemory*>(context)->allocate(size); },
                  [](void* context, void* block, std::size_t size) {
                      return static_cast<TrackedMemory*>(context)->reallocate(block, size);
                  },
                  [](void* context, void* block) { static_cast<TrackedMemory*>(context)->release(block); }},
      m_all{&m_all, &m_all} {}

TrackedMemory::~TrackedMemory() {
    for (Block* block = m_all.next; block != &m_all;) {
        Block* next = block->next;
        std::free(block);
        block = next;
    }
}

void TrackedMemory::track() {
    m_ranShort = false;
    m_isTracking = true;
}

void* TrackedMemory::link(Block* block) {
    *block = {nullptr, nullptr};
    if (!m_isTracking) return block + 1;
    const std::lock_guard<std::mutex> lock(m_guard);
    *block = {&m_all, m_all.next};
    m_all.next->previous = block;
    m_all.next = block;
    return block + 1;
}

void TrackedMemory::unlink(Block* block) {
    if (block->previous == nullptr) return;
    const std::lock_guard<std::mutex> lock(m_guard);
    block->previous->next = block->next;
    block->next->previous = block->previous;
}

void* TrackedMemory::allocate(std::size_t size) {
    Block* block = size > SIZE_MAX - sizeof(Block) ? nullptr : static_cast<Block*>(std::malloc(sizeof(Block) + size));
    if (block != nullptr) return link(block);
    m_ranShort = true;
    return nullptr;
}

void* TrackedMemory::reallocate(void* contents, std::size_t size) {
    if (contents == nullptr) return allocate(size);
    Block* old = static_cast<Block*>(contents) - 1;
    unlink(old);
    void* grown = size > SIZE_MAX - sizeof(Block) ? nullptr : std::realloc(old, sizeof(Block) + size);
    if (grown != nullptr) return link(static_cast<Block*>(grown));
    m_ranShort = true;
    link(old);
    return nullptr;
}

void TrackedMemory::release(void* contents) {
    if (contents == nullptr) return;
    Block* block = static_cast<Block*>(contents) - 1;
    unlink(block);
    std::free(block);
}
