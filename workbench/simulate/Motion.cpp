// SPDX-License-Identifier: Apache-2.0
#include "simulate/Motion.h"

#include <algorithm>
#include <cmath>

#include <fmt/format.h>

namespace Workbench {
namespace {

// Hands out way points in the order in which they are visited.
class WayPoints {
public:
    WayPoints(const ObjectTraits& givenTraits, Random& givenRandom)
        : traits(givenTraits), random(givenRandom) {}

    // False when the way has ended.
    bool next(Eigen::Vector2d& point) {
        if (traits.mode == PathMode::Wander) {
            point = {random.uniform(traits.areaMinimum[0], traits.areaMaximum[0]),
                     random.uniform(traits.areaMinimum[1], traits.areaMaximum[1])};
            return true;
        }
        const std::size_t size = traits.path.size();
        if (traits.mode == PathMode::Once && visited == size) {
            return false;
        }
        const std::size_t turn = 2 * size - 2;
        const std::size_t step = visited % turn;
        point = traits.mode == PathMode::BackAndForth
                    ? traits.path[step < size ? step : turn - step]
                    : traits.path[visited % size];
        ++visited;
        return true;
    }

private:
    const ObjectTraits& traits;
    Random& random;
    std::size_t visited = 0;
};

}  // namespace

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
            Random random(seed, fmt::format("motion {} {}", i, member));
            objects.push_back(travel(traits, scenario.duration, random));
        }
    }
}

Motion::Object Motion::travel(const ObjectTraits& traits, double duration, Random& random) {
    Object object{&traits, {}};
    WayPoints wayPoints(traits, random);
    Eigen::Vector2d from;
    Eigen::Vector2d to;
    wayPoints.next(from);
    double time = traits.start;
    double heading = 0.0;
    while (time <= duration && wayPoints.next(to)) {
        const Eigen::Vector2d way = to - from;
        const double length = way.norm();
        if (length > 0.0) {
            const double speed = random.uniform(traits.minimumSpeed, traits.maximumSpeed);
            heading = std::atan2(way[1], way[0]);
            object.legs.push_back(
                {time, time + length / speed, from, way / length * speed, heading});
            time = object.legs.back().to;
        }
        if (traits.pause > 0.0) {
            object.legs.push_back(
                {time, time + traits.pause, to, Eigen::Vector2d::Zero(), heading});
            time += traits.pause;
        }
        if (length == 0.0 && traits.pause == 0.0) {
            // A way that stands still for good: all its way points are the same.
            object.legs.push_back({time, duration + 1.0, to, Eigen::Vector2d::Zero(), heading});
            break;
        }
        from = to;
    }
    return object;
}

std::vector<ObjectState> Motion::at(double time) const {
    std::vector<ObjectState> states;
    for (std::size_t i = 0; i < objects.size(); ++i) {
        const auto& legs = objects[i].legs;
        const auto leg = std::lower_bound(
            legs.begin(), legs.end(), time,
            [](const Leg& candidate, double moment) { return candidate.to < moment; });
        if (leg == legs.end() || time < leg->from) {
            continue;
        }
        ObjectState state;
        state.id = static_cast<std::int32_t>(i) + 1;
        state.traits = objects[i].traits;
        state.centre = leg->start + (time - leg->from) * leg->velocity;
        state.velocity = leg->velocity;
        state.heading = leg->heading;
        states.push_back(state);
    }
    return states;
}

}  // namespace Workbench
