// SPDX-License-Identifier: Apache-2.0
// Test oracle: the association rules cell by cell, with the gate recomputed for each.
#pragma once

#include <veskar/Config.h>
#include <veskar/SystemTrack.h>
#include <veskar/Track.h>

#include "assignment/LiteralSolver.h"

#include <memory>
#include <unordered_set>
#include <vector>

namespace VeskarTest {

using SensorTracks = std::vector<std::shared_ptr<Veskar::Track>>;
using SystemTracks = std::vector<std::shared_ptr<Veskar::SystemTrack>>;
using ClassMatch = std::vector<std::vector<int>>;

/// TrackAssociator without any optimisation.
class LiteralAssociator {
public:
    struct Gating {
        double distance;
        bool passed;
    };

    explicit LiteralAssociator(const Veskar::Config& config);

    Gating checkGating(const Veskar::Track& systemTrack, const Veskar::Track& sensorTrack) const;
    bool isSupportedClass(const Veskar::Track& track) const;
    bool haveMatchingClasses(const Veskar::SystemTrack& systemTrack, const Veskar::Track& track,
                             Veskar::Source source) const;
    bool isOccupied(const Veskar::Track& track, const SystemTracks& systemTracks) const;

    void sensorToSystemCostMatrix(const SensorTracks& sensorTracks,
                                  const SystemTracks& systemTracks, Costs& cost, Allowed& allowed,
                                  ClassMatch& classMatch, Veskar::Source source) const;
    void systemToSystemCostMatrix(const SystemTracks& systemTracks, Costs& cost, Allowed& allowed,
                                  const std::unordered_set<int>& excludedIds) const;
    void handleClassMatching(const SensorTracks& sensorTracks, const SystemTracks& systemTracks,
                             Costs& cost, Allowed& allowed, const ClassMatch& classMatch,
                             std::unordered_set<int>& mismatches) const;

    Pairs sensorToSystemAssociation(const SensorTracks& sensorTracks,
                                    const SystemTracks& systemTracks, Veskar::Source source,
                                    std::unordered_set<int>& removedIds) const;
    Pairs systemToSystemAssociation(const SystemTracks& systemTracks,
                                    const std::unordered_set<int>& excludedIds) const;

private:
    Pairs nearestSensorToSystem(const SensorTracks& sensorTracks, const SystemTracks& systemTracks,
                                Veskar::Source source) const;
    Pairs nearestSystemToSystem(const SystemTracks& systemTracks,
                                const std::unordered_set<int>& excludedIds) const;

    Veskar::Config config_;
};

}  // namespace VeskarTest
