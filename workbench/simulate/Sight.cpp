// SPDX-License-Identifier: Apache-2.0
#include "simulate/Sight.h"

#include <algorithm>

namespace Workbench {
namespace {

/// Positive when @p place is to the left of the way from one point to another, negative to the
/// right.
double sideOf(const Eigen::Vector2d& from, const Eigen::Vector2d& to,
              const Eigen::Vector2d& place) {
    const Eigen::Vector2d way = to - from;
    const Eigen::Vector2d offset = place - from;
    return way[0] * offset[1] - way[1] * offset[0];
}

}  // namespace

bool isBehindWall(const std::vector<Wall>& walls, const Eigen::Vector2d& sensor,
                  const Eigen::Vector2d& place) {
    // Two segments cross when each has its ends on both sides of the other.
    return std::any_of(walls.begin(), walls.end(), [&](const Wall& wall) {
        return sideOf(wall.from, wall.to, sensor) * sideOf(wall.from, wall.to, place) < 0.0 &&
               sideOf(sensor, place, wall.from) * sideOf(sensor, place, wall.to) < 0.0;
    });
}

}  // namespace Workbench
