// SPDX-License-Identifier: Apache-2.0
#include "evaluate/metrics/Identity.h"

#include "evaluate/metrics/Assignment.h"

#include <algorithm>

namespace Workbench {

void Identity::add(const Instant& instant) {
    const std::vector<int> truths = countAppearances(instant.truths, truthCounts);
    const std::vector<int> tracks = countAppearances(instant.tracks, trackCounts);
    const Eigen::MatrixXd similarity = similarities(instant, parameters.zeroDistance);
    for (Eigen::Index i = 0; i < similarity.rows(); ++i) {
        for (Eigen::Index j = 0; j < similarity.cols(); ++j) {
            if (similarity(i, j) >= parameters.threshold) {
                ++agreements[{truths[static_cast<std::size_t>(i)],
                              tracks[static_cast<std::size_t>(j)]}];
            }
        }
    }
}

Identity::Result Identity::result() const {
    // An object and a track that are assigned to each other turn 2 k errors into k hits, so that
    // the fewest errors are the most agreements.
    Eigen::MatrixXd gain = Eigen::MatrixXd::Zero(truthCounts.size(), trackCounts.size());
    for (const auto& [pair, count] : agreements) {
        gain(pair.first, pair.second) = count;
    }
    Result result;
    for (const auto& [truth, track] : assignWithGreatestGain(gain)) {
        result.IDTP += static_cast<int>(gain(truth, track));
    }
    result.IDFN = truthCounts.total() - result.IDTP;
    result.IDFP = trackCounts.total() - result.IDTP;
    const auto ratio = [&](double denominator) { return result.IDTP / std::max(1.0, denominator); };
    result.IDR = ratio(result.IDTP + result.IDFN);
    result.IDP = ratio(result.IDTP + result.IDFP);
    result.IDF1 = ratio(result.IDTP + 0.5 * result.IDFP + 0.5 * result.IDFN);
    return result;
}

}  // namespace Workbench
