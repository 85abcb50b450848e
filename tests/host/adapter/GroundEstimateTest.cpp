// SPDX-License-Identifier: Apache-2.0
#include <veskar-host/GroundEstimate.h>

#include "host/TestInstallation.h"

#include <cmath>

#include <gtest/gtest.h>

using Veskar::Host::GroundEstimate;
using Veskar::Host::Projection;

namespace {

Projection camera() {
    Veskar::Host::CameraSetup setup = VeskarTest::testInstallation().camera;
    setup.mounting.yaw = 5.0;
    setup.radiansToImage = {0.0, 1.21, -0.018, 0.126};
    return Projection(setup.build());
}

}  // namespace

TEST(GroundEstimate, FusionStateHoldsRatesOfTheMovingPoint) {
    const Projection projection = camera();
    const Eigen::Vector4d ground(22.0, -4.0, -1.3, 0.9);
    const Veskar::StateVector state = toFusionState(projection, ground);
    constexpr double dt = 1e-4;
    const auto positionAt = [&](double t) {
        const Eigen::Vector3d point(ground[0] + t * ground[2], ground[1] + t * ground[3], 0.0);
        const Eigen::Vector2d uv = projection.position(point);
        return Eigen::Vector3d(uv[0], uv[1], (point - projection.origin()).norm());
    };
    const Eigen::Vector3d now = positionAt(0.0);
    const Eigen::Vector3d rate = (positionAt(dt) - positionAt(-dt)) / (2.0 * dt);
    for (Eigen::Index i = 0; i < 3; ++i) {
        EXPECT_NEAR(state[2 * i], now[i], 1e-12);
        EXPECT_NEAR(state[2 * i + 1], rate[i], 1e-7);
    }
}

TEST(GroundEstimate, JacobianAgreesWithDifferences) {
    const Projection projection = camera();
    for (const Eigen::Vector4d& ground :
         {Eigen::Vector4d(22.0, -4.0, -1.3, 0.9), Eigen::Vector4d(8.0, 3.0, 4.0, -2.0),
          Eigen::Vector4d(90.0, 20.0, -15.0, 3.0)}) {
        const Eigen::Matrix<double, 6, 4> J = fusionJacobian(projection, ground);
        for (Eigen::Index i = 0; i < 4; ++i) {
            constexpr double h = 1e-4;
            const Eigen::Vector4d step = h * Eigen::Vector4d::Unit(i);
            const Veskar::StateVector slope = (toFusionState(projection, ground + step) -
                                               toFusionState(projection, ground - step)) /
                                              (2.0 * h);
            EXPECT_LT((J.col(i) - slope).norm(), 1e-6) << "column " << i;
        }
    }
}

TEST(GroundEstimate, CovariancePropagatesToFirstOrder) {
    const Projection projection = camera();
    const GroundEstimate estimate{{22.0, -4.0, -1.3, 0.9}, 0.04 * Eigen::Matrix4d::Identity()};
    const Eigen::Matrix<double, 6, 4> J = fusionJacobian(projection, estimate.state);
    const Veskar::Host::FusionEstimate fused = toFusion(projection, estimate);
    EXPECT_LT((fused.covariance - 0.04 * J * J.transpose()).norm(), 1e-15);
}

TEST(GroundEstimate, PredictsWithConstantVelocity) {
    const GroundEstimate estimate{{1.0, 2.0, 3.0, -4.0},
                                  Eigen::Vector4d(1.0, 2.0, 0.25, 0.5).asDiagonal()};
    const GroundEstimate later = estimate.predicted(2.0, 0.5);
    EXPECT_LT((later.state - Eigen::Vector4d(7.0, -6.0, 3.0, -4.0)).norm(), 1e-12);
    // 1 + 2^2 0.25 from the velocity, (2^2 / 2)^2 0.5^2 from the acceleration.
    EXPECT_NEAR(later.covariance(0, 0), 1.0 + 1.0 + 1.0, 1e-12);
    EXPECT_NEAR(later.covariance(2, 2), 0.25 + 4.0 * 0.25, 1e-12);
    EXPECT_NEAR(later.covariance(0, 2), 2.0 * 0.25 + 2.0 * 2.0 * 0.25, 1e-12);
    EXPECT_EQ(later.covariance(0, 1), 0.0);
}
