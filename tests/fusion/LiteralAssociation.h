// SPDX-License-Identifier: Apache-2.0
// Gating and association on literal tracks, cell by cell.
#pragma once

#include <veskar/Config.h>

#include "assignment/LiteralSolver.h"
#include "fusion/LiteralTrack.h"

#include <unordered_set>
#include <utility>
#include <vector>

namespace VeskarTest::Literal {

using Tracks = std::vector<std::shared_ptr<Track>>;
using SystemTracks = std::vector<std::shared_ptr<SystemTrack>>;

struct Gate {
    double distance;
    bool passed;
};

class Associator {
public:
    explicit Associator(const Veskar::Config& all)
        : config_(all.module), boxLimit_(all.detectionPriority.vodHeightFractionLimit) {}

    Gate checkGating(const Track& systemTrack, const Track& sensorTrack) const;
    bool haveMatchingClasses(const SystemTrack& systemTrack, const Track& track, int source) const;
    Pairs sensorToSystemAssociation(const Tracks& tracks, const SystemTracks& systemTracks,
                                    int source, std::unordered_set<int>& removedIds) const;
    Pairs systemToSystemAssociation(const SystemTracks& systemTracks,
                                    const std::unordered_set<int>& excludedIds) const;

    /// Whether, since the last call, rounding may have decided a gate or a choice between two
    /// pairs. A different computation may then legitimately lead to another result.
    bool takeDoubt();

private:
    Pairs greedySensorToSystem(const Tracks& tracks, const SystemTracks& systemTracks,
                               int source) const;
    Pairs greedySystemToSystem(const SystemTracks& systemTracks,
                               const std::unordered_set<int>& excludedIds) const;
    void forbidMismatches(const Tracks& tracks, const SystemTracks& systemTracks, Costs& cost,
                          Allowed& allowed, const std::vector<std::vector<int>>& match,
                          std::unordered_set<int>& removedIds) const;
    /// Records the distance of a pair that was compared with others.
    double weighed(double distance) const;
    bool isVetoed(const Track& systemTrack, const Track& sensorTrack) const;
    bool isBarred(const Track& track, const SystemTracks& systemTracks, int source) const;

    Veskar::Config::ModuleConfig config_;
    double boxLimit_;
    mutable bool isDoubtful_ = false;
    mutable std::vector<double> distances_;
};

}  // namespace VeskarTest::Literal
