// SPDX-License-Identifier: Apache-2.0
#include "fusion/ReportFault.h"

#include <cmath>
#include <utility>

namespace Veskar {
namespace {

constexpr int size = StateVector::RowsAtCompileTime;

/// How far the time of a report may be from that of its frame, seconds.
constexpr double farthestTime = 10.0;
/// Bounds of a variance.
constexpr double smallestVariance = 1e-30;
constexpr double largestVariance = 1e30;
/// Bounds of a covariance that is scaled to variances of 1: how far elements may be from those
/// across the diagonal, and what the pivots of its Cholesky factorisation must exceed.
constexpr double asymmetry = 1e-9;
constexpr double smallestPivot = 1e-12;

bool isFinite(const Track& report) {
    return report.state.allFinite() && report.covariance.allFinite() &&
           std::isfinite(report.time) && std::isfinite(report.coastingTime) &&
           std::isfinite(report.probability);
}

bool areSane(const StateVector& variances) {
    return (variances.array() >= smallestVariance).all() &&
           (variances.array() <= largestVariance).all();
}

bool isSymmetric(const StateMatrix& P, const StateVector& variances) {
    for (int j = 1; j < size; ++j) {
        for (int i = 0; i < j; ++i) {
            const double difference = P(i, j) - P(j, i);
            // Squared to spare the root. Nearly always there is no difference at all.
            if (difference != 0.0 &&
                !(difference * difference <= asymmetry * asymmetry * variances[i] * variances[j])) {
                return false;
            }
        }
    }
    return true;
}

/// Takes column k out of column j, both from the diagonal on down.
template <int k, int j>
void subtract(StateMatrix& A, double inversePivot) {
    // Starts in an even row, so that it runs over aligned pairs; what is above the diagonal is
    // never read.
    constexpr int rows = size - j / 2 * 2;
    A.col(j).template tail<rows>() -= (A(j, k) * inversePivot) * A.col(k).template tail<rows>();
}

/// @return whether pivot k is above its limit, which NaN is not
template <int k, int... j>
bool eliminate(StateMatrix& A, const StateVector& limits,
               std::integer_sequence<int, j...> /*later*/) {
    if (!(A(k, k) > limits[k])) {
        return false;
    }
    [[maybe_unused]] const double inversePivot = 1.0 / A(k, k);
    (..., subtract<k, k + 1 + j>(A, inversePivot));
    return true;
}

template <int... k>
bool allPivotsAbove(const StateMatrix& P, const StateVector& limits,
                    std::integer_sequence<int, k...> /*steps*/) {
    StateMatrix A;
    A = P;  // unlike a copy construction, Eigen vectorises an assignment
    return (... && eliminate<k>(A, limits, std::make_integer_sequence<int, size - 1 - k>()));
}

}  // namespace

/// A pivot of the scaled matrix is that of the matrix itself over the variance in its row.
bool isPositiveDefinite(const StateMatrix& P) {
    const StateVector variances = P.diagonal();
    return areSane(variances) && isSymmetric(P, variances) &&
           allPivotsAbove(P, smallestPivot * variances, std::make_integer_sequence<int, size>());
}

/// Looks for values that are not finite only after the cheaper checks of validity have failed.
ReportFault faultOf(const Track& report, double timestamp) {
    const bool isFit = std::abs(report.time - timestamp) <= farthestTime &&
                       report.coastingTime >= 0.0 && report.probability >= 0.0 &&
                       std::isfinite(report.coastingTime) && std::isfinite(report.probability) &&
                       report.state.allFinite() && isPositiveDefinite(report.covariance);
    if (isFit) {
        return ReportFault::None;
    }
    return isFinite(report) ? ReportFault::CannotBeFused : ReportFault::NotFinite;
}

}  // namespace Veskar
