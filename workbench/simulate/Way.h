// SPDX-License-Identifier: Apache-2.0
// The way of an object.
#pragma once

#include "simulate/Random.h"
#include "simulate/scenario/Scenario.h"

#include <cstddef>

#include <Eigen/Core>

namespace Workbench {

/// A piece of a way at constant velocity.
struct Leg {
    double from = 0.0;                   ///< s
    double to = 0.0;                     ///< s
    Eigen::Vector2d start{0.0, 0.0};     ///< device frame, m
    Eigen::Vector2d velocity{0.0, 0.0};  ///< m/s
    double heading = 0.0;                ///< radians to the left of forward
};

/// The legs of an object's way in order, without gaps in time. Only the current one is stored,
/// since their number is unlimited.
class Way {
public:
    /// @param traits must outlive this
    /// @param duration of the scenario, s
    /// @param random draws way points and speeds
    Way(const ObjectTraits& traits, double duration, const Random& random);

    /// @param time not before that of the last call, s
    /// @return the leg at that time; null before the object starts and after its way has ended
    const Leg* at(double time);

private:
    bool nextPoint();
    bool nextLeg();
    void rest(double until);

    const ObjectTraits* traits_;
    double duration_;
    Random random_;
    std::size_t visited_ = 0;  ///< number of way points reached
    Eigen::Vector2d point_{0.0, 0.0};
    Leg leg_;
    bool rests_ = false;  ///< whether a pause follows this leg
    bool hasLeg_ = false;
};

}  // namespace Workbench
