// SPDX-License-Identifier: Apache-2.0
#include "simulate/Motion.h"

#include <algorithm>
#include <cmath>

#include <fmt/format.h>

namespace Workbench {

Eigen::Vector2d ObjectState::point(double forward, double left) const {
    const Eigen::Vector2d ahead(std::cos(heading), std::sin(heading));
    return centre + forward * ahead + left * Eigen::Vector2d(-ahead[1], ahead[0]);
}

Eigen::Vector2d ObjectState::nearestPoint() const {
    const Eigen::Vector2d ahead(std::cos(heading), std::sin(heading));
    const double halfLength = 0.5 * traits->size[0];
    const double halfWidth = 0.5 * traits->size[1];
    const double forward = std::clamp(-centre.dot(ahead), -halfLength, halfLength);
    const double left =
        std::clamp(-centre.dot(Eigen::Vector2d(-ahead[1], ahead[0])), -halfWidth, halfWidth);
    return point(forward, left);
}

Motion::Motion(const Scenario& scenario, std::uint64_t seed) {
    for (std::size_t i = 0; i < scenario.objects.size(); ++i) {
        const ObjectTraits& traits = scenario.objects[i];
        for (int member = 0; member < traits.count; ++member) {
            const Random random(seed, fmt::format("motion {} {}", i, member));
            objects_.push_back({&traits, Way(traits, scenario.duration, random)});
        }
    }
}

std::vector<ObjectState> Motion::at(double time) {
    std::vector<ObjectState> states;
    for (std::size_t i = 0; i < objects_.size(); ++i) {
        const Leg* const leg = objects_[i].way.at(time);
        if (leg == nullptr) {
            continue;
        }
        ObjectState state;
        state.id = static_cast<std::int32_t>(i) + 1;
        state.traits = objects_[i].traits;
        state.centre = leg->start + (time - leg->from) * leg->velocity;
        state.velocity = leg->velocity;
        state.heading = leg->heading;
        states.push_back(state);
    }
    return states;
}

}  // namespace Workbench
