// SPDX-License-Identifier: Apache-2.0
// Compares matrices and vectors; a failure shows both sides and their difference.
#pragma once

#include <algorithm>
#include <cmath>
#include <limits>

#include <Eigen/Cholesky>
#include <Eigen/Core>
#include <gmock/gmock.h>

namespace VeskarTest {

/// The largest deviation of two matrices of one shape, relative to the largest element of the
/// expected one.
///
/// @return infinity when a deviation is NaN, so that no tolerance accepts it
template <typename Actual, typename Expected>
double relativeDeviation(const Eigen::MatrixBase<Actual>& actual,
                         const Eigen::MatrixBase<Expected>& expected) {
    const double scale = std::max(expected.cwiseAbs().maxCoeff(), 1e-300);
    double largest = 0.0;
    for (Eigen::Index i = 0; i < expected.rows(); ++i) {
        for (Eigen::Index j = 0; j < expected.cols(); ++j) {
            const double deviation = std::abs(actual(i, j) - expected(i, j)) / scale;
            if (!std::isfinite(deviation)) {
                return std::numeric_limits<double>::infinity();
            }
            largest = std::max(largest, deviation);
        }
    }
    return largest;
}

/// Matches a matrix or vector whose every element deviates from the expected one by at most
/// `tolerance` times the largest element expected. With tolerance 0 the elements must be equal.
MATCHER_P2(IsApprox, expected, tolerance,
           "deviates by at most " + testing::PrintToString(tolerance) +
               " times the largest element of\n" + testing::PrintToString(expected)) {
    if (arg.rows() != expected.rows() || arg.cols() != expected.cols()) {
        *result_listener << "has another shape";
        return false;
    }
    const double deviation = relativeDeviation(arg, expected);
    *result_listener << "deviation " << deviation << ", difference\n" << (arg - expected);
    return deviation <= tolerance;
}

/// Matches a number that deviates from the expected one by at most `tolerance` times it.
MATCHER_P2(IsNearRelative, expected, tolerance,
           "deviates by at most " + testing::PrintToString(tolerance) + " times " +
               testing::PrintToString(expected)) {
    const double deviation = std::abs(arg - expected);
    *result_listener << "deviation " << deviation;
    return deviation <= tolerance * std::abs(expected);
}

/// Matches a covariance: positive definite, and symmetric up to rounding.
MATCHER(IsCovariance, "is symmetric and positive definite") {
    const double asymmetry = relativeDeviation(arg, arg.transpose());
    *result_listener << "asymmetry " << asymmetry;
    return asymmetry <= 1e-12 && arg.llt().info() == Eigen::Success;
}

/// Matches a matrix or vector none of whose elements is finite.
MATCHER(HasNothingFinite, "has no finite element") {
    return (arg.array() * 0.0 != arg.array() * 0.0).all();
}

}  // namespace VeskarTest
