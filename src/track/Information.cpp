// SPDX-License-Identifier: Apache-2.0
#include "track/Information.h"

#include <Eigen/LU>

namespace Veskar {

Information Information::fromEstimate(const StateVector& x, const StateMatrix& P) {
    Information information;
    information.Y = P.partialPivLu().inverse();
    information.y = information.Y * x;
    return information;
}

void Information::toEstimate(StateVector& x, StateMatrix& P) const {
    P = Y.partialPivLu().inverse();
    x = P * y;
}

Information& Information::operator+=(const Information& other) {
    Y += other.Y;
    y += other.y;
    return *this;
}

Information& Information::operator-=(const Information& other) {
    Y -= other.Y;
    y -= other.y;
    return *this;
}

}  // namespace Veskar
