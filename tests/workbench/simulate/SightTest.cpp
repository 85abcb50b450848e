// SPDX-License-Identifier: Apache-2.0
#include "simulate/Sight.h"

#include <gtest/gtest.h>

namespace Workbench {
namespace {

const std::vector<Wall> wall{{{10.0, -2.0}, {10.0, 2.0}}};

TEST(Sight, IsBlockedByAWallBetween) {
    EXPECT_TRUE(isBehindWall(wall, {0.0, 0.0}, {20.0, 3.9}));
    EXPECT_FALSE(isBehindWall(wall, {0.0, 0.0}, {20.0, 4.1})) << "passes beside it";
    EXPECT_FALSE(isBehindWall(wall, {0.0, 0.0}, {9.9, 0.0})) << "in front of it";
    EXPECT_FALSE(isBehindWall(wall, {20.0, 0.0}, {10.1, 0.0})) << "on the sensor's side";
    EXPECT_TRUE(isBehindWall(wall, {20.0, 0.0}, {9.9, 0.0}));
}

TEST(Sight, PassesTheEndOfAWall) {
    EXPECT_FALSE(isBehindWall(wall, {0.0, 0.0}, {20.0, 4.0}));
}

TEST(Sight, IsBlockedByAnyWall) {
    std::vector<Wall> walls = wall;
    walls.push_back({{4.0, 5.0}, {6.0, 3.0}});
    EXPECT_TRUE(isBehindWall(walls, {0.0, 0.0}, {10.0, 8.0}));
    EXPECT_FALSE(isBehindWall({}, {0.0, 0.0}, {10.0, 8.0}));
}

}  // namespace
}  // namespace Workbench
