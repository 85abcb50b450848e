// SPDX-License-Identifier: Apache-2.0
// The statistical gate between two tracks.
#pragma once

#include <veskar/Config.h>
#include <veskar/Track.h>
#include <veskar/TrackAssociator.h>

#include "assignment/SparseCosts.h"
#include "gating/ClassTraits.h"
#include "gating/CoarseGate.h"

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

/// The same for a track that is compared with many others.
struct GateSide : GateFacts {
    Marginals marginals;
};

/// Decides whether a sensor track may belong to a system track, and at what distance.
class Gate {
public:
    /// @param config the limits
    /// @param stationaryBlockingMinBoxHeight box height above which a standing object blocks,
    ///                                       fraction of the image height
    Gate(const Config::ModuleConfig& config, double stationaryBlockingMinBoxHeight);

    /// @param track any track; must outlive the facts
    /// @return what evaluate needs to know of it
    GateFacts factsOf(const Track& track) const;

    /// @param track any track; must outlive the answer
    /// @return what screen needs to know of it
    GateSide sideOf(const Track& track) const;
    /// @param track any track; must outlive the answer
    /// @param traits its class
    /// @return what screen needs to know of it
    GateSide sideOf(const Track& track, const ClassTraits& traits) const;

    /// @param system the fused track
    /// @param sensor the candidate
    /// @return distance and verdict
    GatingResult evaluate(const GateFacts& system, const GateFacts& sensor) const;

    /// The same without the distance of a pair that is certainly outside.
    ///
    /// @param system the fused track
    /// @param sensor the candidate
    /// @return verdict, and the distance of a pair that passes
    GatingResult screen(const GateSide& system, const GateSide& sensor) const {
        return CoarseGate::areFar(system.marginals, sensor.marginals)
                   ? GatingResult{forbiddenCost, false}
                   : evaluate(system, sensor);
    }

private:
    GateFacts factsOf(const Track& track, const ClassTraits& traits) const;
    GatingResult evaluateSplit(const GateFacts& system, const GateFacts& sensor) const;
    bool isBlockedAsStationary(const GateFacts& system, const GateFacts& sensor) const;

    CoarseGate coarseGate;
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
