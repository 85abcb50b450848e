// SPDX-License-Identifier: Apache-2.0
// Gaussian estimates: the state's layout, its motion model and the distances between two estimates.
#pragma once

#include <veskar/Export.h>

#include <Eigen/Core>

namespace Veskar {

/// A state estimate: three (position, rate) pairs, [p1, p1', p2, p2', p3, p3'].
///
/// Indices 0, 2 and 4 are positions; (1, 3) is the velocity in the plane of the first two. In the
/// frame CoordinateSystem::ImagePlaneRange the components are u [-1..1, right], u rate [1/s],
/// v [-1..1, up], v rate [1/s], range [m] and range rate [m/s].
using StateVector = Eigen::Matrix<double, 6, 1>;

/// The covariance of a StateVector (or its inverse, the information matrix), in the same order.
using StateMatrix = Eigen::Matrix<double, 6, 6>;

/// The transition matrix F of the constant-velocity motion model over an interval.
///
/// The identity except F(0,1) = F(2,3) = dt. The third position is on purpose not moved by its
/// rate, and the model has no process noise.
///
/// @param dt interval in seconds; zero and negative values are allowed
/// @return F, so that x(t + dt) = F x(t) and P(t + dt) = F P(t) F'
VESKAR_EXPORT StateMatrix constantVelocity(double dt);

/// The Mahalanobis distance of two independent estimates: sqrt(d' S^-1 d) with d = x1 - x2 and
/// S = P1 + P2 (Bar-Shalom, Willett, Tian: Tracking and Data Fusion, 2011, track-to-track
/// association). The distance itself, not its square.
///
/// @param x1 state of the first estimate
/// @param P1 covariance of the first estimate
/// @param x2 state of the second estimate, in the same frame
/// @param P2 covariance of the second estimate
/// @return the distance, without unit; infinite or NaN when S is singular, NaN when d' S^-1 d is
///         negative or an argument holds NaN: every gate that asks whether it is small refuses it
VESKAR_EXPORT double statisticalDistance(const StateVector& x1, const StateMatrix& P1,
                                         const StateVector& x2, const StateMatrix& P2);

/// How likely two estimates describe one object: -0.5 ln((2 pi)^6 det S) - sqrt(d' S^-1 d).
///
/// Not a Gaussian log density: the distance is subtracted as it is, not half its square.
///
/// @param x1 state of the first estimate
/// @param P1 covariance of the first estimate
/// @param x2 state of the second estimate, in the same frame
/// @param P2 covariance of the second estimate
/// @return the score; larger is likelier; NaN or infinite when S is singular
VESKAR_EXPORT double logPDF(const StateVector& x1, const StateMatrix& P1, const StateVector& x2,
                            const StateMatrix& P2);

}  // namespace Veskar
