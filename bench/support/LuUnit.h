// SPDX-License-Identifier: Apache-2.0
// The unit of the cost of fusion, independent of the machine.
#pragma once

#include <veskar/Estimation.h>

namespace VeskarBench {

/// One LU: a Mahalanobis distance of two estimates, computed in plain Eigen code with the general
/// decomposition.
///
/// Every benchmark program measures it as "LU", so that its other results can be divided by that of
/// the same run.
///
/// @param x1 state of the first estimate
/// @param P1 its covariance
/// @param x2 state of the second estimate
/// @param P2 its covariance
/// @return the distance
double luUnit(const Veskar::StateVector& x1, const Veskar::StateMatrix& P1,
              const Veskar::StateVector& x2, const Veskar::StateMatrix& P2);

}  // namespace VeskarBench
