// SPDX-License-Identifier: Apache-2.0
#include "gating/Gate.h"

#include <cmath>

namespace Veskar {

Gate::Gate(const Config::ModuleConfig& config, double stationaryBlockingMinBoxHeight)
    : split_(config.splitGating),
      distanceLimit_(split_ ? config.positionGatingDistance : config.gatingDistance),
      coarseGate_(split_, distanceLimit_),
      velocityGatingSimilarity_(config.velocityGatingSimilarity),
      velocityMinGatingLimit_(config.velocityMinGatingLimit),
      blockingMinSpeed_(config.stationaryBlockingMinSpeed),
      blockingMaxPlanarSpeed_(config.stationaryBlockingMaxUVSpeed),
      blockingMinAge_(config.stationaryBlockingMinVideoAge),
      blockingMinBoxHeight_(stationaryBlockingMinBoxHeight) {}

GateFacts Gate::factsOf(const Track& track) const {
    return factsOf(track, classTraitsOf(track));
}

GateSide Gate::sideOf(const Track& track) const {
    return sideOf(track, classTraitsOf(track));
}

GateSide Gate::sideOf(const Track& track, const ClassTraits& traits) const {
    return {factsOf(track, traits), coarseGate_.marginalsOf(track)};
}

GateFacts Gate::factsOf(const Track& track, const ClassTraits& traits) const {
    GateFacts facts;
    facts.track = &track;
    facts.supported = traits.supported;
    if (facts.supported && split_) {
        const double vx = track.state[1];
        const double vy = track.state[3];
        facts.speed = track.getSpeed();
        facts.age = track.getAge();
        facts.planarSpeed = std::sqrt(vx * vx + vy * vy);
        // The image plane is two units high.
        facts.boxHeight = track.boundingBox[3] / 2.0;
    }
    return facts;
}

Gate::Cost Gate::costInside(const GateSide& system, const GateSide& sensor) const {
    if (!system.supported || !sensor.supported ||
        CoarseGate::areFar(system.marginals, sensor.marginals)) {
        return {};
    }
    Outcome outcome;
    outcome.distance = distanceBetween(*system.track, *sensor.track);
    if (!isNear(outcome.distance)) {
        return {};
    }
    compareVelocities(*system.track, *sensor.track, outcome);
    return {costOf(outcome), judge(outcome, system, sensor) == Verdict::Passed};
}

}  // namespace Veskar
