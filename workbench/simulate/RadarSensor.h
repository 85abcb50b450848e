// SPDX-License-Identifier: Apache-2.0
// A simulated radar.
#pragma once

#include "simulate/Detections.h"
#include "simulate/Motion.h"
#include "simulate/Random.h"
#include "simulate/scenario/Scenario.h"
#include "simulate/tracker/SensorTrackers.h"

#include <cstdint>
#include <map>
#include <optional>
#include <vector>

#include <Eigen/Core>

namespace Workbench {

/// Measures range and azimuth of a reflection point that varies slowly over each object, merges
/// close objects, and tracks its detections.
class RadarSensor {
public:
    /// @param scenario must outlive this
    /// @param seed seed of the run
    RadarSensor(const Scenario& scenario, std::uint64_t seed);

    /// @param time seconds
    /// @param objects the objects at that time
    /// @return the radar's tracks
    std::vector<Report> look(double time, const std::vector<ObjectState>& objects);

    /// @param ground device frame, m
    /// @param velocity of the point, m/s
    /// @return the detection of a point on the ground; nothing outside the field of view
    std::optional<RadarDetection> measure(const Eigen::Vector2d& ground,
                                          const Eigen::Vector2d& velocity) const;

private:
    std::optional<RadarDetection> reflect(const ObjectState& object, double dt);
    double chanceOfDetection(const ObjectState& object,
                             const std::vector<ObjectState>& objects) const;
    bool isHidden(const ObjectState& object, const std::vector<ObjectState>& objects) const;
    std::vector<RadarDetection> resolve(std::vector<RadarDetection> reflections) const;

    const RadarTraits& traits_;
    const std::vector<Wall>& walls_;
    Eigen::Vector3d position_;    ///< true position, device frame, m
    Eigen::Matrix3d fromDevice_;  ///< rotation into the radar's frame
    double halfAngle_;            ///< of the field of view, degrees
    Random random_;
    FalseObjects falseObjects_;
    RadarTracker tracker_;
    std::map<std::int32_t, std::array<GaussMarkov, 2>> reflectionPoints_;
    double last_ = 0.0;
};

}  // namespace Workbench
