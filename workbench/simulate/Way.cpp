// SPDX-License-Identifier: Apache-2.0
#include "simulate/Way.h"

#include <cmath>

namespace Workbench {

Way::Way(const ObjectTraits& traits, double duration, const Random& random)
    : traits_(&traits), duration_(duration), random_(random) {
    nextPoint();
    leg_.to = traits_->start;
    hasLeg_ = nextLeg();
}

// Returns false when the way has ended.
bool Way::nextPoint() {
    if (traits_->mode == PathMode::Wander) {
        const double x = random_.uniform(traits_->areaMinimum[0], traits_->areaMaximum[0]);
        point_ = {x, random_.uniform(traits_->areaMinimum[1], traits_->areaMaximum[1])};
        return true;
    }
    const std::size_t size = traits_->path.size();
    if (traits_->mode == PathMode::Once && visited_ == size) {
        return false;
    }
    const std::size_t turn = 2 * size - 2;
    const std::size_t step = visited_ % turn;
    point_ = traits_->mode == PathMode::BackAndForth
                 ? traits_->path[step < size ? step : turn - step]
                 : traits_->path[visited_ % size];
    ++visited_;
    return true;
}

void Way::rest(double until) {
    leg_ = {leg_.to, until, point_, Eigen::Vector2d::Zero(), leg_.heading};
    rests_ = false;
}

// Returns false when the way, or the scenario, has ended.
bool Way::nextLeg() {
    if (rests_) {
        rest(leg_.to + traits_->pause);
        return true;
    }
    const Eigen::Vector2d from = point_;
    if (!(leg_.to <= duration_) || !nextPoint()) {
        return false;
    }
    const Eigen::Vector2d way = point_ - from;
    const double length = way.norm();
    if (length > 0.0) {
        const double speed = random_.uniform(traits_->minimumSpeed, traits_->maximumSpeed);
        leg_ = {leg_.to, leg_.to + length / speed, from, way / length * speed,
                std::atan2(way[1], way[0])};
        rests_ = traits_->pause > 0.0;
    } else if (traits_->pause > 0.0) {
        rest(leg_.to + traits_->pause);
    } else {
        // All way points are equal: the object stands still until the end.
        rest(duration_ + 1.0);
    }
    return true;
}

const Leg* Way::at(double time) {
    while (hasLeg_ && leg_.to < time) {
        hasLeg_ = nextLeg();
    }
    return hasLeg_ && leg_.from <= time ? &leg_ : nullptr;
}

}  // namespace Workbench
