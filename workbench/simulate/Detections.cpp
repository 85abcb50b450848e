// SPDX-License-Identifier: Apache-2.0
#include "simulate/Detections.h"

#include <algorithm>
#include <cmath>

namespace Workbench {

FalseObjects::FalseObjects(const SensorTraits& traits, const Eigen::Vector2d& origin,
                           double bearing, double halfAngle)
    : traits_(traits),
      origin_(origin),
      bearing_(bearing),
      halfAngle_(halfAngle),
      wander_(traits.persistent.size()) {}

Eigen::Vector2d FalseObjects::somewhere(Random& random) const {
    // Uniform over the ground area in view, therefore the square root.
    const double distance = std::sqrt(random.uniform()) * traits_.maximumRange;
    const double angle = bearing_ + random.uniform(-halfAngle_, halfAngle_);
    return origin_ + distance * Eigen::Vector2d(std::cos(angle), std::sin(angle));
}

std::vector<FalseObject> FalseObjects::at(double time, double dt, Random& random) {
    std::vector<FalseObject> shown;
    for (std::size_t i = 0; i < traits_.persistent.size(); ++i) {
        const PersistentFalse& source = traits_.persistent[i];
        // One draw per statement, because the evaluation order of arguments is unspecified.
        const double aside = wander_[i][1].step(random, dt, source.wander, 2.0);
        const double ahead = wander_[i][0].step(random, dt, source.wander, 2.0);
        const Eigen::Vector2d shift(ahead, aside);
        const bool isShown = random.chance(source.probability);
        if (isShown && source.from <= time && time < source.to) {
            shown.push_back({source.position + shift, source.className});
        }
    }
    const int born = random.poisson(traits_.bursts / 60.0 * dt);
    for (int i = 0; i < born; ++i) {
        bursts_.push_back(
            {somewhere(random), time + traits_.burstDuration * random.uniform(0.5, 1.5)});
    }
    bursts_.erase(std::remove_if(bursts_.begin(), bursts_.end(),
                                 [&](const Burst& burst) { return burst.until < time; }),
                  bursts_.end());
    for (const Burst& burst : bursts_) {
        if (random.chance(0.8)) {
            const double aside = random.normal();
            const double ahead = random.normal();
            shown.push_back({burst.position + 0.2 * Eigen::Vector2d(ahead, aside), "human"});
        }
    }
    const int single = random.poisson(traits_.falseAlarms);
    for (int i = 0; i < single; ++i) {
        shown.push_back({somewhere(random), "human"});
    }
    return shown;
}

bool isOut(const SensorTraits& traits, double time) {
    return std::any_of(traits.outages.begin(), traits.outages.end(), [&](const Outage& outage) {
        return outage.from <= time && time < outage.to;
    });
}

void churnIds(PlanarTracker& tracker, const SensorTraits& traits, double dt, Random& random) {
    const double probability = traits.idChurn / 60.0 * dt;
    if (probability <= 0.0) {
        return;
    }
    for (std::size_t i = 0; i < tracker.tracks().size(); ++i) {
        if (random.chance(probability)) {
            tracker.renumber(i);
        }
    }
}

Mounting truePose(const Mounting& stated, const Mounting& error) {
    return {stated.position + error.position, stated.yaw + error.yaw, stated.pitch + error.pitch,
            stated.roll + error.roll};
}

}  // namespace Workbench
