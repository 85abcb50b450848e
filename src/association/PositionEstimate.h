// SPDX-License-Identifier: Apache-2.0
// The position of a track, for comparing it with many others.
#pragma once

#include <veskar/Track.h>

#include <cmath>

namespace Veskar {

/// Mean and covariance of u, v and range, in the order of memory in which a comparison reads them.
struct PositionEstimate {
    /// @param track any track; of its covariance the upper triangle counts
    explicit PositionEstimate(const Track& track)
        : mean{track.state[0], track.state[2], track.state[4]},
          variance{track.covariance(0, 0), track.covariance(2, 2), track.covariance(4, 4)},
          uv(track.covariance(0, 2)),
          uRange(track.covariance(0, 4)),
          vRange(track.covariance(2, 4)) {}

    /// @return whether every number is finite
    bool isFinite() const {
        return std::isfinite(mean[0] + mean[1] + mean[2] + variance[0] + variance[1] + variance[2] +
                             uv + uRange + vRange);
    }

    double mean[3];
    double variance[3];
    double uv;
    double uRange;
    double vRange;
};

/// @param a a position
/// @param b another one, at the same time
/// @return the square of Track::positionStatisticalDistance for symmetric covariances, up to
///         rounding: a third of the work, because the inverse is symmetric, too. NaN, infinite or
///         negative when the sum of the covariances is singular or not positive definite.
inline double squaredDistance(const PositionEstimate& a, const PositionEstimate& b) {
    const double u = a.mean[0] - b.mean[0];
    const double v = a.mean[1] - b.mean[1];
    const double r = a.mean[2] - b.mean[2];
    const double uu = a.variance[0] + b.variance[0];
    const double vv = a.variance[1] + b.variance[1];
    const double rr = a.variance[2] + b.variance[2];
    const double uv = a.uv + b.uv;
    const double ur = a.uRange + b.uRange;
    const double vr = a.vRange + b.vRange;
    // Cofactors of the sum S; S^-1 is their matrix over the determinant.
    const double cuu = vv * rr - vr * vr;
    const double cuv = ur * vr - uv * rr;
    const double cur = uv * vr - ur * vv;
    const double determinant = uu * cuu + uv * cuv + ur * cur;
    const double cvv = uu * rr - ur * ur;
    const double cvr = uv * ur - uu * vr;
    const double crr = uu * vv - uv * uv;
    const double mixed = u * v * cuv + u * r * cur + v * r * cvr;
    return (u * u * cuu + v * v * cvv + r * r * crr + 2.0 * mixed) / determinant;
}

}  // namespace Veskar
