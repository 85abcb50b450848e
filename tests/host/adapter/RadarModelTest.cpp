// SPDX-License-Identifier: Apache-2.0
#include <veskar-host/RadarModel.h>
#include <veskar/Sensor.h>

#include "host/TestInstallation.h"

#include <cmath>

#include <gtest/gtest.h>

using Veskar::Host::RadarModel;

namespace {

Veskar::Host::RadarSetup tiltedRadar() {
    Veskar::Host::RadarSetup setup = VeskarTest::testInstallation().radar;
    setup.mounting.yaw = 15.0;
    setup.mounting.pitch = 6.0;
    setup.mounting.roll = -2.0;
    return setup;
}

// The radar's measurement of a ground point, computed independently of the model: transformed to
// its frame, then to spherical coordinates.
Eigen::Vector2d measure(const Veskar::Host::RadarSetup& setup, const Eigen::Vector2d& ground) {
    Veskar::Sensor pose;
    pose.setRotation(setup.mounting.yaw, setup.mounting.pitch, setup.mounting.roll);
    const Eigen::Vector3d inRadar =
        pose.getRotation().transpose() *
        (Eigen::Vector3d(ground[0], ground[1], 0.0) - setup.mounting.position);
    return {inRadar.norm(), -std::atan2(inRadar[1], inRadar[0]) * 180.0 / M_PI};
}

}  // namespace

TEST(RadarModel, FindsTheGroundPointThatIsMeasured) {
    const Veskar::Host::RadarSetup setup = tiltedRadar();
    const RadarModel model(setup, {});
    for (const Eigen::Vector2d& ground :
         {Eigen::Vector2d(30.0, 8.0), Eigen::Vector2d(7.0, -2.0), Eigen::Vector2d(90.0, 40.0)}) {
        const Eigen::Vector2d measured = measure(setup, ground);
        EXPECT_LT((model.groundPoint(measured[0], measured[1]).position - ground).norm(), 1e-9);
    }
}

TEST(RadarModel, JacobianAgreesWithDifferences) {
    const RadarModel model(tiltedRadar(), {});
    const auto place = model.groundPoint(35.0, -20.0);
    constexpr double h = 1e-5;
    const Eigen::Vector2d byRange = (model.groundPoint(35.0 + h, -20.0).position -
                                     model.groundPoint(35.0 - h, -20.0).position) /
                                    (2.0 * h);
    const Eigen::Vector2d byDegree = (model.groundPoint(35.0, -20.0 + h).position -
                                      model.groundPoint(35.0, -20.0 - h).position) /
                                     (2.0 * h);
    EXPECT_LT((place.jacobian.col(0) - byRange).norm(), 1e-7);
    EXPECT_LT((place.jacobian.col(1) * M_PI / 180.0 - byDegree).norm(), 1e-7);
}

TEST(RadarModel, KeepsARangeBelowItsHeightOnTheGround) {
    const RadarModel model(VeskarTest::testInstallation().radar, {});
    const auto place = model.groundPoint(1.0, 0.0);
    EXPECT_TRUE(place.position.allFinite());
    EXPECT_LT(place.position.norm(), 1.5);
}

TEST(RadarModel, PutsWhatIsNearerThanTheGroundJustBesideItself) {
    const Veskar::Host::RadarSetup setup = VeskarTest::testInstallation().radar;
    const double height = setup.mounting.position[2];
    const Eigen::Vector2d beside =
        RadarModel(setup, {}).groundPoint(1.0, 0.0).position - setup.mounting.position.head<2>();
    // As if the range were 2 % above the height.
    EXPECT_NEAR(beside[0], height * std::sqrt(1.02 * 1.02 - 1.0), 1e-9);
    EXPECT_NEAR(beside[1], 0.0, 1e-9);
}

TEST(RadarModel, TurnsSpeedAndDirectionIntoAGroundVelocity) {
    Veskar::Host::RadarSetup setup = VeskarTest::testInstallation().radar;
    setup.mounting.yaw = 90.0;
    const RadarModel model(setup, {});
    Veskar::Host::RadarReport report;
    report.range = 20.0;
    report.speed = 3.0;
    report.direction = 90.0;  // to the right of a radar that points to the left
    const Veskar::Host::GroundEstimate estimate = model.estimate(report);
    EXPECT_LT((estimate.state.tail<2>() - Eigen::Vector2d(3.0, 0.0)).norm(), 1e-12);
    EXPECT_NEAR(estimate.covariance(2, 2), setup.velocityStd * setup.velocityStd, 1e-12);
}

TEST(RadarModel, LeavesTheTangentialSpeedOpenWhenOnlyTheRadialOneIsKnown) {
    const Veskar::Host::HostParameters parameters;
    const Veskar::Host::RadarSetup setup = VeskarTest::testInstallation().radar;
    const RadarModel model(setup, parameters);
    Veskar::Host::RadarReport report;
    report.range = 30.0;
    report.radialSpeed = -2.0;
    const Veskar::Host::GroundEstimate estimate = model.estimate(report);
    // A metre of slant range is slightly more than a metre on the ground.
    const double ground = 30.0 / std::sqrt(30.0 * 30.0 - 4.6 * 4.6);
    EXPECT_NEAR(estimate.state[2], -2.0 * ground, 1e-9);
    EXPECT_NEAR(estimate.state[3], 0.0, 1e-9);
    EXPECT_NEAR(estimate.covariance(2, 2), setup.velocityStd * setup.velocityStd, 1e-12);
    EXPECT_NEAR(estimate.covariance(3, 3),
                parameters.unknownTangentialSpeedStd * parameters.unknownTangentialSpeedStd, 1e-12);
}

TEST(RadarModel, UsesTheRadialSpeedWhenTheDirectionIsUnknown) {
    const RadarModel model(VeskarTest::testInstallation().radar, {});
    Veskar::Host::RadarReport report;
    report.range = 30.0;
    report.radialSpeed = -2.0;
    const Veskar::Host::GroundEstimate radialOnly = model.estimate(report);
    report.speed = 3.0;
    const Veskar::Host::GroundEstimate withSpeed = model.estimate(report);
    EXPECT_EQ(withSpeed.state, radialOnly.state);
    EXPECT_EQ(withSpeed.covariance, radialOnly.covariance);
}

TEST(RadarModel, SpreadsRangeAlongAndAzimuthAcross) {
    const Veskar::Host::RadarSetup setup = VeskarTest::testInstallation().radar;
    const RadarModel model(setup, {});
    Veskar::Host::RadarReport report;
    report.range = 40.0;
    report.radialSpeed = 0.0;
    const Veskar::Host::GroundEstimate estimate = model.estimate(report);
    EXPECT_NEAR(std::sqrt(estimate.covariance(0, 0)), setup.rangeStd, 0.01);
    EXPECT_NEAR(std::sqrt(estimate.covariance(1, 1)), 40.0 * setup.azimuthStd * M_PI / 180.0, 0.01);
}
