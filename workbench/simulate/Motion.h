// SPDX-License-Identifier: Apache-2.0
// Where the objects of a scene are.
#pragma once

#include "scenario/Scenario.h"
#include "simulate/Way.h"

#include <cstdint>
#include <string>
#include <vector>

#include <Eigen/Core>

namespace Workbench {

/// An object at one moment.
struct ObjectState {
    std::int32_t id = 0;                   ///< unique in the scene
    const ObjectTraits* traits = nullptr;  ///< what it is
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

/// The objects of a scenario as time goes on.
class Motion {
public:
    /// @param scenario must outlive this
    /// @param seed draws the crowds' ways
    Motion(const Scenario& scenario, std::uint64_t seed);

    /// @param time seconds, not before that of the last call
    /// @return the objects that are there, by ascending id
    std::vector<ObjectState> at(double time);

private:
    struct Object {
        const ObjectTraits* traits;
        Way way;
    };

    std::vector<Object> objects_;
};

}  // namespace Workbench
