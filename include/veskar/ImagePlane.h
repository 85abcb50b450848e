// SPDX-License-Identifier: Apache-2.0
// Boxes and points on the normalised image plane: -1..1 in both coordinates, right and up.
#pragma once

#include <veskar/Export.h>

#include <Eigen/Core>

namespace Veskar {

class Camera;

/// Turns a box on the normalised image plane into pixels of the camera's resolution, in place.
///
/// @param box [first coordinate, width, second coordinate, height]. In pixels the second coordinate
///            grows downward, so the height is negated.
/// @param camera gives the resolution
VESKAR_EXPORT void transformCameraToScreen(Eigen::Vector4d& box, const Camera& camera);

/// Turns a box in pixels into one on the normalised image plane, in place: the inverse of
/// transformCameraToScreen.
///
/// @param box [first coordinate, width, second coordinate, height]
/// @param camera gives the resolution
VESKAR_EXPORT void transformScreenToCamera(Eigen::Vector4d& box, const Camera& camera);

/// @param a first coordinate
/// @param b second coordinate
/// @return whether the point lies inside the image, borders included; false for NaN
VESKAR_EXPORT bool isInsideImage(double a, double b);

/// @param a first coordinate
/// @param b second coordinate
/// @return the negation of isInsideImage
VESKAR_EXPORT bool isOutsideImage(double a, double b);

/// Where a segment that comes in from outside meets the image border.
///
/// The components come back in the order (second coordinate, first coordinate), the reverse of the
/// arguments; callers rely on it. A segment that is vertical within 1e-6 keeps its first
/// coordinate.
///
/// @param a1 first coordinate of the point outside
/// @param b1 second coordinate of the point outside
/// @param a2 first coordinate of the point inside
/// @param b2 second coordinate of the point inside
/// @return the crossing as (second coordinate, first coordinate)
/// @throw std::runtime_error when the first point is not outside or the second not inside
VESKAR_EXPORT Eigen::Vector2d intersectionWithImageBorder(double a1, double b1, double a2,
                                                          double b2);

}  // namespace Veskar
