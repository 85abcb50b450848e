// SPDX-License-Identifier: Apache-2.0
// How a tracker of video that assumes constant velocity falls behind what accelerates in the image.
#pragma once

namespace Workbench {

/// Distance that it falls behind, per acceleration, s^2: T^2 (1 - alpha) / beta of an alpha-beta
/// filter with frames every T (Kalata: The tracking index, IEEE Transactions on Aerospace and
/// Electronic Systems, 1984). About that of ten frames a second and noise of a few pixels.
constexpr double usualSmoothing = 0.025;

/// How much earlier the acceleration was that it falls behind by, s: the next term of the same
/// filter, T alpha / beta, which with the gains of the index is T / 2 + sqrt(2 usualSmoothing).
/// Within that time the acceleration of a car that approaches grows by a third or more.
constexpr double smoothingDelay = 0.27;

}  // namespace Workbench
