// SPDX-License-Identifier: Apache-2.0
#include "calibrate/MountingShift.h"

#include <veskar-host/Projection.h>

#include "calibrate/ImageErrors.h"
#include "calibrate/Pairing.h"
#include "check/Median.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <vector>

namespace Workbench {
namespace {

const double pairingGate = radians(2.5);

/// @return the median, with its deviation by the median absolute deviation, for normal errors
ShiftedAngle medianWithStd(const std::vector<double>& angles) {
    constexpr double stdPerDeviation = 1.4826;
    constexpr double stdOfMedian = 1.2533;  // sqrt(pi / 2), over that of the mean
    const double median = medianOf(angles);
    std::vector<double> deviations(angles.size());
    std::transform(angles.begin(), angles.end(), deviations.begin(),
                   [&](double angle) { return std::abs(angle - median); });
    return {median, stdOfMedian * stdPerDeviation * medianOf(deviations) /
                        std::sqrt(static_cast<double>(angles.size()))};
}

}  // namespace

std::optional<MountingShift> mountingShift(const Installation& stated,
                                           const CalibrationScene& scene) {
    const Placement turned = coarseStart(stated, {scene}, CoarseReach::Turns);
    const std::vector<CalibrationSample> samples =
        pairSamples(stated, turned, {scene}, pairingGate);
    const std::vector<Eigen::Vector2d> errors = imageErrors(stated, samples, turned);
    const ObjectModel model(stated, turned);
    struct Cluster {
        std::vector<double> bearings;
        std::vector<double> depressions;
    };
    std::map<std::size_t, Cluster> clusters;
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const Eigen::Vector2d angles = angularError(model, samples[i], errors[i]);
        Cluster& cluster = clusters[samples[i].cluster];
        cluster.bearings.push_back(angles[0]);
        cluster.depressions.push_back(angles[1]);
    }
    if (clusters.size() < leastClusters) {
        return std::nullopt;
    }
    // What appears too far to the right, or too high, is seen by a camera turned left, or down.
    std::vector<double> yaws;
    std::vector<double> pitches;
    for (const auto& [id, cluster] : clusters) {
        yaws.push_back(turned[indexOf(MountingParameter::CameraYaw)] - medianOf(cluster.bearings));
        pitches.push_back(turned[indexOf(MountingParameter::CameraPitch)] -
                          medianOf(cluster.depressions));
    }
    return MountingShift{medianWithStd(yaws), medianWithStd(pitches), clusters.size()};
}

}  // namespace Workbench
