// SPDX-License-Identifier: Apache-2.0
#include "evaluate/metrics/PictureQuality.h"

#include <algorithm>
#include <set>

namespace Workbench {

void PictureQuality::add(const Instant& instant) {
    truths += static_cast<int>(instant.truths.size());
    tracks += static_cast<int>(instant.tracks.size());
    if (instant.truths.empty()) {
        return;
    }
    const Eigen::MatrixXd distance = distances(instant);
    std::set<Eigen::Index> tracked;
    for (Eigen::Index track = 0; track < distance.cols(); ++track) {
        Eigen::Index nearest = 0;
        if (distance.col(track).minCoeff(&nearest) <= radius) {
            tracked.insert(nearest);
            ++assignedTracks;
        }
    }
    trackedTruths += static_cast<int>(tracked.size());
}

PictureQuality::Result PictureQuality::result() const {
    Result result;
    result.completeness = static_cast<double>(trackedTruths) / std::max(1, truths);
    result.duplicatesPerObject =
        static_cast<double>(assignedTracks - trackedTruths) / std::max(1, trackedTruths);
    result.spuriousness = static_cast<double>(tracks - assignedTracks) / std::max(1, tracks);
    return result;
}

}  // namespace Workbench
