// SPDX-License-Identifier: Apache-2.0
// What becomes of a fused estimate when sensor tracks are added to it and taken out again.
#pragma once

#include <veskar/Track.h>

#include "arithmetic/Lanes.h"

#include <array>

namespace Veskar {

/// A change of the information behind an estimate (x, P). With the information matrices Yn and Yo
/// of what is added and removed (Bar-Shalom, Willett, Tian: Tracking and Data Fusion, 2011):
///
///     P' = (P^-1 + Yn - Yo)^-1,  x' = x + P' (Yn (xn - x) - Yo (xo - x))
///
/// The state is that of the information form, P' (P^-1 x + Yn xn - Yo xo), written such that an
/// estimate which nothing new is said of stays the same to the last bit: where the sensors report
/// no velocity there is none, not one that rounding gives some direction.
///
/// Computed by elimination without exchanges, or by LU decomposition with partial pivoting when a
/// matrix is not symmetric and definite. Nothing is checked: a singular covariance gives values
/// that are not finite.
struct EstimateChange {
    const Track* track;              ///< whose estimate it is
    const Track* added = nullptr;    ///< may be null
    const Track* removed = nullptr;  ///< may be null
};

/// A state and its covariance.
struct FusedEstimate {
    StateVector x;
    StateMatrix P;
};

/// @param change a change
/// @return the estimate afterwards
FusedEstimate estimateAfter(const EstimateChange& change);

/// Two changes side by side, for little more than the cost of one, and with the same bits.
///
/// @param changes two that both add or both do not, and both remove or both do not
/// @return the estimates afterwards
std::array<FusedEstimate, laneCount> estimatesAfter(
    const std::array<EstimateChange, laneCount>& changes);

}  // namespace Veskar
