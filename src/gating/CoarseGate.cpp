// SPDX-License-Identifier: Apache-2.0
#include "gating/CoarseGate.h"

#include <cmath>
#include <limits>

#include <Eigen/LU>

namespace Veskar {
namespace {

constexpr double infinite = std::numeric_limits<double>::infinity();

/// Where each component of the marginals stands in the state.
constexpr std::array<int, Marginals::count> stateIndex = {0, 2, 4, 1, 3, 5};

template <int n>
using Square = Eigen::Matrix<double, n, n>;

/// @return the determinant of a symmetric matrix that is positive definite, otherwise 0
template <int n>
double positiveDeterminant(const Square<n>& P) {
    constexpr int first = n % 2 == 0 ? 2 : 1;
    constexpr int rest = n - first;
    const Square<first> B = P.template topLeftCorner<first, first>();
    const double determinant = B.determinant();
    if (!(B(0, 0) > 0.0 && determinant > 0.0)) {
        return 0.0;
    }
    if constexpr (rest == 0) {
        return determinant;
    } else {
        const Eigen::Matrix<double, rest, first> C = P.template bottomLeftCorner<rest, first>();
        const Eigen::Matrix<double, rest, first> F = C * B.inverse();
        const Square<rest> complement =
            P.template bottomRightCorner<rest, rest>() - F * C.transpose();
        return determinant * positiveDeterminant<rest>(complement);
    }
}

template <int n>
bool isSymmetric(const Square<n>& P) {
    constexpr double tolerance = 1e-8;
    bool symmetric = true;
    for (int i = 1; i < n; ++i) {
        for (int j = 0; j < i; ++j) {
            const double difference = P(i, j) - P(j, i);
            symmetric =
                symmetric && difference * difference <= tolerance * tolerance * (P(i, i) * P(j, j));
        }
    }
    return symmetric;
}

/// Whether the rounding error of a distance with this covariance is small, see CoarseGate.
template <int n>
bool isWellConditioned(const Square<n>& P) {
    constexpr double variances = 1e50;  // no product of them overflows or vanishes
    constexpr double largestRatio = 1e10;
    constexpr double leastDeterminant = 1e-5;
    const double least = P.diagonal().minCoeff();
    const double largest = P.diagonal().maxCoeff();
    return least >= 1.0 / variances && largest <= variances && largest <= largestRatio * least &&
           isSymmetric<n>(P) && positiveDeterminant<n>(P) >= leastDeterminant * P.diagonal().prod();
}

Square<3> positions(const StateMatrix& P) {
    Square<3> block;
    for (Eigen::Index i = 0; i < 3; ++i) {
        for (Eigen::Index j = 0; j < 3; ++j) {
            block(i, j) = P(2 * i, 2 * j);
        }
    }
    return block;
}

bool isModerate(double x) {
    return std::abs(x) <= 1e100;  // its square does not overflow
}

}  // namespace

CoarseGate::CoarseGate(bool positionsOnly, double gatingDistance)
    : components_(positionsOnly ? Marginals::positionCount : Marginals::count),
      scale_(2.0 * gatingDistance * gatingDistance) {
    if (!(scale_ >= 1e-50)) {
        components_ = 0;
    }
}

Marginals CoarseGate::marginalsOf(const Track& track) const {
    Marginals marginals;
    marginals.mean.fill(0.0);
    marginals.reach.fill(infinite);
    const StateMatrix& P = track.covariance;
    const bool trusted = components_ == Marginals::count ? isWellConditioned<6>(P)
                                                         : isWellConditioned<3>(positions(P));
    if (!trusted) {
        return marginals;
    }
    for (std::size_t k = 0; k < components_; ++k) {
        const double mean = track.state[stateIndex[k]];
        if (isModerate(mean)) {
            marginals.mean[k] = mean;
            marginals.reach[k] = scale_ * P(stateIndex[k], stateIndex[k]);
        }
    }
    return marginals;
}

bool CoarseGate::areFar(const Marginals& a, const Marginals& b) {
    bool far = false;
    for (std::size_t k = 0; k < Marginals::count; ++k) {
        const double d = a.mean[k] - b.mean[k];
        far = far || d * d > a.reach[k] + b.reach[k];
    }
    return far;
}

}  // namespace Veskar
