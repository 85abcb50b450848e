// SPDX-License-Identifier: Apache-2.0
// Faults of a report that would damage the fusion permanently.
#pragma once

#include <veskar/Track.h>

namespace Veskar {

/// Why a report is left out.
enum class ReportFault {
    None,
    NotFinite,     ///< a number that the fusion computes with is not finite
    CannotBeFused  ///< time, gain, coasting time or covariance is finite but not valid
};

/// @param P a covariance
/// @return whether it is symmetric and positive definite as far as doubles can tell: variances
///         from 1e-30 to 1e30, and with these scaled to 1, symmetric to 1e-9 and with Cholesky
///         pivots above 1e-12
bool isPositiveDefinite(const StateMatrix& P);

/// @param report a sensor's track
/// @param timestamp of its frame, seconds
/// @return the first of its faults, those that are not finite first
ReportFault faultOf(const Track& report, double timestamp);

}  // namespace Veskar
