// SPDX-License-Identifier: Apache-2.0
#include "evaluate/metrics/Identity.h"

#include "evaluate/metrics/Assignment.h"

#include <algorithm>

namespace Workbench {

void Identity::add(const Instant& instant, const NearPairs& near) {
    const std::vector<int> truths = countAppearances(instant.truths, truthCounts_);
    const std::vector<int> tracks = countAppearances(instant.tracks, trackCounts_);
    for (const NearPair& pair : near) {
        if (similarity(pair.distance, parameters_.zeroDistance) >= parameters_.threshold) {
            CountedPair<int>& agreement = agreements_[pair.number];
            agreement.truth = truths[static_cast<std::size_t>(pair.truth)];
            agreement.track = tracks[static_cast<std::size_t>(pair.track)];
            ++agreement.count;
        }
    }
}

Identity::Result Identity::result() const {
    // Assigning an object to a track with k agreements turns 2 k errors into k hits, so minimising
    // the errors means maximising the agreements.
    const std::vector<CountedPair<int>> agreements = sorted(agreements_);
    std::vector<Gain> gains;
    gains.reserve(agreements.size());
    for (const auto& [truth, track, count] : agreements) {
        gains.push_back({truth, track, static_cast<double>(count)});
    }
    Result result;
    for (const std::size_t place :
         assignWithGreatestGain(truthCounts_.size(), trackCounts_.size(), gains)) {
        result.IDTP += agreements[place].count;
    }
    result.IDFN = truthCounts_.total() - result.IDTP;
    result.IDFP = trackCounts_.total() - result.IDTP;
    const auto ratio = [&](double denominator) { return result.IDTP / std::max(1.0, denominator); };
    result.IDR = ratio(result.IDTP + result.IDFN);
    result.IDP = ratio(result.IDTP + result.IDFP);
    result.IDF1 = ratio(result.IDTP + 0.5 * result.IDFP + 0.5 * result.IDFN);
    return result;
}

}  // namespace Workbench
