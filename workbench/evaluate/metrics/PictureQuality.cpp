// SPDX-License-Identifier: Apache-2.0
#include "evaluate/metrics/PictureQuality.h"

#include "evaluate/metrics/Average.h"

#include <algorithm>
#include <set>

namespace Workbench {

void PictureQuality::add(const Instant& instant) {
    truths_ += static_cast<int>(instant.truths.size());
    tracks_ += static_cast<int>(instant.tracks.size());
    if (instant.truths.empty()) {
        return;
    }
    const Eigen::MatrixXd distance = distances(instant);
    std::set<Eigen::Index> tracked;
    for (Eigen::Index track = 0; track < distance.cols(); ++track) {
        Eigen::Index nearest = 0;
        if (distance.col(track).minCoeff(&nearest) <= radius_) {
            tracked.insert(nearest);
            ++assignedTracks_;
        }
    }
    trackedTruths_ += static_cast<int>(tracked.size());
}

PictureQuality::Result PictureQuality::result() const {
    Result result;
    result.completeness = average(trackedTruths_, truths_);
    result.duplicatesPerObject = average(assignedTracks_ - trackedTruths_, trackedTruths_);
    result.spuriousness = average(tracks_ - assignedTracks_, tracks_);
    return result;
}

}  // namespace Workbench
