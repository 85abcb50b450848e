// SPDX-License-Identifier: Apache-2.0
// HOTA and its parts: detection, association, localisation.
#pragma once

#include "evaluate/metrics/IdCounts.h"

#include <array>
#include <map>
#include <utility>

namespace Workbench {

/// Higher order tracking accuracy (Luiten, Osep, Dendorfer, Torr, Geiger, Leal-Taixe, Leibe: "HOTA:
/// a higher order metric for evaluating multi-object tracking", IJCV 129, 2021), as in TrackEval,
/// on the similarity by distance.
///
/// The matching depends on the whole recording; until the end, the pairs with positive similarity
/// of every instant are stored.
class Hota {
public:
    /// @param distance distance of similarity zero, m
    explicit Hota(double distance) : zeroDistance_(distance) {}

    void add(const Instant& instant);

    /// Means over the localisation thresholds 0.05, 0.10 ... 0.95.
    struct Result {
        double HOTA = 0.0;  ///< sqrt(DetA AssA), per threshold
        double DetA = 0.0;  ///< TP / (TP + FN + FP)
        double AssA = 0.0;  ///< mean overlap of both identities, over the matches
        double LocA = 0.0;  ///< mean similarity of the matches
    };
    Result result() const;

    static constexpr int thresholdCount = 19;

private:
    struct Similar {
        int truth;
        int track;
        double similarity;
    };
    struct Moment {
        std::vector<Similar> pairs;
        int truths;
        int tracks;
    };

    std::vector<Similar> match(const Moment& moment) const;
    double alignment(int truth, int track) const;

    double zeroDistance_;
    IdCounts truthCounts_;
    IdCounts trackCounts_;
    std::map<std::pair<int, int>, double> potentialMatches_;
    std::vector<Moment> moments_;
};

}  // namespace Workbench
