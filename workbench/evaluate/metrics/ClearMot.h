// SPDX-License-Identifier: Apache-2.0
// CLEAR MOT: accuracy, precision, identity switches, fragments, mostly tracked and lost objects.
#pragma once

#include "evaluate/metrics/Instant.h"

#include <map>
#include <set>

namespace Workbench {

/// How alike a track and a true object must be to count as the same.
struct SimilarityParameters {
    double zeroDistance = 5.0;  ///< m: the distance of similarity zero
    double threshold = 0.5;     ///< least similarity of a match (CLEAR MOT and identity figures)
};

/// The CLEAR MOT figures (Bernardin, Stiefelhagen: "Evaluating multiple object tracking
/// performance", EURASIP JIVP 2008), defined and spelled as in TrackEval: a match of the previous
/// moment is kept while it is above the threshold, the others are chosen for the greatest
/// similarity; an identity switch is counted against the last track an object ever had; an object
/// is mostly tracked (MT) above 80 % of its life and mostly lost (ML) below 20 %.
class ClearMot {
public:
    explicit ClearMot(const SimilarityParameters& parameters) : parameters_(parameters) {}

    void add(const Instant& instant);

    struct Result {
        double MOTA = 0.0;          ///< (TP - FP - IDSW) / (TP + FN)
        double MOTP = 0.0;          ///< mean similarity of the matches
        double motpDistance = 0.0;  ///< mean distance of the matches, m; not a number without one
        int TP = 0;                 ///< matches
        int FN = 0;                 ///< true objects without a match
        int FP = 0;                 ///< tracks without a match
        int IDSW = 0;               ///< identity switches
        int Frag = 0;               ///< times an object was found again after a loss
        int MT = 0;                 ///< objects mostly tracked
        int PT = 0;                 ///< objects partly tracked
        int ML = 0;                 ///< objects mostly lost
        /// Different tracks per object, over the objects that were ever matched; 1 at best. Not a
        /// number when none was.
        double tracksPerObject = 0.0;
    };
    Result result() const;

    /// @return the tracks of the objects that were matched at the last moment, by the ids of both
    const std::map<int, int>& matches() const { return matchedNow_; }

private:
    struct ObjectHistory {
        int present = 0;
        int matched = 0;
        int beginnings = 0;
        bool matchedInPreviousInstant = false;
        int lastTrackId = 0;
        std::set<int> trackIds;
    };

    SimilarityParameters parameters_;
    std::map<int, ObjectHistory> objects_;
    std::map<int, int> matchedNow_;  ///< track by object
    Result counts_;
    double similaritySum_ = 0.0;
    double distanceSum_ = 0.0;
};

}  // namespace Workbench
