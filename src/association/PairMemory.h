// SPDX-License-Identifier: Apache-2.0
// How well each pair of a radar and a video track has agreed lately.
#pragma once

#include <veskar/Config.h>
#include <veskar/Track.h>

#include "association/PositionEstimate.h"
#include "gating/NearSearch.h"

#include <cstddef>
#include <memory>
#include <vector>

namespace Veskar {

/// A single frame cannot tell whether two tracks that are near each other are one object: in a
/// crowd several pairs pass every gate. Over a second or so, wrong pairs drift apart and right ones
/// do not. For each pair of tracks that have come near, this keeps exponentially weighted means of
/// the squared distance and of the number of rivals: other tracks that are near one of the two.
///
/// It is updated when radar reports. In the video frames in between the radar tracks have only been
/// moved, and comparing them there, too, doubles the cost and changes no figure of any scene.
///
/// Distances are those of Track::positionStatisticalDistance. An update costs one of them for each
/// pair that is near along every axis, and a walk over the known pairs; a warm memory does not
/// allocate.
class PairMemory {
public:
    using Tracks = std::vector<std::shared_ptr<Track>>;

    /// What is known of a pair.
    struct Pair {
        int radarId;
        int videoId;
        double squaredDistance;  ///< mean
        double rivals;           ///< mean number
        double time;             ///< of the last update, s
    };

    /// @param rules the settings; must outlive this
    explicit PairMemory(const Config::Rules& rules);

    /// Takes in where all tracks are. Those that coast for longer than "pairMemoryFreshness" do not
    /// count. A pair that is not compared keeps its means for a second and is then forgotten.
    ///
    /// @param time of the tracks, s
    /// @param radar the radar tracks, moved to that time
    /// @param video the video tracks, moved to that time
    void update(double time, const Tracks& radar, const Tracks& video);
    void clear() { pairs_.clear(); }

    /// @param radarId id of a radar track
    /// @param videoId id of a video track
    /// @return what is known of the pair, valid until the next update; null: nothing
    const Pair* find(int radarId, int videoId) const;

    /// @param pair of a crowd or not
    /// @return whether the two are probably different objects: in a crowd, and too far on average
    bool disagrees(const Pair& pair) const {
        return pair.rivals > rules_.pairMemoryCrowd &&
               pair.squaredDistance > rules_.pairMemoryLimit;
    }

private:
    /// A track that does not coast.
    struct Fresh {
        int id;
        int place;  ///< in the order of the reports
        PositionEstimate position;
        int neighbours;  ///< tracks of the other sensor within "pairMemoryNear"
    };
    /// A pair that is compared.
    struct Candidate {
        const Fresh* radar;
        const Fresh* video;
        double squaredDistance;  ///< at most that of "pairMemoryFar"
        bool isNear;             ///< within "pairMemoryNear"
    };

    Marginals marginalsOf(const PositionEstimate& position) const;
    void gather(const Tracks& tracks, std::vector<Fresh>& fresh) const;
    void findCandidates();
    void merge(double time);
    void remember(const Pair& pair, const Candidate& candidate, double time);

    const Config::Rules& rules_;
    double reachScale_;        ///< factor from variances to reaches
    std::vector<Pair> pairs_;  ///< by radar id and video id
    // Working memory, kept from frame to frame.
    std::vector<Fresh> radar_;           ///< by id
    std::vector<Fresh> video_;           ///< by id
    NearSearch search_;                  ///< over `video_`
    std::vector<Candidate> candidates_;  ///< in the order of `pairs_`
    std::vector<Pair> merged_;
    /// Most pairs have been compared in the same frame before.
    struct {
        double interval = 0.0;
        double weight = 0.0;
    } weighted_;
};

}  // namespace Veskar
