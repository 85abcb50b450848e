// SPDX-License-Identifier: Apache-2.0
// Random recordings for the metrics, with everything that a tracker can do wrong.
#pragma once

#include "evaluate/metrics/Instant.h"

#include <vector>

namespace Workbench {

/// What happened in a recording.
struct Mishaps {
    int misses = 0;        ///< objects without a track of their own
    int falseTracks = 0;   ///< tracks of nothing
    int swaps = 0;         ///< two objects exchanged their tracks
    int newTracks = 0;     ///< an object got another track
    int absences = 0;      ///< an object was away and came back
    int withoutTruth = 0;  ///< instants
    int withoutTracks = 0;
    int withNothing = 0;
};

/// @param seed the same recording for the same seed; every third seed has objects and tracks on the
///             points of a grid, where distances tie and are equal to thresholds
/// @param happened counts are added to it
/// @return up to 20 instants with up to five objects and nine tracks, near enough to compete
std::vector<Instant> randomRecording(unsigned seed, Mishaps& happened);

}  // namespace Workbench
