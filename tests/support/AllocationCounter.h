// SPDX-License-Identifier: Apache-2.0
// Counts heap allocations of this process.
#pragma once

#include <cstdint>

namespace VeskarTest {

/// @return allocations by operator new since the program started
std::uint64_t allocationCount();
/// @return blocks from operator new that are not freed yet
std::int64_t liveAllocations();
/// @return what those blocks take of the heap
std::int64_t liveBytes();

/// Counts the allocations since it was made.
class AllocationScope {
public:
    std::uint64_t count() const { return allocationCount() - start_; }

private:
    std::uint64_t start_ = allocationCount();
};

}  // namespace VeskarTest
