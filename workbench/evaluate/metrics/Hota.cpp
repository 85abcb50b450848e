// SPDX-License-Identifier: Apache-2.0
#include "evaluate/metrics/Hota.h"

#include "evaluate/metrics/Assignment.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace Workbench {
namespace {

constexpr double epsilon = std::numeric_limits<double>::epsilon();

/// @return how many thresholds a similarity reaches
std::size_t thresholdsReached(double alike) {
    std::size_t reached = 0;
    while (reached < Hota::thresholdCount &&
           alike >= 0.05 * (static_cast<double>(reached) + 1.0) - epsilon) {
        ++reached;
    }
    return reached;
}

}  // namespace

void Hota::add(const Instant& instant, const NearPairs& near) {
    countAppearances(instant.truths, truthCounts_);
    countAppearances(instant.tracks, trackCounts_);
    std::vector<double> ofTruth(instant.truths.size());
    std::vector<double> ofTrack(instant.tracks.size());
    for (const NearPair& pair : near) {
        const double alike = similarity(pair.distance, zeroDistance_);
        ofTruth[static_cast<std::size_t>(pair.truth)] += alike;
        ofTrack[static_cast<std::size_t>(pair.track)] += alike;
    }
    for (const NearPair& pair : near) {
        const double alike = similarity(pair.distance, zeroDistance_);
        const double denominator = ofTruth[static_cast<std::size_t>(pair.truth)] +
                                   ofTrack[static_cast<std::size_t>(pair.track)] - alike;
        potentialMatches_[pair.number] += denominator > epsilon ? alike / denominator : 0.0;
    }
}

void Hota::beginAgain() {
    matches_ = {};
    similaritySums_ = {};
}

void Hota::addAgain(const Instant& instant, const NearPairs& near) {
    const std::vector<int> truths = ranksOf(instant.truths, truthCounts_);
    const std::vector<int> tracks = ranksOf(instant.tracks, trackCounts_);
    std::vector<Gain> gains;
    gains.reserve(near.size());
    for (const NearPair& pair : near) {
        const double potential = potentialMatches_[pair.number];
        const double lengths = truthCounts_.of(truths[static_cast<std::size_t>(pair.truth)]) +
                               trackCounts_.of(tracks[static_cast<std::size_t>(pair.track)]);
        const double alignment = potential / (lengths - potential);
        gains.push_back(
            {pair.truth, pair.track, alignment * similarity(pair.distance, zeroDistance_)});
    }
    for (const std::size_t place :
         assignWithGreatestGain(instant.truths.size(), instant.tracks.size(), gains)) {
        const NearPair& pair = near[place];
        const double alike = similarity(pair.distance, zeroDistance_);
        const std::size_t reached = thresholdsReached(alike);
        if (reached > 0) {
            CountedPair<Reached>& match = matches_[pair.number];
            match.truth = truths[static_cast<std::size_t>(pair.truth)];
            match.track = tracks[static_cast<std::size_t>(pair.track)];
            ++match.count[reached - 1];
        }
        for (std::size_t k = 0; k < reached; ++k) {
            similaritySums_[k] += alike;
        }
    }
}

Hota::Result Hota::result() const {
    const double truths = truthCounts_.total();
    const double tracks = trackCounts_.total();
    std::array<double, thresholdCount> counts{};
    std::array<double, thresholdCount> overlaps{};
    for (const auto& [truth, track, reached] : sorted(matches_)) {
        const double lengths = truthCounts_.of(truth) + trackCounts_.of(track);
        double n = 0.0;
        for (std::size_t k = thresholdCount; k-- > 0;) {
            n += reached[k];
            counts[k] += n;
            overlaps[k] += n * n / std::max(1.0, lengths - n);
        }
    }
    Result result;
    for (std::size_t k = 0; k < thresholdCount; ++k) {
        const double detection = counts[k] / std::max(1.0, truths + tracks - counts[k]);
        const double association = overlaps[k] / std::max(1.0, counts[k]);
        result.DetA += detection / thresholdCount;
        result.AssA += association / thresholdCount;
        result.HOTA += std::sqrt(detection * association) / thresholdCount;
        result.LocA +=
            std::max(1e-10, similaritySums_[k]) / std::max(1e-10, counts[k]) / thresholdCount;
    }
    return result;
}

}  // namespace Workbench
