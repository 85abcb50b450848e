// SPDX-License-Identifier: Apache-2.0
// Compact notation of instants for the tests of the metrics.
#pragma once

#include "evaluate/metrics/Instant.h"

#include <vector>

namespace Workbench {

/// An id and a position on the x axis (or in the plane), metres.
struct At {
    int id;
    double x;
    double y = 0.0;
};

inline Instant instantOf(double time, const std::vector<At>& truths,
                         const std::vector<At>& tracks) {
    Instant instant;
    instant.time = time;
    for (const At& at : truths) {
        TrueObject truth;
        truth.id = at.id;
        truth.position = {at.x, at.y};
        instant.truths.push_back(truth);
    }
    for (const At& at : tracks) {
        JudgedTrack track;
        track.id = at.id;
        track.position = {at.x, at.y};
        track.covariance.setIdentity();
        instant.tracks.push_back(track);
    }
    return instant;
}

}  // namespace Workbench
