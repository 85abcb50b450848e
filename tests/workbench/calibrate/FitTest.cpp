// SPDX-License-Identifier: Apache-2.0
#include <veskar-host/Projection.h>

#include "KnownErrors.h"
#include "calibrate/Fit.h"

#include <cmath>
#include <random>

#include <gtest/gtest.h>

using namespace Workbench;

namespace {

constexpr std::size_t passes = 40;

/// Cars that come and go, whose middles lie deeper behind their reflections than usual.
/// @param deeper share of the usual depth
std::vector<CalibrationSample> carsThatAreDeeper(const Installation& installation, double deeper) {
    constexpr double noise = 0.004;  // of a box, image units
    const ObjectModel model(installation, Placement::Zero());
    std::mt19937 generator(5);
    std::normal_distribution<double> error(0.0, noise);
    std::vector<CalibrationSample> samples;
    for (std::size_t pass = 0; pass < passes; ++pass) {
        const double side = -6.0 + 12.0 * static_cast<double>(pass) / (passes - 1);
        for (double ahead = 12.0; ahead < 60.0; ahead += 2.0) {
            RadarLook look;
            look.sighting.range = std::hypot(ahead, side, installation.radar.mounting.position[2]);
            look.sighting.azimuth = std::atan2(side, ahead);
            look.heading = pass % 2 == 0 ? 0.0 : radians(180.0);
            look.hasHeading = true;
            CalibrationSample sample;
            sample.heard = look.sighting;
            sample.cuboid = *cuboidOf(look, "car");
            Cuboid deep = sample.cuboid;
            deep.toMiddle *= 1.0 + deeper;
            sample.seen = model.middleAndBottom(model.reflection(sample.heard), deep) +
                          Eigen::Vector2d(error(generator), error(generator));
            sample.seenRate = sample.acceleration = Eigen::Vector2d::Zero();
            sample.whitening = Eigen::Matrix2d::Identity() / noise;
            sample.cluster = pass;
            samples.push_back(sample);
        }
    }
    return samples;
}

/// @return error of an estimate in its own standard deviations; the truth is as stated
double deviations(const Fit& fit, MountingParameter parameter) {
    const Eigen::Index k = indexOf(parameter);
    return std::abs(fit.placement[k]) / std::sqrt(fit.covariance(k, k));
}

TEST(Fit, AnUnusualDepthOfObjectsDoesNotPassForAHeight) {
    const Installation installation = VeskarTest::perimeterInstallation();
    const auto samples = carsThatAreDeeper(installation, 0.2);
    FreeParameters free = VeskarTest::usualParameters();
    const Fit blind = fit(installation, samples, Placement::Zero(), free);
    EXPECT_GT(deviations(blind, MountingParameter::CameraHeight), 1.96);

    free[static_cast<std::size_t>(MountingParameter::ReflectionDepth)] = true;
    const Fit aware = fit(installation, samples, Placement::Zero(), free);
    EXPECT_LT(deviations(aware, MountingParameter::CameraHeight), 1.96);
    EXPECT_LT(deviations(aware, MountingParameter::CameraPitch), 1.96);
    EXPECT_LT(std::abs(aware.placement[indexOf(MountingParameter::CameraHeight)]),
              0.5 * std::abs(blind.placement[indexOf(MountingParameter::CameraHeight)]));
    EXPECT_NEAR(aware.placement[indexOf(MountingParameter::ReflectionDepth)], 0.2, 0.1);
}

TEST(Fit, DoesNotTellTheDepthOfWhatHasNone) {
    const Installation installation = VeskarTest::perimeterInstallation();
    auto samples = carsThatAreDeeper(installation, 0.0);
    for (CalibrationSample& sample : samples) {
        sample.cuboid.toMiddle.setZero();
    }
    FreeParameters free = VeskarTest::usualParameters();
    free[static_cast<std::size_t>(MountingParameter::ReflectionDepth)] = true;
    const Fit told = fit(installation, samples, Placement::Zero(), free);
    const Eigen::Index depth = indexOf(MountingParameter::ReflectionDepth);
    EXPECT_NEAR(told.placement[depth], 0.0, 1e-9);
    EXPECT_NEAR(std::sqrt(told.covariance(depth, depth)),
                traitsOf(MountingParameter::ReflectionDepth).priorStd, 1e-9)
        << "nothing but the prior";
}

}  // namespace
