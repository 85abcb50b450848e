// SPDX-License-Identifier: Apache-2.0
// Coordinate systems of scene descriptions.
#include "live/onvif/Transformation.h"

#include <gtest/gtest.h>

namespace Veskar::Live {
namespace {

TEST(Transformation, ScalesAndThenMoves) {
    // An image of 320 x 240 pixels, counted from the lower left corner.
    const Transformation pixels{{-1.0, -1.0}, {2.0 / 320.0, 2.0 / 240.0}};
    EXPECT_TRUE(pixels(Eigen::Vector2d(0.0, 0.0)).isApprox(Eigen::Vector2d(-1.0, -1.0)));
    EXPECT_TRUE(pixels(Eigen::Vector2d(320.0, 240.0)).isApprox(Eigen::Vector2d(1.0, 1.0)));
    EXPECT_TRUE(pixels(Eigen::Vector2d(240.0, 60.0)).isApprox(Eigen::Vector2d(0.5, -0.5)));
}

TEST(Transformation, TurnsBoxesUpright) {
    // Rows are counted downward.
    const Transformation rows{{-1.0, 1.0}, {0.002, -0.002}};
    const Host::ImageBox box = rows(Host::ImageBox{100.0, 900.0, 300.0, 400.0});
    EXPECT_DOUBLE_EQ(box.left, -0.8);
    EXPECT_DOUBLE_EQ(box.right, -0.4);
    EXPECT_DOUBLE_EQ(box.bottom, -0.8);
    EXPECT_DOUBLE_EQ(box.top, 0.2);
}

TEST(Transformation, AppliesTheInnerOneFirst) {
    const Transformation outer{{-1.0, -1.0}, {0.5, 0.25}};
    const Transformation inner{{2.0, 3.0}, {4.0, -1.0}};
    const Eigen::Vector2d point(0.3, 0.7);
    EXPECT_TRUE((outer * inner)(point).isApprox(outer(inner(point))));
    EXPECT_FALSE((inner * outer)(point).isApprox(outer(inner(point))));
    EXPECT_TRUE((Transformation() * outer)(point).isApprox(outer(point)));
    EXPECT_TRUE((outer * Transformation())(point).isApprox(outer(point)));
}

TEST(Transformation, KnowsWhenItChangesNothing) {
    EXPECT_TRUE(Transformation().isIdentity());
    EXPECT_FALSE((Transformation{{0.0, 0.1}, {1.0, 1.0}}.isIdentity()));
    EXPECT_FALSE((Transformation{{0.0, 0.0}, {1.0, 2.0}}.isIdentity()));
}

}  // namespace
}  // namespace Veskar::Live
