// SPDX-License-Identifier: Apache-2.0
// Rejects pairs that certainly lie outside a statistical gate with a few multiplications.
#pragma once

#include <veskar/Track.h>

#include <array>
#include <cstddef>

namespace Veskar {

/// One track as CoarseGate sees it, component by component. The positions stand first.
struct Marginals {
    static constexpr std::size_t positionCount = 3;
    static constexpr std::size_t count = 6;

    std::array<double, count> mean;
    std::array<double, count> reach;  ///< the track's share in the square of the largest difference
};

/// For a positive definite covariance S every component bounds the Mahalanobis distance from below:
/// d(i)^2 / S(i,i) <= d' S^-1 d. A pair beyond that bound fails the gate, whatever the rest.
///
/// The gate's own distance is off by rounding, so a pair counts as far only beyond twice the
/// squared gate, and only tracks take part whose covariance bounds that error: symmetric, with
/// standard deviations D within a factor of 1e5 and a correlation matrix A of a determinant of at
/// least 1e-5. All others have infinite reach.
///
/// Why that is safe for Gaussian elimination with partial pivoting (Higham: Accuracy and Stability
/// of Numerical Algorithms, 2002, ch. 9): it solves exactly for some S + E, where with a growth of
/// the pivots of at most 32 the norm of D^-1 E D^-1 stays below 5e-12 max D / min D. The squared
/// distance is then off by a factor of at most eta / (1 - eta), eta = 5e-12 (max D / min D) /
/// lambda with the smallest eigenvalue lambda >= det(A) (5 / 6)^5 of A: here eta < 0.13. Neither
/// max D / min D nor lambda is worse in a sum of covariances than in the worse one of the two. The
/// closed inverse of the positions' covariance is better still.
class CoarseGate {
public:
    /// @param positionsOnly whether the gate compares the positions alone or the whole states
    /// @param gatingDistance Mahalanobis distance from which on a pair is outside
    CoarseGate(bool positionsOnly, double gatingDistance);

    /// @param track any track
    /// @return its marginals
    Marginals marginalsOf(const Track& track) const;

    /// @param a marginals of one track
    /// @param b marginals of another one
    /// @return whether the pair is certainly outside
    static bool areFar(const Marginals& a, const Marginals& b);

private:
    std::size_t components_;
    double scale_;  ///< factor from variances to reaches
};

}  // namespace Veskar
