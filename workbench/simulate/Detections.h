// SPDX-License-Identifier: Apache-2.0
// Faults that both simulated sensors share: outages, false objects and id changes.
#pragma once

#include "simulate/Motion.h"
#include "simulate/Random.h"
#include "simulate/scenario/Scenario.h"
#include "simulate/tracker/PlanarTracker.h"

#include <vector>

#include <Eigen/Core>

namespace Workbench {

/// A place where a sensor detects an object that does not exist.
struct FalseObject {
    Eigen::Vector2d position;  ///< device frame, m
    std::string className;     ///< class that video reports
};

/// The false objects of one sensor: persistent ones and short-lived bursts.
class FalseObjects {
public:
    /// @param traits the sensor; must outlive this
    /// @param origin position of the sensor, device frame, m
    /// @param bearing viewing direction, radians to the left of forward
    /// @param halfAngle half its field of view, radians
    FalseObjects(const SensorTraits& traits, const Eigen::Vector2d& origin, double bearing,
                 double halfAngle);

    /// @param time seconds
    /// @param dt seconds since the frame before
    /// @param random source of randomness
    /// @return the false objects of this frame
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
/// @return whether the sensor sends no frames
bool isOut(const SensorTraits& traits, double time);

/// Changes track ids at random.
/// @param tracker the sensor's tracker
/// @param traits the sensor
/// @param dt seconds since the frame before
/// @param random source of randomness
void churnIds(PlanarTracker& tracker, const SensorTraits& traits, double dt, Random& random);

/// @param stated a pose
/// @param error added to it
/// @return the true pose
Mounting truePose(const Mounting& stated, const Mounting& error);

}  // namespace Workbench
