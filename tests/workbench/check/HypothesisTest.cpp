// SPDX-License-Identifier: Apache-2.0
// Other conventions than the format's, and the values read by them.
#include <veskar-host/Projection.h>

#include "check/Hypothesis.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace Workbench {
namespace {

using testing::DoubleNear;
using testing::ElementsAre;

std::vector<double> sidesOf(const ImageBox& box) {
    return {box.left, box.bottom, box.right, box.top};
}

auto sides(double left, double bottom, double right, double top) {
    constexpr double digits = 1e-12;
    return ElementsAre(DoubleNear(left, digits), DoubleNear(bottom, digits),
                       DoubleNear(right, digits), DoubleNear(top, digits));
}

constexpr std::array<int, 2> resolution{1000, 500};

TEST(Hypothesis, ReadsTheSameBoxInEveryForm) {
    const auto isTheBox = sides(-0.5, -0.6, 0.25, 0.2);
    EXPECT_THAT(sidesOf(readAs(BoxForm::Stated, {-0.5, -0.6, 0.25, 0.2}, resolution)), isTheBox);
    EXPECT_THAT(sidesOf(readAs(BoxForm::Downward, {-0.5, -0.2, 0.25, 0.6}, resolution)), isTheBox);
    EXPECT_THAT(sidesOf(readAs(BoxForm::Unit, {0.25, 0.2, 0.625, 0.6}, resolution)), isTheBox);
    EXPECT_THAT(sidesOf(readAs(BoxForm::UnitDownward, {0.25, 0.4, 0.625, 0.8}, resolution)),
                isTheBox);
    EXPECT_THAT(sidesOf(readAs(BoxForm::Pixels, {250.0, 200.0, 625.0, 400.0}, resolution)),
                isTheBox);
}

TEST(Hypothesis, TakesABoxWhoseTopIsNamedBottom) {
    EXPECT_THAT(sidesOf(readAs(BoxForm::Downward, {-0.5, 0.6, 0.25, -0.2}, resolution)),
                sides(-0.5, -0.6, 0.25, 0.2));
    EXPECT_THAT(sidesOf(readAs(BoxForm::Pixels, {250.0, 400.0, 625.0, 200.0}, resolution)),
                sides(-0.5, -0.6, 0.25, 0.2));
}

TEST(Hypothesis, ReadsTheSameAzimuthInEveryForm) {
    EXPECT_DOUBLE_EQ(readAs(AzimuthForm::Stated, 30.0), 30.0);
    EXPECT_DOUBLE_EQ(readAs(AzimuthForm::Mirrored, -30.0), 30.0);
    EXPECT_DOUBLE_EQ(readAs(AzimuthForm::Radians, radians(30.0)), 30.0);
    EXPECT_DOUBLE_EQ(readAs(AzimuthForm::MirroredRadians, radians(-30.0)), 30.0);
    EXPECT_DOUBLE_EQ(readAs(AzimuthForm::FromTheRight, 60.0), 30.0);
}

TEST(Hypothesis, ReadsTheSameDirectionInEveryForm) {
    EXPECT_DOUBLE_EQ(readAs(DirectionForm::Stated, 30.0), 30.0);
    EXPECT_DOUBLE_EQ(readAs(DirectionForm::Turned, -150.0), 30.0);
    EXPECT_DOUBLE_EQ(readAs(DirectionForm::Mirrored, -30.0), 30.0);
    EXPECT_DOUBLE_EQ(readAs(DirectionForm::Radians, radians(30.0)), 30.0);
}

TEST(Hypothesis, ReadsAnglesAsRadiansOnlyWhereTheyCanBe) {
    CameraSetup camera;
    camera.mounting.pitch = radians(20.0);
    camera.mounting.yaw = radians(-90.0);
    const std::optional<CameraSetup> inDegrees = readAs(AngleForm::Radians, camera);
    ASSERT_TRUE(inDegrees.has_value());
    EXPECT_NEAR(inDegrees->mounting.pitch, 20.0, 1e-12);
    EXPECT_NEAR(inDegrees->mounting.yaw, -90.0, 1e-12);
    EXPECT_NEAR(readAs(AngleForm::Stated, camera)->mounting.pitch, radians(20.0), 1e-12);
    camera.mounting.yaw = 20.0;
    EXPECT_FALSE(readAs(AngleForm::Radians, camera).has_value());
    camera.mounting = {};
    EXPECT_FALSE(readAs(AngleForm::Radians, camera).has_value());
}

}  // namespace
}  // namespace Workbench
