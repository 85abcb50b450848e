// SPDX-License-Identifier: Apache-2.0
#include "fusion/LogLimit.h"

#include <cmath>

#include <gtest/gtest.h>

namespace Veskar {
namespace {

TEST(LogLimit, AllowsOncePerMinute) {
    LogLimit limit;
    EXPECT_TRUE(limit.allows(10.0));
    EXPECT_FALSE(limit.allows(10.0));
    EXPECT_FALSE(limit.allows(std::nextafter(70.0, 0.0)));
    EXPECT_TRUE(limit.allows(70.0));
    EXPECT_FALSE(limit.allows(129.0)) << "counted from the line before, not from what was refused";
    EXPECT_TRUE(limit.allows(130.0));
}

TEST(LogLimit, AllowsTheFirstLineWheneverItComes) {
    EXPECT_TRUE(LogLimit().allows(0.0));
    EXPECT_TRUE(LogLimit().allows(-1e9));
}

}  // namespace
}  // namespace Veskar
