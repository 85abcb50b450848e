// SPDX-License-Identifier: Apache-2.0
#include "gating/Gate.h"

#include <cmath>

namespace Veskar {

Gate::Gate(const Config::ModuleConfig& config, double stationaryBlockingMinBoxHeight)
    : coarseGate(config.splitGating,
                 config.splitGating ? config.positionGatingDistance : config.gatingDistance),
      split(config.splitGating),
      gatingDistance(config.gatingDistance),
      positionGatingDistance(config.positionGatingDistance),
      velocityGatingSimilarity(config.velocityGatingSimilarity),
      velocityMinGatingLimit(config.velocityMinGatingLimit),
      blockingMinSpeed(config.stationaryBlockingMinSpeed),
      blockingMaxPlanarSpeed(config.stationaryBlockingMaxUVSpeed),
      blockingMinAge(config.stationaryBlockingMinVideoAge),
      blockingMinBoxHeight(stationaryBlockingMinBoxHeight) {}

GateFacts Gate::factsOf(const Track& track) const {
    return factsOf(track, classTraitsOf(track));
}

GateSide Gate::sideOf(const Track& track) const {
    return sideOf(track, classTraitsOf(track));
}

GateSide Gate::sideOf(const Track& track, const ClassTraits& traits) const {
    return {factsOf(track, traits), coarseGate.marginalsOf(track)};
}

GateFacts Gate::factsOf(const Track& track, const ClassTraits& traits) const {
    GateFacts facts;
    facts.track = &track;
    facts.supported = traits.supported;
    if (facts.supported && split) {
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

GatingResult Gate::evaluate(const GateFacts& system, const GateFacts& sensor) const {
    if (!system.supported || !sensor.supported) {
        return {forbiddenCost, false};
    }
    if (split) {
        return evaluateSplit(system, sensor);
    }
    const double distance = system.track->statisticalDistance(*sensor.track);
    return {distance, distance < gatingDistance};
}

GatingResult Gate::evaluateSplit(const GateFacts& system, const GateFacts& sensor) const {
    const double position = system.track->positionStatisticalDistance(*sensor.track);
    const auto [moving, similarity] =
        system.track->velocitySimilarity(*sensor.track, velocityMinGatingLimit);
    const bool inside =
        position < positionGatingDistance && (!moving || similarity > velocityGatingSimilarity);
    const double distance =
        position / positionGatingDistance + (1.0 - similarity) / (1.0 - velocityGatingSimilarity);
    return {distance, inside && !isBlockedAsStationary(system, sensor)};
}

/// Whether radar sees speed where video sees a large object that has stood still for long.
bool Gate::isBlockedAsStationary(const GateFacts& system, const GateFacts& sensor) const {
    const GateFacts& measured = system.speed ? system : sensor;
    const GateFacts& standing = system.speed ? sensor : system;
    return measured.speed && *measured.speed > blockingMinSpeed && standing.age > blockingMinAge &&
           standing.planarSpeed < blockingMaxPlanarSpeed &&
           standing.boxHeight > blockingMinBoxHeight;
}

}  // namespace Veskar
