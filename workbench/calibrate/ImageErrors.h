// SPDX-License-Identifier: Apache-2.0
// Where boxes are, and where they are expected.
#pragma once

#include "calibrate/Pairing.h"

#include <vector>

#include <Eigen/Core>

namespace Workbench {

/// @param model both sensors at the placement
/// @param sample a pair
/// @param placement assumed errors of the installation
/// @return middle and bottom of its box minus the expected ones, image units
Eigen::Vector2d imageError(const ObjectModel& model, const CalibrationSample& sample,
                           const Placement& placement);

/// As above, of many pairs.
/// @param stated the installation as stated
/// @param samples pairs
/// @param placement assumed errors of the installation
/// @return middle and bottom of each box minus the expected ones, image units
std::vector<Eigen::Vector2d> imageErrors(const Installation& stated,
                                         const std::vector<CalibrationSample>& samples,
                                         const Placement& placement);

/// @param model both sensors at the placement
/// @param sample a pair
/// @param error its imageError
/// @return the same as bearing to the left and depression, radians
Eigen::Vector2d angularError(const ObjectModel& model, const CalibrationSample& sample,
                             const Eigen::Vector2d& error);

}  // namespace Workbench
