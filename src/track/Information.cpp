// SPDX-License-Identifier: Apache-2.0
#include "track/Information.h"

#include "track/LuSolve.h"
#include "track/OrderedSum.h"

namespace Veskar {
namespace {

StateMatrix inverse(StateMatrix A) {
    StateMatrix X = StateMatrix::Identity();
    solveFromRight(A, X);
    return X;
}

}  // namespace

Information Information::fromEstimate(const StateVector& x, const StateMatrix& P) {
    Information information;
    information.Y = inverse(P);
    information.y = orderedProduct(information.Y, x);
    return information;
}

void Information::toEstimate(StateVector& x, StateMatrix& P) const {
    P = inverse(Y);
    x = orderedProduct(P, y);
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
