// SPDX-License-Identifier: Apache-2.0
// The pairs of a true object and a track that are near enough to matter, for all metrics.
#pragma once

#include "evaluate/metrics/Instant.h"

#include <algorithm>
#include <vector>

namespace Workbench {

/// A true object and a track, by their places in an instant.
struct NearPair {
    int truth;
    int track;
    double distance;  ///< m
    int number = 0;   ///< see PairNumbers
};

/// Pairs ordered by object, then by track.
using NearPairs = std::vector<NearPair>;

/// @param reach m
/// @return the pairs up to this distance
NearPairs nearPairs(const Instant& instant, double reach);

/// Similarity by distance, as TrackEval defines it for points: max(0, 1 - distance / zeroDistance).
///
/// @param distance m
/// @param zeroDistance distance of zero similarity, m
inline double similarity(double distance, double zeroDistance) {
    return std::max(0.0, 1.0 - distance / zeroDistance);
}

}  // namespace Workbench
