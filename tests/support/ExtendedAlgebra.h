// SPDX-License-Identifier: Apache-2.0
// Textbook formulas in extended precision, as references.
#pragma once

#include "support/RandomEstimates.h"

#include <cmath>

#include <Eigen/LU>

namespace VeskarTest {

using ExtendedVector = Eigen::Matrix<long double, 6, 1>;
using ExtendedMatrix = Eigen::Matrix<long double, 6, 6>;

/// An estimate in extended precision.
struct ExtendedEstimate {
    ExtendedVector x;
    ExtendedMatrix P;

    ExtendedEstimate(const ExtendedVector& x0, const ExtendedMatrix& P0) : x(x0), P(P0) {}
    explicit ExtendedEstimate(const Estimate& estimate)
        : x(estimate.x.cast<long double>()), P(estimate.P.cast<long double>()) {}

    Veskar::StateVector state() const { return x.cast<double>(); }
    Veskar::StateMatrix covariance() const { return P.cast<double>(); }
};

/// The inverse of a square matrix, with complete pivoting.
template <typename Matrix>
Matrix exactInverse(const Matrix& A) {
    return Eigen::FullPivLU<Matrix>(A).inverse();
}

/// @return the estimate with the information of `first` plus `sign` times that of `second`: +1
///         fuses, -1 removes
inline ExtendedEstimate addInformation(const ExtendedEstimate& first, int sign,
                                       const ExtendedEstimate& second) {
    const auto factor = static_cast<long double>(sign);
    const ExtendedMatrix Y1 = exactInverse(first.P);
    const ExtendedMatrix Y2 = factor * exactInverse(second.P);
    const ExtendedMatrix P = exactInverse(ExtendedMatrix(Y1 + Y2));
    return {P * (Y1 * first.x + Y2 * second.x), P};
}

/// @return sqrt(d' S^-1 d)
inline double exactDistance(const ExtendedEstimate& a, const ExtendedEstimate& b) {
    const ExtendedVector d = a.x - b.x;
    return static_cast<double>(std::sqrt(d.dot(exactInverse(ExtendedMatrix(a.P + b.P)) * d)));
}

}  // namespace VeskarTest
