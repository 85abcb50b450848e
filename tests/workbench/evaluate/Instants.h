// SPDX-License-Identifier: Apache-2.0
// Compact notation of instants for the tests of the metrics.
#pragma once

#include "evaluate/metrics/Instant.h"
#include "evaluate/metrics/NearPairs.h"
#include "evaluate/metrics/PairNumbers.h"

#include <map>
#include <vector>

namespace Workbench {

/// An id and a position on the x axis (or in the plane), metres.
struct At {
    int id;
    double x;
    double y = 0.0;
};

/// @return the number of an id, the same for all instants
inline int numberOf(int id) {
    static std::map<int, int> numbers;
    return numbers.try_emplace(id, static_cast<int>(numbers.size())).first->second;
}

inline Instant instantOf(double time, const std::vector<At>& truths,
                         const std::vector<At>& tracks) {
    Instant instant;
    instant.time = time;
    for (const At& at : truths) {
        TrueObject truth;
        truth.id = at.id;
        truth.number = numberOf(at.id);
        truth.position = {at.x, at.y};
        instant.truths.push_back(truth);
    }
    for (const At& at : tracks) {
        JudgedTrack track;
        track.id = at.id;
        track.number = numberOf(at.id);
        track.position = {at.x, at.y};
        track.covariance.setIdentity();
        instant.tracks.push_back(track);
    }
    return instant;
}

/// @return the near pairs with their numbers, which are the same for all instants; 10 m are farther
///         than any metric reaches in a test
inline NearPairs numberedPairs(const Instant& instant) {
    static PairNumbers numbers;
    NearPairs near = nearPairs(instant, 10.0);
    numbers.number(near, instant);
    return near;
}

/// Adds an instant to a metric of near pairs.
template <typename Metric>
void add(Metric& metric, const Instant& instant) {
    metric.add(instant, numberedPairs(instant));
}

/// Adds instants to a metric that passes them twice.
template <typename Metric>
void addTwice(Metric& metric, const std::vector<Instant>& instants) {
    for (const Instant& instant : instants) {
        add(metric, instant);
    }
    metric.beginAgain();
    for (const Instant& instant : instants) {
        metric.addAgain(instant, numberedPairs(instant));
    }
}

}  // namespace Workbench
