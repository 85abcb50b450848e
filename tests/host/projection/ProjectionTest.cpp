// SPDX-License-Identifier: Apache-2.0
#include <veskar-host/Projection.h>

#include "host/TestInstallation.h"

#include <cmath>

#include <gtest/gtest.h>

using Veskar::Host::Projection;

namespace {

Projection lensCamera() {
    Veskar::Host::CameraSetup setup = VeskarTest::testInstallation().camera;
    setup.mounting.yaw = 12.0;
    setup.mounting.roll = -3.0;
    setup.sensorOffset = {0.02, -0.03};
    setup.radiansToImage = {0.0, 1.21, -0.018, 0.126};
    return Projection(setup.build());
}

Projection pinholeCamera() {
    Veskar::Host::CameraSetup setup = VeskarTest::testInstallation().camera;
    setup.bdc = true;
    setup.mounting.yaw = -7.0;
    return Projection(setup.build());
}

void expectDerivativesAt(const Projection& camera, const Eigen::Vector3d& point) {
    SCOPED_TRACE(point.transpose());
    const Eigen::Vector3d velocity(-1.3, 2.1, 0.4);
    const Veskar::Host::ImageMotion image = camera.project(point, velocity);
    EXPECT_LT((image.uv - camera.position(point)).norm(), 1e-9);
    EXPECT_LT((image.rate - image.jacobian * velocity).norm(), 1e-12);
    constexpr double h = 1e-4;
    for (Eigen::Index axis = 0; axis < 3; ++axis) {
        const Eigen::Vector3d step = h * Eigen::Vector3d::Unit(axis);
        const Eigen::Vector2d slope =
            (camera.position(point + step) - camera.position(point - step)) / (2.0 * h);
        EXPECT_LT((image.jacobian.col(axis) - slope).norm(), 1e-7);
        const Eigen::Vector2d rateSlope = (camera.project(point + step, velocity).rate -
                                           camera.project(point - step, velocity).rate) /
                                          (2.0 * h);
        EXPECT_LT((image.rateJacobian.col(axis) - rateSlope).norm(), 1e-7);
    }
}

}  // namespace

TEST(Projection, LiesOnTheViewingRayOfItsImagePosition) {
    const Projection camera = pinholeCamera();
    const Eigen::Vector3d point(14.0, 3.0, 0.5);
    const Eigen::Vector2d uv = camera.position(point);
    const Eigen::Vector3d expected = (point - camera.origin()).normalized();
    EXPECT_LT((camera.ray(uv[0], uv[1]) - expected).norm(), 1e-12);
}

TEST(Projection, AgreesWithTheLibrarysRangeToTheGround) {
    const Projection camera{VeskarTest::testInstallation().camera.build()};
    const Eigen::Vector3d point(20.0, -6.0, 0.0);
    const Eigen::Vector2d uv = camera.position(point);
    const auto range = camera.camera().getRangeToTarget(uv[0], uv[1], 1.0);
    EXPECT_FALSE(range.clamped);
    EXPECT_NEAR(range.range, (point - camera.origin()).norm(), 1e-9);
}

TEST(Projection, DerivativesAgreeWithDifferences) {
    for (const Projection& camera : {lensCamera(), pinholeCamera()}) {
        expectDerivativesAt(camera, {20.0, 4.0, 0.0});
        expectDerivativesAt(camera, {9.0, -5.0, 1.2});
        expectDerivativesAt(camera, {60.0, 15.0, 0.0});
    }
}

TEST(Projection, DerivativesStayFiniteOnTheOpticalAxis) {
    const Projection camera{VeskarTest::testInstallation().camera.build()};
    const Eigen::Vector3d axis = camera.camera().getRotation().col(0);
    const Veskar::Host::ImageMotion image =
        camera.project(camera.origin() + 10.0 * axis, {1.0, 1.0, 1.0});
    EXPECT_LT(image.uv.norm(), 1e-3);
    // At the centre of an equidistant lens a lateral metre rotates the ray by 1 / distance.
    EXPECT_NEAR(image.jacobian(0, 1), -1.2732395447351628 / 10.0, 1e-5);
    EXPECT_TRUE(image.rateJacobian.allFinite());
}

TEST(Projection, SeesWhatIsInsideTheImage) {
    const Projection camera{VeskarTest::testInstallation().camera.build()};
    EXPECT_TRUE(camera.sees({20.0, 0.0, 0.0}));
    EXPECT_FALSE(camera.sees({20.0, 30.0, 0.0}));
    EXPECT_FALSE(camera.sees({2.0, 0.0, 0.0}));
    EXPECT_FALSE(pinholeCamera().sees({-20.0, 0.0, 0.0}));
}

TEST(Projection, AFishEyeLensSeesWhatIsBesideAndBehindIt) {
    Veskar::Host::CameraSetup setup = VeskarTest::testInstallation().camera;
    setup.mounting.pitch = 0.0;
    setup.imageToRadians = {0.0, 2.0, 0.0, 0.0};
    setup.radiansToImage = {0.0, 0.5, 0.0, 0.0};
    const Projection camera{setup.build()};
    // 100 degrees from the optical axis, to the right.
    const double angle = 100.0 * M_PI / 180.0;
    const Eigen::Vector3d point =
        camera.origin() + 10.0 * Eigen::Vector3d(std::cos(angle), -std::sin(angle), 0.0);
    EXPECT_NEAR(camera.position(point)[0], 0.5 * angle, 1e-12);
    EXPECT_TRUE(camera.sees(point));
}

TEST(Projection, APinholeSeesNothingBehindIt) {
    const Projection camera = pinholeCamera();
    const Eigen::Vector3d axis = camera.camera().getRotation().col(0);
    EXPECT_TRUE(camera.sees(camera.origin() + 10.0 * axis));
    EXPECT_FALSE(camera.sees(camera.origin() - 10.0 * axis));
}

TEST(Projection, APinholeKeepsWhatIsBehindItOnItsSide) {
    const Projection camera = pinholeCamera();
    EXPECT_LT(camera.position({-20.0, 15.0, 5.0})[0], -1.0);
    EXPECT_GT(camera.position({-20.0, -15.0, 5.0})[0], 1.0);
}

TEST(Projection, FindsTheGroundPointOfAColumnAtARange) {
    const Projection camera = lensCamera();
    for (const Eigen::Vector2d& ground :
         {Eigen::Vector2d(15.0, 6.0), Eigen::Vector2d(60.0, -9.0), Eigen::Vector2d(8.0, 0.5)}) {
        const Eigen::Vector3d point(ground[0], ground[1], 0.0);
        const Eigen::Vector2d uv = camera.position(point);
        // A wrong row does not matter: column and range determine the position.
        const auto found =
            camera.groundPoint(uv[0], uv[1] + 0.02, (point - camera.origin()).norm());
        ASSERT_TRUE(found);
        EXPECT_LT((found->position - ground).norm(), 1e-6);
    }
}

TEST(Projection, ColumnAndRangeJacobianAgreesWithDifferences) {
    const Projection camera = lensCamera();
    const Eigen::Vector2d ground(25.0, -7.0);
    const Eigen::Vector3d place(ground[0], ground[1], 0.0);
    const Eigen::Vector2d uv = camera.position(place);
    const auto found = camera.groundPoint(uv[0], uv[1], (place - camera.origin()).norm());
    ASSERT_TRUE(found);
    const Eigen::Matrix2d& J = found->jacobian;
    constexpr double h = 1e-5;
    for (Eigen::Index axis = 0; axis < 2; ++axis) {
        Eigen::Vector3d step = h * Eigen::Vector3d::Unit(axis);
        const double u =
            (camera.position(place + step)[0] - camera.position(place - step)[0]) / (2.0 * h);
        const double range =
            ((place + step - camera.origin()).norm() - (place - step - camera.origin()).norm()) /
            (2.0 * h);
        EXPECT_NEAR(J(0, axis), u, 1e-8);
        EXPECT_NEAR(J(1, axis), range, 1e-8);
    }
}
