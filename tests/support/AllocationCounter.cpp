// SPDX-License-Identifier: Apache-2.0
#include "support/AllocationCounter.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <new>

#include <malloc.h>

namespace {

std::atomic<std::uint64_t> allocated{0};
std::atomic<std::uint64_t> freed{0};
std::atomic<std::int64_t> bytes{0};
std::atomic<std::size_t> limit{SIZE_MAX};

void* countedAllocate(std::size_t size, std::size_t alignment) {
    if (size > limit.load(std::memory_order_relaxed)) {
        throw std::bad_alloc();
    }
    allocated.fetch_add(1, std::memory_order_relaxed);
    const std::size_t rounded = (size + alignment - 1) / alignment * alignment;
    void* block = alignment > alignof(std::max_align_t)
                      ? std::aligned_alloc(alignment, rounded == 0 ? alignment : rounded)
                      : std::malloc(size == 0 ? 1 : size);
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    bytes.fetch_add(static_cast<std::int64_t>(malloc_usable_size(block)),
                    std::memory_order_relaxed);
    return block;
}

void countedFree(void* block) noexcept {
    if (block != nullptr) {
        freed.fetch_add(1, std::memory_order_relaxed);
        bytes.fetch_sub(static_cast<std::int64_t>(malloc_usable_size(block)),
                        std::memory_order_relaxed);
        std::free(block);
    }
}

}  // namespace

namespace VeskarTest {

std::uint64_t allocationCount() {
    return allocated.load(std::memory_order_relaxed);
}

std::int64_t liveAllocations() {
    return static_cast<std::int64_t>(allocated.load(std::memory_order_relaxed)) -
           static_cast<std::int64_t>(freed.load(std::memory_order_relaxed));
}

std::int64_t liveBytes() {
    return bytes.load(std::memory_order_relaxed);
}

AllocationLimit::AllocationLimit(std::size_t most) {
    limit = most;
}

AllocationLimit::~AllocationLimit() {
    limit = SIZE_MAX;
}

}  // namespace VeskarTest

void* operator new(std::size_t size) {
    return countedAllocate(size, 1);
}
void* operator new[](std::size_t size) {
    return countedAllocate(size, 1);
}
void* operator new(std::size_t size, std::align_val_t alignment) {
    return countedAllocate(size, static_cast<std::size_t>(alignment));
}
void* operator new[](std::size_t size, std::align_val_t alignment) {
    return countedAllocate(size, static_cast<std::size_t>(alignment));
}
void operator delete(void* block) noexcept {
    countedFree(block);
}
void operator delete[](void* block) noexcept {
    countedFree(block);
}
void operator delete(void* block, std::size_t) noexcept {
    countedFree(block);
}
void operator delete[](void* block, std::size_t) noexcept {
    countedFree(block);
}
void operator delete(void* block, std::align_val_t) noexcept {
    countedFree(block);
}
void operator delete[](void* block, std::align_val_t) noexcept {
    countedFree(block);
}
void operator delete(void* block, std::size_t, std::align_val_t) noexcept {
    countedFree(block);
}
void operator delete[](void* block, std::size_t, std::align_val_t) noexcept {
    countedFree(block);
}
