// SPDX-License-Identifier: Apache-2.0
#include "live/service/ProcessUsage.h"

#include <chrono>
#include <cstddef>
#include <vector>

#include <gtest/gtest.h>

namespace Veskar::Live {
namespace {

TEST(ProcessUsage, GrowsByWhatIsUsed) {
    const ProcessUsage before = ProcessUsage::now();
    constexpr std::size_t size = 64U << 20;
    std::vector<char> used(size, 1);
    volatile char* const bytes = used.data();
    ProcessUsage after = ProcessUsage::now();
    EXPECT_GE(after.memory - before.memory, 0.9 * static_cast<double>(size));
    while (after.cpuSeconds - before.cpuSeconds < 0.05) {
        bytes[0] = static_cast<char>(bytes[size - 1] + 1);
        after = ProcessUsage::now();
    }
    EXPECT_LT(after.memory, 1e10);
}

}  // namespace
}  // namespace Veskar::Live
