// SPDX-License-Identifier: Apache-2.0
// What the optional rules of the configuration say about who may be paired with whom.
#pragma once

#include <veskar/Config.h>
#include <veskar/SystemTrack.h>
#include <veskar/Track.h>

#include "association/PairMemory.h"
#include "association/UpdateHistory.h"

#include <memory>
#include <optional>
#include <vector>

namespace Veskar {

/// The rules and what they remember of the sensors. Without a rule everything is as if there were
/// none, and nothing is remembered.
class AssociationRules {
public:
    /// @param config the rules; must outlive this
    explicit AssociationRules(const Config& config)
        : rules_(config.rules),
          distanceLimit_(config.module.positionGatingDistance),
          pairMemory_(config.rules) {}

    /// Takes in a frame, before anything is decided about it.
    ///
    /// @param source the sensor
    /// @param time of the frame, s
    /// @param reports of the frame
    /// @param others the last tracks of the other sensor, moved to that time
    void observe(Source source, double time, const std::vector<std::shared_ptr<Track>>& reports,
                 const std::vector<std::shared_ptr<Track>>& others);
    /// Forgets the sensors.
    void clear();

    /// @param report a report
    /// @return whether it may start a system track or be assigned to one
    bool isFresh(const Track& report) const {
        return !rules_.freshReportsOnly || report.coastingTime < rules_.coastingLimit;
    }

    /// @param system a system track
    /// @param source a source
    /// @return whether it takes a new track of that source: it holds none, or may let go of it
    bool isOpen(const SystemTrack& system, Source source) const {
        return !system.hasTracks(source) || (rules_.takeOver && isLosing(system, source));
    }

    /// @param system a system track that is open
    /// @param report of a sensor track that it does not hold
    /// @return whether the report may stand for the tracks of its source that are held
    bool mayReplaceHeld(const SystemTrack& system, const Track& report) const;

    /// @param radar a radar track
    /// @param video a video track
    /// @return whether the memory says that the two are different objects
    bool disagree(const Track& radar, const Track& video) const;
    /// @return whether pairs of radar and video tracks are remembered
    bool remembersPairs() const { return rules_.pairMemory; }
    /// @param a a system track that one sensor supports
    /// @param b one that the other sensor supports
    /// @return what is known of their sensor tracks; null: nothing
    const PairMemory::Pair* pairOf(const SystemTrack& a, const SystemTrack& b) const;
    /// @param pair what is known of two tracks
    /// @return whether they count as different objects
    bool disagrees(const PairMemory::Pair& pair) const { return pairMemory_.disagrees(pair); }
    /// @param report a report
    /// @param other a track of the other sensor, moved to the report's time
    /// @return the distance that "pairGate" limits; nothing without that rule
    std::optional<double> pairDistance(const Track& report, const Track& other) const {
        return rules_.pairGate > 0.0 ? std::optional(report.positionStatisticalDistance(other))
                                     : std::nullopt;
    }
    /// @param report a report
    /// @param other a track of the other sensor, moved to the report's time
    /// @return whether the report is too far from it to describe the same object
    bool areApart(const Track& report, const Track& other) const;

    /// @param a a system track that one sensor supports
    /// @param b one that the other sensor supports
    /// @return whether @p a is the older of the two
    bool isOlder(const SystemTrack& a, const SystemTrack& b) const {
        return a.startTime < b.startTime ||
               (rules_.orderedMerging && a.startTime == b.startTime && a.id < b.id);
    }
    /// @param cost of merging two system tracks by the gate alone
    /// @param a one that one sensor supports
    /// @param b one that the other sensor supports
    /// @return the cost by what is remembered of the two; nothing when they must not be merged
    std::optional<double> mergeCost(double cost, const SystemTrack& a, const SystemTrack& b) const;
    /// @param survivor the system track that survives a merge without the rules
    /// @param other the other one
    /// @return whether the other one survives instead
    bool survivesInstead(const SystemTrack& survivor, const SystemTrack& other) const;

private:
    bool isLosing(const SystemTrack& system, Source source) const;

    const Config::Rules& rules_;
    double distanceLimit_;
    PairMemory pairMemory_;
    UpdateHistory history_;
    std::vector<std::shared_ptr<Track>> noTracks_;
    std::optional<double> videoTime_;  ///< of the last video frame, s
};

}  // namespace Veskar
