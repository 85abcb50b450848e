// SPDX-License-Identifier: Apache-2.0
// Coordinate systems of scene descriptions.
#pragma once

#include <veskar-host/ImageBox.h>

#include <Eigen/Core>

namespace Veskar::Live {

/// Maps points to those of the enclosing coordinate system: q = scale * p + translate, for each
/// axis alone.
struct Transformation {
    Eigen::Vector2d translate{0.0, 0.0};
    Eigen::Vector2d scale{1.0, 1.0};

    /// @param point a point
    /// @return the point in the enclosing coordinate system
    Eigen::Vector2d operator()(const Eigen::Vector2d& point) const;
    /// @param box a box, which may be upside down
    /// @return the box in the enclosing coordinate system, left to right and bottom to top
    Host::ImageBox operator()(const Host::ImageBox& box) const;
    /// @return whether it leaves points as they are
    bool isIdentity() const;
};

/// @param outer of the enclosing node
/// @param inner of a node in it
/// @return both, the inner one first
Transformation operator*(const Transformation& outer, const Transformation& inner);

}  // namespace Veskar::Live
