// SPDX-License-Identifier: Apache-2.0
// The unit in which the cost of fusion is told, independent of the machine.
#pragma once

#include <veskar/Estimation.h>

namespace VeskarBench {

/// One LU: a Mahalanobis distance of two estimates as a user of Eigen would write it, with the
/// general decomposition.
///
/// Every benchmark program has a benchmark of this name ("LU"), so that its other figures can be
/// divided by that of the same run.
///
/// @param x1 state of the first estimate
/// @param P1 its covariance
/// @param x2 state of the second estimate
/// @param P2 its covariance
/// @return the distance
double luUnit(const Veskar::StateVector& x1, const Veskar::StateMatrix& P1,
              const Veskar::StateVector& x2, const Veskar::StateMatrix& P2);

}  // namespace VeskarBench
