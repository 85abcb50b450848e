// SPDX-License-Identifier: Apache-2.0
// Tells an observer what the fusion compares. Only called while there is an observer.
#pragma once

#include <veskar/Config.h>
#include <veskar/FusionObserver.h>
#include <veskar/SystemTrack.h>
#include <veskar/TrackAssociator.h>

#include <memory>
#include <unordered_set>
#include <vector>

namespace Veskar {

/// Repeats the comparisons of the association in words: the association itself knows only costs,
/// and its loops stay free of telling.
class Explanation {
public:
    using Tracks = std::vector<std::shared_ptr<Track>>;
    using SystemTracks = std::vector<std::shared_ptr<SystemTrack>>;

    /// @param module the limits
    /// @param gates asked for every verdict
    /// @param listener told everything
    Explanation(const Config::ModuleConfig& module, TrackAssociator& gates,
                FusionObserver& listener)
        : config(module), associator(gates), observer(listener) {}

    /// @param systemTrack before the report is fused
    /// @param report the new report of a sensor track that it holds
    /// @param refused whether the report costs the sensor track its place
    void continuation(const SystemTrack& systemTrack, const Track& report, bool refused);

    /// Tells of every pair that the assignment may choose from, and of those that it may not.
    /// @param tracks the frame's sensor tracks
    /// @param systemTracks the system tracks
    /// @param source source of the sensor tracks
    void candidates(const Tracks& tracks, const SystemTracks& systemTracks, Source source);

    /// @param systemTracks the system tracks
    /// @param excludedIds ids of those that are not merged in this frame
    void mergeCandidates(const SystemTracks& systemTracks,
                         const std::unordered_set<int>& excludedIds);

    /// Prunes a system track and tells what has left it.
    /// @param systemTrack pruned
    void prune(SystemTrack& systemTrack);

private:
    FusionObserver::Gate gateOf(const Track& a, const Track& b);
    FusionObserver::ClassVerdict classesOf(const SystemTrack& systemTrack, const Track& track);

    const Config::ModuleConfig& config;
    TrackAssociator& associator;
    FusionObserver& observer;
};

}  // namespace Veskar
