// SPDX-License-Identifier: Apache-2.0
// The identity metrics IDF1, IDP and IDR.
#pragma once

#include "evaluate/metrics/ClearMot.h"
#include "evaluate/metrics/IdCounts.h"
#include "evaluate/metrics/PairValues.h"

namespace Workbench {

/// The identity metrics (Ristani, Solera, Zou, Cucchiara, Tomasi: "Performance measures and a data
/// set for multi-target, multi-camera tracking", ECCV workshops 2016), as in TrackEval: true
/// objects and tracks are assigned one to one over the whole recording, so that they match in as
/// many instants as possible.
class Identity {
public:
    explicit Identity(const SimilarityParameters& parameters) : parameters_(parameters) {}

    /// @param near pairs of @p instant with their numbers, at least those that are similar enough
    ///             to match
    void add(const Instant& instant, const NearPairs& near);

    struct Result {
        double IDF1 = 0.0;  ///< IDTP / (IDTP + IDFP / 2 + IDFN / 2)
        double IDP = 0.0;   ///< IDTP / (IDTP + IDFP)
        double IDR = 0.0;   ///< IDTP / (IDTP + IDFN)
        int IDTP = 0;       ///< instants in which an object matches its assigned track
        int IDFP = 0;       ///< track instants without such a match
        int IDFN = 0;       ///< object instants without such a match
    };
    Result result() const;

private:
    SimilarityParameters parameters_;
    IdCounts truthCounts_;
    IdCounts trackCounts_;
    PairValues<CountedPair<int>> agreements_;  ///< instants
};

}  // namespace Workbench
