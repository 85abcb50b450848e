// SPDX-License-Identifier: Apache-2.0
#include "calibrate/ImageErrors.h"

#include "calibrate/VideoSmoothing.h"

namespace Workbench {
namespace {

double lagAt(const CalibrationSample& sample, const Placement& placement) {
    return placement[indexOf(MountingParameter::Lag)] +
           placement[indexOf(MountingParameter::Drift)] * sample.sinceMiddle;
}

}  // namespace

Eigen::Vector2d imageError(const ObjectModel& model, const CalibrationSample& sample,
                           const Placement& placement) {
    const Eigen::Vector2d seen =
        sample.seen - (lagAt(sample, placement) - sample.assumedLag) * sample.seenRate;
    const Eigen::Vector2d behind =
        (usualSmoothing + placement[indexOf(MountingParameter::VideoSmoothing)]) *
        sample.acceleration;
    Cuboid cuboid = sample.cuboid;
    if (cuboid.isLong()) {
        cuboid.toMiddle *= 1.0 + placement[indexOf(MountingParameter::ReflectionDepth)];
    }
    return seen + behind - model.middleAndBottom(model.reflection(sample.heard), cuboid);
}

std::vector<Eigen::Vector2d> imageErrors(const Installation& stated,
                                         const std::vector<CalibrationSample>& samples,
                                         const Placement& placement) {
    const ObjectModel model(stated, placement);
    std::vector<Eigen::Vector2d> errors;
    errors.reserve(samples.size());
    for (const CalibrationSample& sample : samples) {
        errors.push_back(imageError(model, sample, placement));
    }
    return errors;
}

Eigen::Vector2d angularError(const ObjectModel& model, const CalibrationSample& sample,
                             const Eigen::Vector2d& error) {
    return model.anglesOf(sample.seen) - model.anglesOf(sample.seen - error);
}

}  // namespace Workbench
