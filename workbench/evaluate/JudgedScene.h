// SPDX-License-Identifier: Apache-2.0
// An instant of one tracker with what all metrics need of it, computed once.
#pragma once

#include "evaluate/metrics/Assignment.h"
#include "evaluate/metrics/Instant.h"
#include "evaluate/metrics/NearPairs.h"

#include <vector>

namespace Workbench {

/// A scene, or a part of it.
struct JudgedScene {
    Instant instant;
    NearPairs near;  ///< pairs within the cutoff
    Pairs matches;   ///< (object, track), the assignment of GOSPA and OSPA
};

/// Restricts a scene to a part, without a new assignment: when tracks stay with the objects that
/// they are matched with, what remains of the best assignment is the best one of the part, since a
/// better one would make the whole better, too.
///
/// @param keepTruth by object: whether it belongs to the part
/// @param keepTrack by track: whether it belongs to the part; the same for both of a match
JudgedScene partOf(const JudgedScene& whole, const std::vector<bool>& keepTruth,
                   const std::vector<bool>& keepTrack);

}  // namespace Workbench
