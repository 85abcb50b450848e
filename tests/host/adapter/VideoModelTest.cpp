// SPDX-License-Identifier: Apache-2.0
#include <veskar-host/VideoModel.h>
#include <veskar-host/VideoReport.h>

#include "host/TestInstallation.h"

#include <cmath>

#include <gtest/gtest.h>

using Veskar::Host::VideoModel;

namespace {

class VideoModelTest : public testing::Test {
protected:
    Veskar::Camera camera = VeskarTest::testInstallation().camera.build();
    Veskar::Config::VideoInput noise = VeskarTest::configuration().inputs.video;
    Veskar::Host::HostParameters parameters;

    // A person on the ground in the middle of the image.
    Veskar::Host::VideoReport report() const {
        Veskar::Host::VideoReport result;
        result.box = {-0.05, -0.2, 0.05, 0.1};
        result.velocity = Eigen::Vector2d(0.1, -0.02);
        return result;
    }
    Veskar::Host::FusionEstimate estimate(const Veskar::Host::VideoReport& report) const {
        return VideoModel(camera, noise, parameters).estimate(report.box, report.velocity);
    }
    // The variance that the adapter adds to the configured one of the range.
    double addedVariance(const Veskar::StateVector& state) const {
        return std::pow(parameters.pseudoRangeStdPerRange * state[4], 2) +
               std::pow(parameters.rangeStdPerRate * state[5], 2);
    }
};

}  // namespace

TEST_F(VideoModelTest, StandsOnTheMiddleOfTheLowerEdge) {
    const auto result = estimate(report());
    EXPECT_NEAR(result.state[0], 0.0, 1e-15);
    EXPECT_NEAR(result.state[1], 0.1, 1e-15);
    EXPECT_NEAR(result.state[2], -0.2, 1e-15);
    EXPECT_NEAR(result.state[3], -0.02, 1e-15);
    EXPECT_NEAR(result.state[4], camera.getRangeToTarget(0.0, -0.2, noise.minimumAngle).range,
                1e-12);
}

TEST_F(VideoModelTest, RangeRateFollowsThePseudoRange) {
    constexpr double dt = 1e-3;
    const auto range = [&](double t) {
        return camera.getRangeToTarget(0.1 * t, -0.2 - 0.02 * t, noise.minimumAngle).range;
    };
    EXPECT_NEAR(estimate(report()).state[5], (range(dt) - range(-dt)) / (2.0 * dt), 1e-3);
}

TEST_F(VideoModelTest, PositionAndVelocityStdAreTheConfigured) {
    noise.uvPositionStd = 0.02;
    noise.uvVelocityStd = 0.07;
    const auto P = estimate(report()).covariance;
    EXPECT_NEAR(P(0, 0), 0.0004, 1e-12);
    EXPECT_NEAR(P(2, 2), 0.0004, 1e-12);
    EXPECT_NEAR(P(1, 1), 0.0049, 1e-12);
    EXPECT_NEAR(P(3, 3), 0.0049, 1e-12);
}

TEST_F(VideoModelTest, CorrelationTiesBothImageCoordinates) {
    noise.uvCorrelation = 0.4;
    const auto P = estimate(report()).covariance;
    EXPECT_NEAR(P(0, 2), 0.4 * P(0, 0), 1e-15);
    EXPECT_NEAR(P(2, 0), 0.4 * P(0, 0), 1e-15);
    EXPECT_NEAR(P(1, 3), 0.4 * P(1, 1), 1e-15);
}

TEST_F(VideoModelTest, PseudoRangeRateStdIsTheConfigured) {
    noise.pseudoRangeDotStd = 4.5;
    EXPECT_NEAR(estimate(report()).covariance(5, 5), 20.25, 1e-12);
}

TEST_F(VideoModelTest, PseudoRangeStdIsWhatThePositionStdMovesItBy) {
    noise.minimumPseudoRangeStd = 0.0;
    noise.maximumPseudoRangeStd = 1000.0;
    const auto result = estimate(report());
    const double at = camera.getRangeToTarget(0.0, -0.2, noise.minimumAngle).range;
    const double moved =
        camera.getRangeToTarget(0.0, -0.2 + noise.uvPositionStd, noise.minimumAngle).range;
    EXPECT_NEAR(result.covariance(4, 4), std::pow(moved - at, 2) + addedVariance(result.state),
                1e-9);
}

TEST_F(VideoModelTest, PseudoRangeStdIsNeverBelowItsMinimum) {
    noise.minimumPseudoRangeStd = 6.0;
    const auto result = estimate(report());
    EXPECT_NEAR(result.covariance(4, 4), 36.0 + addedVariance(result.state), 1e-9);
}

TEST_F(VideoModelTest, PseudoRangeStdIsNeverAboveItsMaximum) {
    noise.minimumPseudoRangeStd = 0.1;
    noise.maximumPseudoRangeStd = 0.15;
    const auto result = estimate(report());
    EXPECT_NEAR(result.covariance(4, 4), 0.0225 + addedVariance(result.state), 1e-9);
}

TEST_F(VideoModelTest, MinimumAngleLimitsTheRangeAndMakesItDoubtful) {
    auto high = report();
    high.box.bottom = 0.85;  // above the horizon
    high.box.top = 0.95;
    noise.minimumAngle = 2.0;
    const auto result = estimate(high);
    EXPECT_NEAR(result.state[4], 5.0 / std::sin(2.0 * M_PI / 180.0), 1e-9);
    EXPECT_EQ(result.state[5], 0.0);
    EXPECT_NEAR(result.covariance(4, 4),
                std::pow(noise.maximumPseudoRangeStd, 2) + addedVariance(result.state), 1e-9);
}

TEST_F(VideoModelTest, RangeRateIsUnknownWhereTheRangeReachesItsLimit) {
    noise.minimumAngle = 2.0;
    const auto isLimited = [&](double v) {
        return camera.getRangeToTarget(0.0, v, noise.minimumAngle).clamped;
    };
    double below = -0.2;
    double above = 0.85;
    while (above - below > 1e-6) {
        const double middle = 0.5 * (below + above);
        (isLimited(middle) ? above : below) = middle;
    }
    auto moving = report();
    moving.box.top = 0.95;
    for (const double velocity : {0.1, -0.1}) {
        moving.velocity = Eigen::Vector2d(0.0, velocity);
        moving.box.bottom = below - 1e-4;
        EXPECT_EQ(estimate(moving).state[5], 0.0);
        moving.box.bottom = below - 2e-3;
        EXPECT_NE(estimate(moving).state[5], 0.0);
    }
}

TEST_F(VideoModelTest, UnknownVelocityIsZeroAndWide) {
    auto still = report();
    still.velocity.reset();
    const auto result = estimate(still);
    EXPECT_EQ(result.state[1], 0.0);
    EXPECT_EQ(result.state[3], 0.0);
    EXPECT_NEAR(result.covariance(1, 1), std::pow(parameters.unknownImageVelocityStd, 2), 1e-15);
}

TEST_F(VideoModelTest, ASlopeOfTheGroundMovesFarRangesMost) {
    const auto flat = estimate(report());
    parameters.groundSlopeStd = 2.0;
    const auto sloped = estimate(report());
    const double R = flat.state[4];
    const double moved = R * R / camera.getPosition()[2] * std::tan(2.0 * M_PI / 180.0);
    EXPECT_GT(moved, 0.5);
    EXPECT_NEAR(sloped.covariance(4, 4) - flat.covariance(4, 4), moved * moved, 1e-9);
    Veskar::StateMatrix others = sloped.covariance - flat.covariance;
    others(4, 4) = 0.0;
    EXPECT_EQ(others.norm(), 0.0);
    EXPECT_EQ(sloped.state, flat.state);
}

TEST_F(VideoModelTest, ABoxCutAtASideTellsNeitherColumnNorRange) {
    noise.maximumPseudoRangeStd = 25.0;
    parameters.cutBoxStd = 0.3;
    Veskar::Host::VideoReport whole = report();
    whole.box = {-0.994, -0.2, -0.9, 0.1};
    Veskar::Host::VideoReport cut = whole;
    cut.box.left = -0.996;
    const auto P = estimate(cut).covariance;
    EXPECT_NEAR(P(0, 0), std::pow(noise.uvPositionStd, 2) + 0.09, 1e-12);
    EXPECT_EQ(P(4, 4), 625.0);
    EXPECT_NEAR(P(2, 2), std::pow(noise.uvPositionStd, 2), 1e-12);
    EXPECT_NEAR(estimate(whole).covariance(0, 0), std::pow(noise.uvPositionStd, 2), 1e-12);
    EXPECT_LT(estimate(whole).covariance(4, 4), 625.0);
    cut.box = {0.9, -0.2, 0.996, 0.1};
    EXPECT_EQ(estimate(cut).covariance(4, 4), 625.0);
    parameters.cutBoxStd = 0.0;
    EXPECT_LT(estimate(cut).covariance(4, 4), 625.0);
}

TEST_F(VideoModelTest, ABoxCutBelowDoesNotTellItsRow) {
    parameters.cutBoxStd = 0.3;
    Veskar::Host::VideoReport cut = report();
    cut.box.bottom = -0.996;
    const auto P = estimate(cut).covariance;
    EXPECT_NEAR(P(2, 2), std::pow(noise.uvPositionStd, 2) + 0.09, 1e-12);
    EXPECT_NEAR(P(0, 0), std::pow(noise.uvPositionStd, 2), 1e-12);
    cut.box.bottom = -0.994;
    EXPECT_NEAR(estimate(cut).covariance(2, 2), std::pow(noise.uvPositionStd, 2), 1e-12);
}
