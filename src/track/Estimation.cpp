// SPDX-License-Identifier: Apache-2.0
#include <veskar/Estimation.h>

#include "track/LuSolve.h"
#include "track/OrderedSum.h"

#include <cmath>

namespace Veskar {
namespace {

/// How two independent estimates differ: d = x1 - x2 with covariance S = P1 + P2.
struct Separation {
    double distance;     ///< sqrt(d' S^-1 d)
    double determinant;  ///< det S
};

Separation separationOf(const StateVector& x1, const StateMatrix& P1, const StateVector& x2,
                        const StateMatrix& P2) {
    const StateVector d = x1 - x2;
    StateMatrix S = P1 + P2;
    Eigen::Matrix<double, 1, 6> y = d.transpose();  // becomes d' S^-1
    const double determinant = solveFromRight(S, y);
    return {std::sqrt(orderedDot<6>(y.transpose(), d)), determinant};
}

}  // namespace

StateMatrix constantVelocity(double dt) {
    StateMatrix F = StateMatrix::Identity();
    F(0, 1) = dt;
    F(2, 3) = dt;
    return F;
}

double statisticalDistance(const StateVector& x1, const StateMatrix& P1, const StateVector& x2,
                           const StateMatrix& P2) {
    return separationOf(x1, P1, x2, P2).distance;
}

double logPDF(const StateVector& x1, const StateMatrix& P1, const StateVector& x2,
              const StateMatrix& P2) {
    constexpr double twoPiToTheSixth = 61528.90838881947;
    const Separation between = separationOf(x1, P1, x2, P2);
    return -0.5 * std::log(twoPiToTheSixth * between.determinant) - between.distance;
}

}  // namespace Veskar
