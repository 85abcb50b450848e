// SPDX-License-Identifier: Apache-2.0
#include "evaluate/metrics/Instant.h"

namespace Workbench {

Eigen::MatrixXd distances(const Instant& instant) {
    Eigen::MatrixXd result(instant.truths.size(), instant.tracks.size());
    for (Eigen::Index i = 0; i < result.rows(); ++i) {
        const Eigen::Vector2d& truth = instant.truths[static_cast<std::size_t>(i)].position;
        for (Eigen::Index j = 0; j < result.cols(); ++j) {
            result(i, j) = (instant.tracks[static_cast<std::size_t>(j)].position - truth).norm();
        }
    }
    return result;
}

Eigen::MatrixXd similarities(const Instant& instant, double zeroDistance) {
    return (1.0 - distances(instant).array() / zeroDistance).max(0.0);
}

}  // namespace Workbench
