// SPDX-License-Identifier: Apache-2.0
#include "adapter/VideoModel.h"

#include <algorithm>
#include <cmath>

namespace Workbench {

VideoModel::VideoModel(const Veskar::Camera& givenCamera,
                       const Veskar::Config::VideoInput& givenNoise,
                       const AdapterParameters& givenParameters)
    : camera(givenCamera), noise(givenNoise), parameters(givenParameters) {}

double VideoModel::pseudoRangeStd(const Veskar::Camera::RangeToTarget& pseudo, double v) const {
    if (pseudo.clamped) {
        return noise.maximumPseudoRangeStd;
    }
    // The camera multiplies the standard deviation by the aspect ratio, which v has in it already.
    const double moved =
        camera
            .getRangeToTargetUncertainty(v, noise.minimumAngle,
                                         noise.uvPositionStd / camera.getAspectRatio())
            .range;
    return std::clamp(std::abs(moved), noise.minimumPseudoRangeStd, noise.maximumPseudoRangeStd);
}

double VideoModel::pseudoRangeRate(double u, double v, const Eigen::Vector2d& velocity) const {
    constexpr double interval = 0.01;  // seconds to either side
    const Eigen::Vector2d step = velocity * interval;
    const auto after = camera.getRangeToTarget(u + step[0], v + step[1], noise.minimumAngle);
    const auto before = camera.getRangeToTarget(u - step[0], v - step[1], noise.minimumAngle);
    if (after.clamped || before.clamped) {
        return 0.0;
    }
    return (after.range - before.range) / (2.0 * interval);
}

FusionEstimate VideoModel::estimate(const ImageBox& box,
                                    const std::optional<Eigen::Vector2d>& measured) const {
    const double u = 0.5 * (box.left + box.right);
    const double v = box.bottom;
    const Eigen::Vector2d velocity = measured.value_or(Eigen::Vector2d::Zero());
    const Veskar::Camera::RangeToTarget pseudo = camera.getRangeToTarget(u, v, noise.minimumAngle);
    const double range = pseudo.range;
    const double rate = pseudoRangeRate(u, v, velocity);

    FusionEstimate result;
    result.state << u, velocity[0], v, velocity[1], range, rate;
    const double velocityStd = measured ? noise.uvVelocityStd : parameters.unknownImageVelocityStd;
    const double position = noise.uvPositionStd * noise.uvPositionStd;
    const double speed = velocityStd * velocityStd;
    const double lag = parameters.rangeStdPerRate * rate;
    const double relative = parameters.pseudoRangeStdPerRange * range;
    const double base = pseudoRangeStd(pseudo, v);
    result.covariance.setZero();
    result.covariance.diagonal() << position, speed, position, speed,
        base * base + relative * relative + lag * lag,
        noise.pseudoRangeDotStd * noise.pseudoRangeDotStd;
    result.covariance(0, 2) = result.covariance(2, 0) = noise.uvCorrelation * position;
    result.covariance(1, 3) = result.covariance(3, 1) = noise.uvCorrelation * speed;
    return result;
}

}  // namespace Workbench
