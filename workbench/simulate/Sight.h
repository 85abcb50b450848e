// SPDX-License-Identifier: Apache-2.0
// What walls hide.
#pragma once

#include "simulate/scenario/Scenario.h"

#include <vector>

#include <Eigen/Core>

namespace Workbench {

/// @param walls of the scene
/// @param sensor where it is, device frame, m
/// @param place what it looks at, device frame, m
/// @return whether a wall crosses the line of sight; one that it only touches does not
bool isBehindWall(const std::vector<Wall>& walls, const Eigen::Vector2d& sensor,
                  const Eigen::Vector2d& place);

}  // namespace Workbench
