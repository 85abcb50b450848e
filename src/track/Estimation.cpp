// SPDX-License-Identifier: Apache-2.0
#include <veskar/Estimation.h>

#include <cmath>

#include <Eigen/LU>

namespace Veskar {

StateMatrix constantVelocity(double dt) {
    StateMatrix F = StateMatrix::Identity();
    F(0, 1) = dt;
    F(2, 3) = dt;
    return F;
}

double statisticalDistance(const StateVector& x1, const StateMatrix& P1, const StateVector& x2,
                           const StateMatrix& P2) {
    const StateVector d = x1 - x2;
    const StateMatrix S = P1 + P2;
    return std::sqrt(d.dot(S.partialPivLu().solve(d)));
}

double logPDF(const StateVector& x1, const StateMatrix& P1, const StateVector& x2,
              const StateMatrix& P2) {
    constexpr double twoPiToTheSixth = 61528.90838881947;
    const StateVector d = x1 - x2;
    const Eigen::PartialPivLU<StateMatrix> S(P1 + P2);
    const double distance = std::sqrt(d.dot(S.solve(d)));
    return -0.5 * std::log(twoPiToTheSixth * S.determinant()) - distance;
}

}  // namespace Veskar
