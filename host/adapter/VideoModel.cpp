// SPDX-License-Identifier: Apache-2.0
#include <veskar-host/Projection.h>
#include <veskar-host/VideoModel.h>

#include <algorithm>
#include <cmath>

namespace Veskar::Host {
namespace {

/// Boxes that end closer to the image border than this (image units) are cut.
constexpr double borderWidth = 0.005;

/// Where the image border cuts a box, so that the middle of its lower edge is not where the object
/// stands.
struct Cut {
    explicit Cut(const ImageBox& box)
        : atSide(box.left < borderWidth - 1.0 || box.right > 1.0 - borderWidth),
          below(box.bottom < borderWidth - 1.0) {}

    bool atSide;
    bool below;
};

}  // namespace

VideoModel::VideoModel(const Camera& camera, const Config::VideoInput& noise,
                       const HostParameters& parameters)
    : camera_(camera), noise_(noise), parameters_(parameters) {}

double VideoModel::pseudoRangeStd(const Camera::RangeToTarget& pseudo, double v) const {
    if (pseudo.clamped) {
        return noise_.maximumPseudoRangeStd;
    }
    // getRangeToTargetUncertainty multiplies the standard deviation by the aspect ratio, but that
    // of v includes it already.
    const double moved =
        camera_
            .getRangeToTargetUncertainty(v, noise_.minimumAngle,
                                         noise_.uvPositionStd / camera_.getAspectRatio())
            .range;
    return std::clamp(std::abs(moved), noise_.minimumPseudoRangeStd, noise_.maximumPseudoRangeStd);
}

/// To first order, for ranges far above the camera's height.
double VideoModel::slopeRangeStd(double range) const {
    return parameters_.groundSlopeStd > 0.0 ? range * range / camera_.getPosition()[2] *
                                                  std::tan(radians(parameters_.groundSlopeStd))
                                            : 0.0;
}

double VideoModel::pseudoRangeRate(double u, double v, const Eigen::Vector2d& velocity) const {
    constexpr double interval = 0.01;  // half width of the central difference, s
    const Eigen::Vector2d step = velocity * interval;
    const auto after = camera_.getRangeToTarget(u + step[0], v + step[1], noise_.minimumAngle);
    const auto before = camera_.getRangeToTarget(u - step[0], v - step[1], noise_.minimumAngle);
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
    const Camera::RangeToTarget pseudo = camera_.getRangeToTarget(u, v, noise_.minimumAngle);
    const double range = pseudo.range;
    const double rate = pseudoRangeRate(u, v, velocity);

    FusionEstimate result;
    result.state << u, velocity[0], v, velocity[1], range, rate;
    const double velocityStd =
        measured ? noise_.uvVelocityStd : parameters_.unknownImageVelocityStd;
    const double position = noise_.uvPositionStd * noise_.uvPositionStd;
    const double speed = velocityStd * velocityStd;
    const double lag = parameters_.rangeStdPerRate * rate;
    const double relative = parameters_.pseudoRangeStdPerRange * range;
    const double base = pseudoRangeStd(pseudo, v);
    const double slope = slopeRangeStd(range);
    result.covariance.setZero();
    result.covariance.diagonal() << position, speed, position, speed,
        base * base + relative * relative + lag * lag + slope * slope,
        noise_.pseudoRangeDotStd * noise_.pseudoRangeDotStd;
    result.covariance(0, 2) = result.covariance(2, 0) = noise_.uvCorrelation * position;
    result.covariance(1, 3) = result.covariance(3, 1) = noise_.uvCorrelation * speed;
    if (parameters_.cutBoxStd > 0.0) {
        widenWhereCut(box, result.covariance);
    }
    return result;
}

void VideoModel::widenWhereCut(const ImageBox& box, StateMatrix& covariance) const {
    const Cut cut(box);
    const double wide = parameters_.cutBoxStd * parameters_.cutBoxStd;
    if (cut.atSide) {
        covariance(0, 0) += wide;
        covariance(4, 4) =
            std::max(covariance(4, 4), noise_.maximumPseudoRangeStd * noise_.maximumPseudoRangeStd);
    }
    if (cut.below) {
        covariance(2, 2) += wide;
    }
}

}  // namespace Veskar::Host
