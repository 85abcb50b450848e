// SPDX-License-Identifier: Apache-2.0
// The input of the metrics: true objects and reported tracks at one time.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include <Eigen/Core>

namespace Workbench {

/// A true object at one time, on the ground plane.
struct TrueObject {
    int id = 0;
    int number = 0;  ///< see Instant
    std::string className;
    Eigen::Vector2d position = Eigen::Vector2d::Zero();  ///< m
    std::optional<Eigen::Vector2d> velocity;             ///< m/s, when the truth states it
};

/// A confirmed track of the evaluated tracker at the same time, on the ground plane.
struct JudgedTrack {
    int id = 0;
    int number = 0;  ///< see Instant
    std::string className;
    Eigen::Vector2d position = Eigen::Vector2d::Zero();            ///< m
    Eigen::Vector2d velocity = Eigen::Vector2d::Zero();            ///< m/s
    Eigen::Matrix2d covariance = Eigen::Matrix2d::Zero();          ///< of the position, m^2
    Eigen::Matrix2d velocityCovariance = Eigen::Matrix2d::Zero();  ///< (m/s)^2
};

/// Objects and tracks at one time. Ids are unique within each list. The metrics identify objects
/// and tracks by their numbers, which count the ids of a recording from 0 without gaps.
struct Instant {
    double time = 0.0;  ///< s
    std::vector<TrueObject> truths;
    std::vector<JudgedTrack> tracks;
};

}  // namespace Workbench
