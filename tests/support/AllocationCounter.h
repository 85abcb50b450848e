// SPDX-License-Identifier: Apache-2.0
// Counts heap allocations of this process, and lets them fail.
#pragma once

#include <cstddef>
#include <cstdint>

namespace VeskarTest {

/// @return allocations by operator new since the program started
std::uint64_t allocationCount();
/// @return blocks of operator new that are not freed yet
std::int64_t liveAllocations();
/// @return heap memory of these blocks, bytes
std::int64_t liveBytes();

/// Counts the allocations since its construction.
class AllocationScope {
public:
    std::uint64_t count() const { return allocationCount() - start_; }

private:
    std::uint64_t start_ = allocationCount();
};

/// While one lives, operator new fails for more than so many bytes at once.
class AllocationLimit {
public:
    explicit AllocationLimit(std::size_t most);
    ~AllocationLimit();
    AllocationLimit(const AllocationLimit&) = delete;
    AllocationLimit& operator=(const AllocationLimit&) = delete;
};

}  // namespace VeskarTest
