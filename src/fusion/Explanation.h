// SPDX-License-Identifier: Apache-2.0
// Tells an observer what the fusion compares. Only called while there is an observer.
#pragma once

#include <veskar/Config.h>
#include <veskar/FusionObserver.h>
#include <veskar/SystemTrack.h>

#include "assignment/SparseCosts.h"
#include "association/AssociationRules.h"
#include "association/HeldTracks.h"
#include "association/SensorToSystem.h"
#include "gating/Gate.h"

#include <memory>
#include <optional>
#include <unordered_set>
#include <vector>

namespace Veskar {

/// Reports the outcomes of the gate and of the class rule. The association keeps only the costs of
/// the pairs that may be assigned and spends nothing on observers; which pairs it has compared, and
/// how they came out, is found here.
class Explanation {
public:
    using Tracks = std::vector<std::shared_ptr<Track>>;
    using SystemTracks = std::vector<std::shared_ptr<SystemTrack>>;

    /// @param config the limits; must outlive this
    /// @param gate the gate; must outlive this
    /// @param rules the optional rules; must outlive this
    Explanation(const Config::ModuleConfig& config, const Gate& gate, const AssociationRules& rules)
        : config_(config), gate_(gate), rules_(rules), problem_(config, gate, rules) {}

    /// @param observer is told
    /// @param systemTrack before the report is fused
    /// @param report the new report of a sensor track that it holds
    /// @param outcome the gate's, of the two
    /// @param refusal why the report costs the sensor track its place
    void continuation(FusionObserver& observer, const SystemTrack& systemTrack, const Track& report,
                      const Gate::Outcome& outcome, FusionObserver::Refusal refusal) const;

    /// Reports every pair that the assignment may choose, and those that it may not.
    ///
    /// @param observer is told
    /// @param tracks the frame's sensor tracks
    /// @param systemTracks the system tracks
    /// @param source source of the sensor tracks
    void candidates(FusionObserver& observer, const Tracks& tracks,
                    const SystemTracks& systemTracks, Source source);

    /// @param observer is told
    /// @param systemTracks the system tracks
    /// @param excludedIds ids of those that are not merged in this frame
    void mergeCandidates(FusionObserver& observer, const SystemTracks& systemTracks,
                         const std::unordered_set<int>& excludedIds);

    /// Prunes a system track and reports what has left it.
    ///
    /// @param observer is told
    /// @param systemTrack pruned
    void prune(FusionObserver& observer, SystemTrack& systemTrack);

private:
    /// A system track that may be merged with another one.
    struct SingleSensor {
        const SystemTrack* track;
        bool hasRadar;
        GateFacts facts;
    };
    /// A sensor track that may be assigned.
    struct OpenTrack {
        int index;
        GateFacts facts;
    };

    void findOpenTracks(const Tracks& tracks, const SystemTracks& systemTracks, bool mayShare);
    FusionObserver::Hindrance hindranceOf(const SystemTrack& systemTrack, const Track& track) const;
    FusionObserver::MergeHindrance mergeHindranceOf(const SystemTrack& older,
                                                    const SystemTrack& younger) const;
    std::optional<FusionObserver::PairMemory> memoryOf(const SystemTrack& a,
                                                       const SystemTrack& b) const;
    FusionObserver::Gate told(const Gate::Outcome& outcome, const Track& a, const Track& b) const;

    const Config::ModuleConfig& config_;
    const Gate& gate_;
    const AssociationRules& rules_;
    // Working memory, kept from frame to frame.
    HeldTracks heldTracks_;
    std::vector<OpenTrack> openTracks_;
    SensorToSystem problem_;
    SparseCosts allowedPairs_;
    std::unordered_set<int> mismatches_;  ///< found along with the pairs, not told
    std::vector<SingleSensor> singles_;
    std::vector<FusionObserver::Pruning> held_;
};

}  // namespace Veskar
