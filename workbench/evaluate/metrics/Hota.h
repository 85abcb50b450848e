// SPDX-License-Identifier: Apache-2.0
// HOTA and its parts: detection, association, localisation.
#pragma once

#include "evaluate/metrics/IdCounts.h"
#include "evaluate/metrics/NearPairs.h"
#include "evaluate/metrics/PairValues.h"

#include <array>

namespace Workbench {

/// Higher order tracking accuracy (Luiten, Osep, Dendorfer, Torr, Geiger, Leal-Taixe, Leibe: "HOTA:
/// a higher order metric for evaluating multi-object tracking", IJCV 129, 2021), as in TrackEval,
/// on the similarity by distance.
///
/// The matching at an instant depends on how well each object and each track are aligned over the
/// whole recording. Therefore the instants are passed twice: first all with `add`, then, after
/// `beginAgain`, all with `addAgain` in the same order. Memory depends on the number of pairs that
/// were ever near, not on the number of instants.
class Hota {
public:
    /// @param distance distance of similarity zero, m
    explicit Hota(double distance) : zeroDistance_(distance) {}

    /// First pass.
    /// @param near pairs of @p instant with their numbers, at least those with positive similarity
    void add(const Instant& instant, const NearPairs& near);
    /// Begins the second pass.
    void beginAgain();
    /// The same calls as of add.
    void addAgain(const Instant& instant, const NearPairs& near);

    /// Means over the localisation thresholds 0.05, 0.10 ... 0.95.
    struct Result {
        double HOTA = 0.0;  ///< sqrt(DetA AssA), per threshold
        double DetA = 0.0;  ///< TP / (TP + FN + FP)
        double AssA = 0.0;  ///< mean overlap of both identities, over the matches
        double LocA = 0.0;  ///< mean similarity of the matches
    };
    /// @return the metric, after both passes
    Result result() const;

    static constexpr int thresholdCount = 19;

private:
    /// Counts of matches, by the number of thresholds that they reach less one.
    using Reached = std::array<int, thresholdCount>;

    double zeroDistance_;
    IdCounts truthCounts_;
    IdCounts trackCounts_;
    PairValues<double> potentialMatches_;
    PairValues<CountedPair<Reached>> matches_;
    std::array<double, thresholdCount> similaritySums_{};
};

}  // namespace Workbench
