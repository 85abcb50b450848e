// SPDX-License-Identifier: Apache-2.0
// Counts the memory blocks held by Jansson, to check that every document is released once.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdlib>

#include <jansson.h>

namespace VeskarTest {

/// Counts during its lifetime, in which documents must be created and released. One at a time.
class JanssonBlocks {
public:
    JanssonBlocks() {
        live() = 0;
        json_set_alloc_funcs(&allocate, &release);
    }
    ~JanssonBlocks() { json_set_alloc_funcs(&std::malloc, &std::free); }
    JanssonBlocks(const JanssonBlocks&) = delete;
    JanssonBlocks& operator=(const JanssonBlocks&) = delete;

    /// @return blocks allocated and not freed yet; below zero when something was freed twice
    static long count() { return live(); }

private:
    static std::atomic<long>& live() {
        static std::atomic<long> blocks{0};
        return blocks;
    }
    static void* allocate(std::size_t size) {
        ++live();
        return std::malloc(size);
    }
    static void release(void* block) {
        if (block != nullptr) {
            --live();
        }
        std::free(block);
    }
};

}  // namespace VeskarTest
