// SPDX-License-Identifier: Apache-2.0
#include <veskar-host/Projection.h>

#include "check/MountingEstimate.h"

#include <cmath>
#include <random>

#include <gtest/gtest.h>

using Veskar::Host::radians;

namespace Workbench {
namespace {

constexpr double statedHeight = 5.0;

/// Errors of an installation: true values minus stated ones.
struct Wrong {
    double yaw = 0.0;
    double height = 0.0;
    double pitch = 0.0;
    double lag = 0.0;
};

/// Walkers at 8 to 40 m in all directions, as seen by a wrongly mounted camera and a radar with
/// late stamps, with some wrong pairs. The camera's view is exact geometry, not the linear model of
/// the estimator.
std::vector<PairSample> samplesOf(const Wrong& wrong, double noise, double speed = 1.4) {
    std::mt19937 random(11);
    std::normal_distribution<double> normal;
    std::uniform_real_distribution<double> uniform(-1.0, 1.0);
    std::vector<PairSample> samples;
    for (int i = 0; i < 600; ++i) {
        const double distance = 24.0 + 16.0 * uniform(random);
        const double along = speed * uniform(random);
        const double across = speed * uniform(random);
        PairSample sample;
        sample.time = 0.2 * i;
        sample.groundDistance = distance;
        sample.bearingRate = across / distance;
        sample.depressionRate =
            -statedHeight * along / (distance * distance + statedHeight * statedHeight);
        const double late = distance - along * wrong.lag;
        sample.bearingError = -wrong.yaw + wrong.lag * sample.bearingRate + noise * normal(random);
        sample.depressionError = std::atan((statedHeight + wrong.height) / distance) - wrong.pitch -
                                 std::atan(statedHeight / late) +
                                 noise * 8.0 / distance * normal(random);
        if (i % 12 == 0) {
            sample.bearingError += 0.08;
            sample.depressionError -= 0.04;
        }
        samples.push_back(sample);
    }
    return samples;
}

TEST(MountingEstimate, FindsNothingInACleanInstallation) {
    const MountingEstimate estimate = estimateMounting(samplesOf({}, 0.006), statedHeight);
    EXPECT_FALSE(estimate.yaw.isSignificant);
    EXPECT_FALSE(estimate.height.isSignificant);
    EXPECT_FALSE(estimate.pitch.isSignificant);
    EXPECT_FALSE(estimate.lag.isSignificant);
    EXPECT_EQ(estimate.samples, 600U);
}

TEST(MountingEstimate, FindsEachErrorAndNoOther) {
    const double yaw = radians(2.0);
    MountingEstimate estimate = estimateMounting(samplesOf({yaw, 0, 0, 0}, 0.006), statedHeight);
    EXPECT_TRUE(estimate.yaw.isSignificant);
    EXPECT_NEAR(estimate.yaw.value, yaw, 0.05 * yaw);
    EXPECT_FALSE(estimate.height.isSignificant);
    EXPECT_FALSE(estimate.lag.isSignificant);

    estimate = estimateMounting(samplesOf({0, -0.5, 0, 0}, 0.006), statedHeight);
    EXPECT_TRUE(estimate.height.isSignificant);
    EXPECT_NEAR(estimate.height.value, -0.5, 0.1);
    EXPECT_FALSE(estimate.pitch.isSignificant);
    EXPECT_FALSE(estimate.yaw.isSignificant);

    const double pitch = radians(1.5);
    estimate = estimateMounting(samplesOf({0, 0, pitch, 0}, 0.006), statedHeight);
    EXPECT_TRUE(estimate.pitch.isSignificant);
    EXPECT_NEAR(estimate.pitch.value, pitch, 0.2 * pitch);
    EXPECT_FALSE(estimate.height.isSignificant);

    estimate = estimateMounting(samplesOf({0, 0, 0, 0.15}, 0.003), statedHeight);
    EXPECT_TRUE(estimate.lag.isSignificant);
    EXPECT_NEAR(estimate.lag.value, 0.15, 0.03);
    EXPECT_FALSE(estimate.yaw.isSignificant);
}

TEST(MountingEstimate, FindsAllErrorsAtOnce) {
    const Wrong wrong{radians(-2.0), 0.5, 0.0, -0.15};
    const MountingEstimate estimate = estimateMounting(samplesOf(wrong, 0.003), statedHeight);
    EXPECT_NEAR(estimate.yaw.value, wrong.yaw, 0.2 * std::abs(wrong.yaw));
    EXPECT_NEAR(estimate.height.value, wrong.height, 0.1);
    EXPECT_NEAR(estimate.lag.value, wrong.lag, 0.03);
}

TEST(MountingEstimate, IsUncertainOfTheLagWhenNothingMoves) {
    const MountingEstimate estimate =
        estimateMounting(samplesOf({radians(2.0), 0, 0, 0.15}, 0.006, 0.0), statedHeight);
    EXPECT_FALSE(estimate.lag.isSignificant);
    EXPECT_GT(estimate.lag.std, 1.0);
    EXPECT_NEAR(estimate.yaw.value, radians(2.0), radians(0.1));
}

TEST(MountingEstimate, ItsStandardDeviationsGrowWithTheNoise) {
    const MountingEstimate fine = estimateMounting(samplesOf({}, 0.002), statedHeight);
    const MountingEstimate coarse = estimateMounting(samplesOf({}, 0.02), statedHeight);
    EXPECT_GT(coarse.yaw.std, 3.0 * fine.yaw.std);
    EXPECT_GT(coarse.height.std, 3.0 * fine.height.std);
    EXPECT_GT(coarse.lag.std, 3.0 * fine.lag.std);
}

}  // namespace
}  // namespace Workbench
