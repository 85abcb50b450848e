// SPDX-License-Identifier: Apache-2.0
// The shipped camera must be plausible: mounted at 5 m height, pitched down by 20 degrees, with a
// field of view 90 degrees wide.
#include <veskar/Camera.h>

#include "support/JsonDocument.h"

#include <cmath>

#include <gtest/gtest.h>

namespace {

using Veskar::Camera;

constexpr double pi = 3.141592653589793;
constexpr double degree = pi / 180.0;
constexpr double height = 5.0;
constexpr double down = 20.0 * degree;
constexpr double minimumAngle = 1.5;

class ShippedCamera : public testing::Test {
protected:
    const Camera camera = Camera::parse(VeskarTest::readFile("config/camera.json"));
    /// Radius of the image corners, the largest that occurs.
    const double cornerRadius = std::hypot(1.0, 1.0 / camera.getAspectRatio());

    double slantRange(double y) const {
        return camera.getRangeToTarget(0.0, y, minimumAngle).range;
    }
    double groundRange(double y) const {
        return std::sqrt(slantRange(y) * slantRange(y) - height * height);
    }
};

TEST_F(ShippedCamera, SeesNinetyDegreesOnSixteenToNine) {
    EXPECT_EQ(camera.getResolution(), Eigen::Vector2i(1920, 1080));
    EXPECT_NEAR(camera.evaluatePolynomImageToRadians(1.0), 45.0 * degree, 1e-6);
    EXPECT_NEAR(camera.getFieldOfView()[0], 45.0 * degree, 1e-6);
}

TEST_F(ShippedCamera, StatesTheFieldOfViewThatItsLensHas) {
    const Camera pinhole =
        Camera::parse(VeskarTest::JsonDocument("config/camera.json").set("bdc", "true").text());
    EXPECT_LT((pinhole.getFieldOfView() - camera.getFieldOfView()).norm(), 1e-6);
}

TEST_F(ShippedCamera, HasLensPolynomialsThatInvertEachOther) {
    const double cornerAngle = camera.evaluatePolynomImageToRadians(cornerRadius);
    for (int i = 0; i <= 1000; ++i) {
        const double radius = cornerRadius * i / 1000.0;
        EXPECT_NEAR(
            camera.evaluatePolynomRadiansToImage(camera.evaluatePolynomImageToRadians(radius)),
            radius, 5e-4);
        const double angle = cornerAngle * i / 1000.0;
        EXPECT_NEAR(
            camera.evaluatePolynomImageToRadians(camera.evaluatePolynomRadiansToImage(angle)),
            angle, 5e-4);
    }
}

TEST_F(ShippedCamera, HasAStereographicLens) {
    for (int i = 0; i <= 100; ++i) {
        const double radius = cornerRadius * i / 100.0;
        EXPECT_NEAR(camera.evaluatePolynomImageToRadians(radius),
                    2.0 * std::atan(radius * std::tan(22.5 * degree)), 1e-3);
    }
}

TEST_F(ShippedCamera, HasALensWhoseAngleGrowsWithTheRadius) {
    for (int i = 0; i <= 100; ++i) {
        EXPECT_GT(camera.evaluatePolynomDerivativeImageToRadians(cornerRadius * i / 100.0), 0.5);
    }
}

TEST_F(ShippedCamera, LooksDown) {
    EXPECT_NEAR(slantRange(0.0), height / std::sin(down), 1e-6);
    EXPECT_NEAR(groundRange(0.0), height / std::tan(down), 1e-6);
}

TEST_F(ShippedCamera, SeesTheGroundInTheLowerImageHalf) {
    // From the lower edge, 46 degrees below the horizon, to the centre.
    EXPECT_NEAR(groundRange(-1.0), height / std::tan(down + camera.getFieldOfView()[1]), 1e-3);
    EXPECT_NEAR(groundRange(-1.0), 4.8, 0.05);
    EXPECT_NEAR(groundRange(-0.5), 7.6, 0.05);
    EXPECT_NEAR(groundRange(0.0), 13.7, 0.05);
    double last = 0.0;
    for (int i = 0; i <= 100; ++i) {
        const double y = -1.0 + i / 100.0;
        EXPECT_FALSE(camera.getRangeToTarget(0.0, y, minimumAngle).clamped);
        EXPECT_GT(groundRange(y), last);
        last = groundRange(y);
    }
}

TEST_F(ShippedCamera, HasTheHorizonInTheUpperImageHalf) {
    const double horizon = camera.evaluatePolynomRadiansToImage(down) * camera.getAspectRatio();
    EXPECT_GT(horizon, 0.5);
    EXPECT_LT(horizon, 1.0);
    EXPECT_GT(slantRange(horizon - 0.1), 60.0);
    const Camera::RangeToTarget sky = camera.getRangeToTarget(0.0, horizon + 0.05, minimumAngle);
    EXPECT_TRUE(sky.clamped);
    EXPECT_NEAR(sky.range, height / std::sin(minimumAngle * degree), 1e-9);
}

TEST_F(ShippedCamera, SeesBothSidesAlike) {
    for (const double y : {-1.0, -0.3, 0.2}) {
        EXPECT_NEAR(camera.getRangeToTarget(-0.8, y, minimumAngle).range,
                    camera.getRangeToTarget(0.8, y, minimumAngle).range, 1e-9);
    }
}

}  // namespace
