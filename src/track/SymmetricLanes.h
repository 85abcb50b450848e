// SPDX-License-Identifier: Apache-2.0
// Symmetric matrices of the one size that estimates have, two at once.
#pragma once

#include <veskar/Estimation.h>

#include "arithmetic/Lanes.h"
#include "arithmetic/Unroll.h"

#include <array>
#include <cstddef>

namespace Veskar {

/// A symmetric matrix in every lane, of which the lower triangle is kept.
///
/// All sums have one order and every operation rounds by itself: a lane has the same bits on every
/// architecture, whatever the other one holds.
class SymmetricLanes {
public:
    static constexpr std::size_t size = StateVector::RowsAtCompileTime;
    static constexpr std::size_t count = size * (size + 1) / 2;  ///< of elements kept
    using Vector = std::array<Lanes, size>;

    SymmetricLanes() = default;
    /// Takes the lower triangles.
    SymmetricLanes(const StateMatrix& first, const StateMatrix& second);

    /// @return element (i, j), which is element (j, i) as well
    Lanes& operator()(std::size_t i, std::size_t j) { return elements_[indexOf(i, j)]; }
    Lanes operator()(std::size_t i, std::size_t j) const { return elements_[indexOf(i, j)]; }

    SymmetricLanes& operator+=(const SymmetricLanes& other);
    SymmetricLanes& operator-=(const SymmetricLanes& other);

    /// @return the product with a vector, summed from the first column to the last
    Vector operator*(const Vector& x) const;

    /// Writes both triangles of both matrices.
    void copyTo(StateMatrix& first, StateMatrix& second) const;

    /// Replaces A by -A^-1, which is what sweeping every row comes to; doing it again gives back A
    /// (Goodnight: A Tutorial on the SWEEP Operator, The American Statistician, 1979). The pivots
    /// are those of the factorisation A = L D L'. No rows are exchanged, which is as accurate as LU
    /// decomposition for a definite matrix, and an element that is zero for lack of a connection
    /// stays exactly zero.
    ///
    /// @param sign 1 if A ought to be positive definite, -1 if negative definite
    /// @return the lanes in which it is; the others are of no use
    IntLanes sweep(double sign);

private:
    static constexpr std::size_t indexOf(std::size_t i, std::size_t j) {
        return i >= j ? i * (i + 1) / 2 + j : j * (j + 1) / 2 + i;
    }

    std::array<Lanes, count> elements_;
};

/// @param first a matrix
/// @param second another one
/// @return those of the two that are symmetric up to rounding, measured by the diagonal, so that
/// the
///         lower triangle says all of them
IntLanes areSymmetric(const StateMatrix& first, const StateMatrix& second);

}  // namespace Veskar
