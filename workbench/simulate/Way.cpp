// SPDX-License-Identifier: Apache-2.0
#include "simulate/Way.h"

#include <cmath>

namespace Workbench {

Way::Way(const ObjectTraits& givenTraits, double givenDuration, const Random& givenRandom)
    : traits(&givenTraits), duration(givenDuration), random(givenRandom) {
    nextPoint();
    leg.to = traits->start;
    hasLeg = nextLeg();
}

// False when the way has ended.
bool Way::nextPoint() {
    if (traits->mode == PathMode::Wander) {
        const double x = random.uniform(traits->areaMinimum[0], traits->areaMaximum[0]);
        point = {x, random.uniform(traits->areaMinimum[1], traits->areaMaximum[1])};
        return true;
    }
    const std::size_t size = traits->path.size();
    if (traits->mode == PathMode::Once && visited == size) {
        return false;
    }
    const std::size_t turn = 2 * size - 2;
    const std::size_t step = visited % turn;
    point = traits->mode == PathMode::BackAndForth ? traits->path[step < size ? step : turn - step]
                                                   : traits->path[visited % size];
    ++visited;
    return true;
}

void Way::rest(double until) {
    leg = {leg.to, until, point, Eigen::Vector2d::Zero(), leg.heading};
    rests = false;
}

// False when the way, or the scenario, has ended.
bool Way::nextLeg() {
    if (rests) {
        rest(leg.to + traits->pause);
        return true;
    }
    const Eigen::Vector2d from = point;
    if (!(leg.to <= duration) || !nextPoint()) {
        return false;
    }
    const Eigen::Vector2d way = point - from;
    const double length = way.norm();
    if (length > 0.0) {
        const double speed = random.uniform(traits->minimumSpeed, traits->maximumSpeed);
        leg = {leg.to, leg.to + length / speed, from, way / length * speed,
               std::atan2(way[1], way[0])};
        rests = traits->pause > 0.0;
    } else if (traits->pause > 0.0) {
        rest(leg.to + traits->pause);
    } else {
        // A way that stands still for good: all its way points are the same.
        rest(duration + 1.0);
    }
    return true;
}

const Leg* Way::at(double time) {
    while (hasLeg && leg.to < time) {
        hasLeg = nextLeg();
    }
    return hasLeg && leg.from <= time ? &leg : nullptr;
}

}  // namespace Workbench
