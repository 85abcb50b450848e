// SPDX-License-Identifier: Apache-2.0
// The statistical gate between two tracks.
#pragma once

#include <veskar/Config.h>
#include <veskar/Track.h>
#include <veskar/TrackAssociator.h>

#include <optional>

namespace Veskar {

/// What the gate asks of a track alone, asked once for all pairs with that track.
struct GateFacts {
    const Track* track = nullptr;
    bool supported = false;       ///< whether its class takes part in association
    std::optional<double> speed;  ///< as a radar measured it, m/s
    double age = 0.0;             ///< s
    double planarSpeed = 0.0;     ///< of the estimate, in the plane of the first two positions
    double boxHeight = 0.0;       ///< fraction of the image height
};

/// Decides whether a sensor track may belong to a system track, and at what distance.
class Gate {
public:
    /// @param config the limits
    /// @param stationaryBlockingMinBoxHeight box height above which a standing object blocks,
    ///                                       fraction of the image height
    Gate(const Config::ModuleConfig& config, double stationaryBlockingMinBoxHeight);

    /// @param track any track; must outlive the facts
    /// @param supported whether its class takes part in association
    /// @return what evaluate needs to know of it
    GateFacts factsOf(const Track& track, bool supported) const;

    /// @param system the fused track
    /// @param sensor the candidate
    /// @return distance and verdict
    GatingResult evaluate(const GateFacts& system, const GateFacts& sensor) const;

private:
    GatingResult evaluateSplit(const GateFacts& system, const GateFacts& sensor) const;
    bool isBlockedAsStationary(const GateFacts& system, const GateFacts& sensor) const;

    bool split;
    double gatingDistance;
    double positionGatingDistance;
    double velocityGatingSimilarity;
    double velocityMinGatingLimit;
    double blockingMinSpeed;
    double blockingMaxPlanarSpeed;
    double blockingMinAge;
    double blockingMinBoxHeight;
};

}  // namespace Veskar
