// SPDX-License-Identifier: Apache-2.0
#include "track/Information.h"

#include "track/LuSolve.h"
#include "track/OrderedSum.h"

namespace Veskar {
namespace {

StateMatrix inverse(const StateMatrix& M) {
    StateMatrix A;
    A = M;  // unlike a copy construction, Eigen vectorises an assignment
    StateMatrix X = StateMatrix::Identity();
    solveFromRight(A, X);
    return X;
}

}  // namespace

Information Information::fromEstimate(const StateVector& x, const StateMatrix& P) {
    return {x, P};
}

Information::Information(const StateVector& x, const StateMatrix& P)
    : Y(inverse(P)), y(orderedProduct(Y, x)) {}

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
