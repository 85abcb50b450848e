// SPDX-License-Identifier: Apache-2.0
#include "evaluate/metrics/Identity.h"

#include "evaluate/metrics/Assignment.h"

#include <algorithm>

namespace Workbench {

void Identity::add(const Instant& instant) {
    const std::vector<int> truths = countAppearances(instant.truths, truthCounts_);
    const std::vector<int> tracks = countAppearances(instant.tracks, trackCounts_);
    const Eigen::MatrixXd similarity = similarities(instant, parameters_.zeroDistance);
    for (Eigen::Index i = 0; i < similarity.rows(); ++i) {
        for (Eigen::Index j = 0; j < similarity.cols(); ++j) {
            if (similarity(i, j) >= parameters_.threshold) {
                ++agreements_[{truths[static_cast<std::size_t>(i)],
                               tracks[static_cast<std::size_t>(j)]}];
            }
        }
    }
}

Identity::Result Identity::result() const {
    // Assigning an object to a track with k agreements turns 2 k errors into k hits, so minimising
    // the errors means maximising the agreements.
    Eigen::MatrixXd gain = Eigen::MatrixXd::Zero(truthCounts_.size(), trackCounts_.size());
    for (const auto& [pair, count] : agreements_) {
        gain(pair.first, pair.second) = count;
    }
    Result result;
    for (const auto& [truth, track] : assignWithGreatestGain(gain)) {
        result.IDTP += static_cast<int>(gain(truth, track));
    }
    result.IDFN = truthCounts_.total() - result.IDTP;
    result.IDFP = trackCounts_.total() - result.IDTP;
    const auto ratio = [&](double denominator) { return result.IDTP / std::max(1.0, denominator); };
    result.IDR = ratio(result.IDTP + result.IDFN);
    result.IDP = ratio(result.IDTP + result.IDFP);
    result.IDF1 = ratio(result.IDTP + 0.5 * result.IDFP + 0.5 * result.IDFN);
    return result;
}

}  // namespace Workbench
