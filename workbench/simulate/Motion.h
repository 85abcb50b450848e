// SPDX-License-Identifier: Apache-2.0
// The motion of the objects of a scene.
#pragma once

#include "simulate/Way.h"
#include "simulate/scenario/Scenario.h"

#include <cstdint>
#include <string>
#include <vector>

#include <Eigen/Core>

namespace Workbench {

/// The state of an object at one time.
struct ObjectState {
    std::int32_t id = 0;                   ///< unique in the scene
    const ObjectTraits* traits = nullptr;  ///< its kind
    Eigen::Vector2d centre{0.0, 0.0};      ///< centre of the footprint, device frame, m
    Eigen::Vector2d velocity{0.0, 0.0};
    double heading = 0.0;  ///< of its long side, radians to the left of forward

    /// @param forward metres ahead of the centre
    /// @param left metres to the left of the centre
    /// @return a point of the object, device frame, m
    Eigen::Vector2d point(double forward, double left) const;
    /// @return the point of the footprint nearest to the device
    Eigen::Vector2d nearestPoint() const;
};

/// The objects of a scenario over time.
class Motion {
public:
    /// @param scenario must outlive this
    /// @param seed seed for the ways of crowds
    Motion(const Scenario& scenario, std::uint64_t seed);

    /// @param time seconds, not before that of the last call
    /// @return the objects that exist then, by ascending id
    std::vector<ObjectState> at(double time);

private:
    struct Object {
        const ObjectTraits* traits;
        Way way;
    };

    std::vector<Object> objects_;
};

}  // namespace Workbench
