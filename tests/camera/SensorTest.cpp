// SPDX-License-Identifier: Apache-2.0
#include <veskar/Sensor.h>

#include <array>
#include <cmath>
#include <random>
#include <type_traits>

#include <Eigen/LU>
#include <gtest/gtest.h>

namespace {

using Veskar::Sensor;

static_assert(std::has_virtual_destructor_v<Sensor>);
static_assert(std::is_copy_constructible_v<Sensor> && std::is_copy_assignable_v<Sensor>);

constexpr double roundingError = 1e-15;

Eigen::Matrix3d rotationOf(double a, double b, double c) {
    Sensor sensor;
    sensor.setRotation(a, b, c);
    return sensor.getRotation();
}

/// The product of the three rotations, expanded, in long double.
std::array<std::array<long double, 3>, 3> multipliedOut(double a, double b, double c) {
    const long double degree = std::acos(-1.0L) / 180.0L;
    const long double ca = std::cos(a * degree);
    const long double sa = std::sin(a * degree);
    const long double cb = std::cos(b * degree);
    const long double sb = std::sin(b * degree);
    const long double cc = std::cos(c * degree);
    const long double sc = std::sin(c * degree);
    return {{{ca * cb, ca * sb * sc - sa * cc, ca * sb * cc + sa * sc},
             {sa * cb, sa * sb * sc + ca * cc, sa * sb * cc - ca * sc},
             {-sb, cb * sc, cb * cc}}};
}

TEST(Sensor, StartsAtTheOriginWithoutRotation) {
    const Sensor sensor;
    EXPECT_EQ(sensor.getPosition(), Eigen::Vector3d(0.0, 0.0, 0.0));
    EXPECT_EQ(sensor.getRotation(), Eigen::Matrix3d(Eigen::Matrix3d::Identity()));
}

TEST(Sensor, KeepsItsPosition) {
    Sensor sensor;
    sensor.setPosition(1.5, -2.5, 5.0);
    EXPECT_EQ(sensor.getPosition(), Eigen::Vector3d(1.5, -2.5, 5.0));
    EXPECT_EQ(sensor.getRotation(), Eigen::Matrix3d(Eigen::Matrix3d::Identity()));
}

TEST(Sensor, ReturnsToTheIdentity) {
    Sensor sensor;
    sensor.setRotation(10.0, 20.0, 30.0);
    sensor.setRotation(0.0, 0.0, 0.0);
    EXPECT_EQ(sensor.getRotation(), Eigen::Matrix3d(Eigen::Matrix3d::Identity()));
}

TEST(Sensor, TurnsTheFirstAxisOntoTheSecondByYaw) {
    const Eigen::Vector3d turned = rotationOf(90.0, 0.0, 0.0) * Eigen::Vector3d::UnitX();
    EXPECT_LT((turned - Eigen::Vector3d::UnitY()).norm(), roundingError);
}

TEST(Sensor, TurnsTheThirdAxisOntoTheFirstByPitch) {
    const Eigen::Vector3d turned = rotationOf(0.0, 90.0, 0.0) * Eigen::Vector3d::UnitZ();
    EXPECT_LT((turned - Eigen::Vector3d::UnitX()).norm(), roundingError);
}

TEST(Sensor, TurnsTheSecondAxisOntoTheThirdByRoll) {
    const Eigen::Vector3d turned = rotationOf(0.0, 0.0, 90.0) * Eigen::Vector3d::UnitY();
    EXPECT_LT((turned - Eigen::Vector3d::UnitZ()).norm(), roundingError);
}

TEST(Sensor, LooksDownWithPositivePitch) {
    EXPECT_LT((rotationOf(0.0, 20.0, 0.0) * Eigen::Vector3d::UnitX()).z(), 0.0);
}

TEST(Sensor, AppliesRollFirstAndYawLast) {
    // Roll rotates the second axis onto the third, pitch that onto the first, yaw that onto the
    // second again.
    const Eigen::Vector3d turned = rotationOf(90.0, 90.0, 90.0) * Eigen::Vector3d::UnitY();
    EXPECT_LT((turned - Eigen::Vector3d::UnitY()).norm(), roundingError);
    // In the opposite order it would end on the opposite side.
    const Eigen::Vector3d opposite = rotationOf(0.0, 0.0, 90.0) * rotationOf(0.0, 90.0, 0.0) *
                                     rotationOf(90.0, 0.0, 0.0) * Eigen::Vector3d::UnitY();
    EXPECT_GT((opposite - turned).norm(), 1.0);
}

TEST(Sensor, AgreesWithTheProductMultipliedOut) {
    std::mt19937 random(16);
    std::uniform_real_distribution<double> angle(-720.0, 720.0);
    for (int round = 0; round < 1000; ++round) {
        const double a = angle(random);
        const double b = angle(random);
        const double c = angle(random);
        const Eigen::Matrix3d R = rotationOf(a, b, c);
        const auto expected = multipliedOut(a, b, c);
        for (int row = 0; row < 3; ++row) {
            for (int column = 0; column < 3; ++column) {
                ASSERT_NEAR(
                    R(row, column),
                    static_cast<double>(
                        expected[static_cast<std::size_t>(row)][static_cast<std::size_t>(column)]),
                    1e-14)
                    << a << ' ' << b << ' ' << c;
            }
        }
        ASSERT_NEAR(R.determinant(), 1.0, 1e-14);
    }
}

TEST(Sensor, DoesNotLimitAnglesToATurn) {
    EXPECT_LT((rotationOf(450.0, -380.0, 740.0) - rotationOf(90.0, -20.0, 20.0)).norm(), 1e-14);
}

TEST(Sensor, CopiesItsPose) {
    Sensor sensor;
    sensor.setPosition(1.0, 2.0, 3.0);
    sensor.setRotation(10.0, 20.0, 30.0);
    const Sensor copy = sensor;
    sensor.setPosition(0.0, 0.0, 0.0);
    sensor.setRotation(0.0, 0.0, 0.0);
    EXPECT_EQ(copy.getPosition(), Eigen::Vector3d(1.0, 2.0, 3.0));
    EXPECT_EQ(copy.getRotation(), rotationOf(10.0, 20.0, 30.0));
}

}  // namespace
