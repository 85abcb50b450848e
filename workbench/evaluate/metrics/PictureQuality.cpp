// SPDX-License-Identifier: Apache-2.0
#include "evaluate/metrics/PictureQuality.h"

#include "evaluate/metrics/Average.h"

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
    result.completeness = average(trackedTruths, truths);
    result.duplicatesPerObject = average(assignedTracks - trackedTruths, trackedTruths);
    result.spuriousness = average(tracks - assignedTracks, tracks);
    return result;
}

}  // namespace Workbench
