// SPDX-License-Identifier: Apache-2.0
#include <veskar/ObjectIdGenerator.h>

#include <limits>

#include <gtest/gtest.h>

namespace Veskar {
namespace {

TEST(ObjectIdGenerator, CountsFromOne) {
    ObjectIdGenerator generator;
    EXPECT_EQ(generator.lastId, 0);
    EXPECT_EQ(generator.next(), 1);
    EXPECT_EQ(generator.next(), 2);
    EXPECT_EQ(generator.lastId, 2);
}

TEST(ObjectIdGenerator, GoesOnWithZeroAfterTheLargestId) {
    ObjectIdGenerator generator;
    generator.lastId = std::numeric_limits<std::int32_t>::max() - 1;
    EXPECT_EQ(generator.next(), std::numeric_limits<std::int32_t>::max());
    EXPECT_EQ(generator.next(), 0);
    EXPECT_EQ(generator.next(), 1);
}

TEST(ObjectIdGenerator, NeverHandsOutANegativeId) {
    ObjectIdGenerator generator;
    generator.lastId = -5;
    EXPECT_EQ(generator.next(), 0);
    generator.lastId = -1;
    EXPECT_EQ(generator.next(), 0);
}

}  // namespace
}  // namespace Veskar
