// SPDX-License-Identifier: Apache-2.0
// The statistical gate between two tracks.
#pragma once

#include <veskar/Config.h>
#include <veskar/Track.h>

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

/// Decides whether a sensor track may belong to a system track, at what cost, and why.
class Gate {
public:
    /// Why a pair passes or not.
    enum class Verdict {
        Passed,
        TooFar,             ///< the distance is not below its limit
        VelocityDiffers,    ///< the velocities count and do not point the same way
        StandsStill,        ///< radar sees speed where video sees a large object standing still
        ClassNotSupported,  ///< one of the classes takes no part in association
    };

    /// How a pair compares.
    struct Outcome {
        double distance = 0.0;  ///< Mahalanobis distance; with "splitGating" of the positions alone
        double similarity =
            0.0;              ///< cosine of the angle between the velocities; "splitGating" only
        bool moving = false;  ///< whether the similarity counts
        Verdict verdict = Verdict::ClassNotSupported;

        bool passed() const { return verdict == Verdict::Passed; }
    };

    /// @param config the limits
    /// @param stationaryBlockingMinBoxHeight box height above which a standing object blocks,
    ///                                       fraction of the image height
    Gate(const Config::ModuleConfig& config, double stationaryBlockingMinBoxHeight);
    /// @param config the limits
    explicit Gate(const Config& config)
        : Gate(config.module, config.detectionPriority.vodHeightFractionLimit) {}

    /// @param track any track; must outlive the facts
    /// @return what evaluate needs to know of it
    GateFacts factsOf(const Track& track) const;

    /// @param track any track; must outlive the answer
    /// @return what costInside needs to know of it
    GateSide sideOf(const Track& track) const;
    /// @param track any track; must outlive the answer
    /// @param traits its class
    /// @return what costInside needs to know of it
    GateSide sideOf(const Track& track, const ClassTraits& traits) const;

    /// @param system the fused track
    /// @param sensor the candidate
    /// @return the outcome; nothing is measured where a class is not supported
    Outcome evaluate(const GateFacts& system, const GateFacts& sensor) const;

    /// @param system the fused track
    /// @param sensor the candidate
    /// @return an outcome without a verdict
    Outcome measure(const Track& system, const Track& sensor) const;

    /// @param outcome of a pair that was measured
    /// @return what the pair costs an assignment
    double costOf(const Outcome& outcome) const {
        return split_ ? outcome.distance / distanceLimit_ +
                            (1.0 - outcome.similarity) / (1.0 - velocityGatingSimilarity_)
                      : outcome.distance;
    }

    /// What a pair costs, if it passes. Returned in registers, which an optional is not.
    struct Cost {
        double value = 0.0;  ///< of a pair that passes
        bool passed = false;
    };

    /// evaluate and costOf in one, without measuring a pair that the coarse gate keeps outside.
    ///
    /// @param system the fused track
    /// @param sensor the candidate
    /// @return the cost
    Cost costInside(const GateSide& system, const GateSide& sensor) const;

private:
    GateFacts factsOf(const Track& track, const ClassTraits& traits) const;
    bool isNear(double distance) const { return distance < distanceLimit_; }  ///< false for NaN
    double distanceBetween(const Track& system, const Track& sensor) const;
    void compareVelocities(const Track& system, const Track& sensor, Outcome& outcome) const;
    Verdict judge(const Outcome& measured, const GateFacts& system, const GateFacts& sensor) const;
    bool isBlockedAsStationary(const GateFacts& system, const GateFacts& sensor) const;

    bool split_;
    double distanceLimit_;
    CoarseGate coarseGate_;
    double velocityGatingSimilarity_;
    double velocityMinGatingLimit_;
    double blockingMinSpeed_;
    double blockingMaxPlanarSpeed_;
    double blockingMinAge_;
    double blockingMinBoxHeight_;
};

// Inline, because every pair of a crowd comes here.

inline double Gate::distanceBetween(const Track& system, const Track& sensor) const {
    return split_ ? system.positionStatisticalDistance(sensor) : system.statisticalDistance(sensor);
}

inline void Gate::compareVelocities(const Track& system, const Track& sensor,
                                    Outcome& outcome) const {
    if (split_) {
        const auto [moving, similarity] =
            system.velocitySimilarity(sensor, velocityMinGatingLimit_);
        outcome.moving = moving;
        outcome.similarity = similarity;
    }
}

inline Gate::Outcome Gate::measure(const Track& system, const Track& sensor) const {
    Outcome outcome;
    outcome.distance = distanceBetween(system, sensor);
    compareVelocities(system, sensor, outcome);
    return outcome;
}

/// Whether radar sees speed where video sees a large object that has stood still for long.
inline bool Gate::isBlockedAsStationary(const GateFacts& system, const GateFacts& sensor) const {
    const GateFacts& measured = system.speed ? system : sensor;
    const GateFacts& standing = system.speed ? sensor : system;
    return measured.speed && *measured.speed > blockingMinSpeed_ &&
           standing.age > blockingMinAge_ && standing.planarSpeed < blockingMaxPlanarSpeed_ &&
           standing.boxHeight > blockingMinBoxHeight_;
}

/// Every comparison is written so that NaN does not pass.
inline Gate::Verdict Gate::judge(const Outcome& measured, const GateFacts& system,
                                 const GateFacts& sensor) const {
    if (!isNear(measured.distance)) {
        return Verdict::TooFar;
    }
    if (measured.moving && !(measured.similarity > velocityGatingSimilarity_)) {
        return Verdict::VelocityDiffers;
    }
    return isBlockedAsStationary(system, sensor) ? Verdict::StandsStill : Verdict::Passed;
}

inline Gate::Outcome Gate::evaluate(const GateFacts& system, const GateFacts& sensor) const {
    Outcome outcome;
    if (system.supported && sensor.supported) {
        outcome = measure(*system.track, *sensor.track);
        outcome.verdict = judge(outcome, system, sensor);
    }
    return outcome;
}

}  // namespace Veskar
