// SPDX-License-Identifier: Apache-2.0
// CLEAR MOT: accuracy, precision, identity switches, fragments, mostly tracked and lost objects.
#pragma once

#include "evaluate/metrics/Instant.h"
#include "evaluate/metrics/NearPairs.h"

#include <set>
#include <utility>
#include <vector>

namespace Workbench {

/// When a track and a true object match.
struct SimilarityParameters {
    double zeroDistance = 5.0;  ///< m: the distance of similarity zero
    double threshold = 0.5;     ///< least similarity of a match (CLEAR MOT and identity metrics)
};

/// The CLEAR MOT metrics (Bernardin, Stiefelhagen: "Evaluating multiple object tracking
/// performance", EURASIP JIVP 2008), as defined and named in TrackEval: a match of the previous
/// instant is kept while its similarity is above the threshold, the others are chosen for the
/// greatest total similarity; an identity switch is counted against the last track that the object
/// was matched with; an object is mostly tracked (MT) above 80 % of its life and mostly lost (ML)
/// below 20 %.
class ClearMot {
public:
    explicit ClearMot(const SimilarityParameters& parameters) : parameters_(parameters) {}

    /// @param near pairs of @p instant, at least those that are similar enough to match
    void add(const Instant& instant, const NearPairs& near);

    struct Result {
        double MOTA = 0.0;          ///< (TP - FP - IDSW) / (TP + FN)
        double MOTP = 0.0;          ///< mean similarity of the matches
        double motpDistance = 0.0;  ///< mean distance of the matches, m; NaN without a match
        int TP = 0;                 ///< matches
        int FN = 0;                 ///< true objects without a match
        int FP = 0;                 ///< tracks without a match
        int IDSW = 0;               ///< identity switches
        int Frag = 0;               ///< times an object was matched again after a loss
        int MT = 0;                 ///< objects mostly tracked
        int PT = 0;                 ///< objects partly tracked
        int ML = 0;                 ///< objects mostly lost
        /// Different tracks per object, over the objects that were ever matched; at best 1. NaN
        /// when none was.
        double tracksPerObject = 0.0;
    };
    Result result() const;

    /// @return ids of object and track of the matches at the last instant
    const std::vector<std::pair<int, int>>& matches() const { return matchedNow_; }

private:
    struct ObjectHistory {
        int present = 0;
        int matched = 0;
        int beginnings = 0;
        int matchedAt = 0;  ///< count of instants after its last match; 0: never matched
        int lastTrack = 0;  ///< number
        std::set<int> tracks;
    };
    ObjectHistory& historyOf(const TrueObject& object);

    SimilarityParameters parameters_;
    std::vector<ObjectHistory> objects_;  ///< by number
    std::vector<std::pair<int, int>> matchedNow_;
    int instant_ = 1;  ///< count of those with objects and tracks
    Result counts_;
    double similaritySum_ = 0.0;
    double distanceSum_ = 0.0;
};

}  // namespace Workbench
