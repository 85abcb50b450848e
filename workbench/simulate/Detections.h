// SPDX-License-Identifier: Apache-2.0
// What both simulated sensors share: faults that come and go, and id churn.
#pragma once

#include "scenario/Scenario.h"
#include "simulate/Motion.h"
#include "simulate/Random.h"
#include "tracker/PlanarTracker.h"

#include <vector>

#include <Eigen/Core>

namespace Workbench {

/// A place where a sensor sees something that is not there.
struct FalseObject {
    Eigen::Vector2d position;  ///< device frame, m
    std::string className;     ///< what video takes it for
};

/// The false objects of one sensor: persistent ones at their places and bursts that live shortly.
class FalseObjects {
public:
    /// @param traits the sensor; must outlive this
    /// @param origin where the sensor stands, device frame, m
    /// @param bearing where it looks, radians to the left of forward
    /// @param halfAngle half its field of view, radians
    FalseObjects(const SensorTraits& traits, const Eigen::Vector2d& origin, double bearing,
                 double halfAngle);

    /// @param time seconds
    /// @param dt seconds since the frame before
    /// @param random source of randomness
    /// @return the false objects that this frame shows
    std::vector<FalseObject> at(double time, double dt, Random& random);

private:
    struct Burst {
        Eigen::Vector2d position;
        double until;
    };
    Eigen::Vector2d somewhere(Random& random) const;

    const SensorTraits& traits_;
    Eigen::Vector2d origin_;
    double bearing_;
    double halfAngle_;
    std::vector<std::array<GaussMarkov, 2>> wander_;
    std::vector<Burst> bursts_;
};

/// @param traits the sensor
/// @param time seconds
/// @return whether the sensor is dead
bool isOut(const SensorTraits& traits, double time);

/// Renumbers tracks at random.
/// @param tracker the sensor's tracker
/// @param traits the sensor
/// @param dt seconds since the frame before
/// @param random source of randomness
void churnIds(PlanarTracker& tracker, const SensorTraits& traits, double dt, Random& random);

/// @param stated a pose
/// @param error what is to be added to it
/// @return the true pose
Mounting truePose(const Mounting& stated, const Mounting& error);

}  // namespace Workbench
