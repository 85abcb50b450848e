// SPDX-License-Identifier: Apache-2.0
#include "evaluate/metrics/SetDistance.h"

#include <algorithm>
#include <cmath>

namespace Workbench {
namespace {

double localisationCost(const Instant& instant, const Pairs& pairs, double order) {
    double cost = 0.0;
    for (const auto& [i, j] : pairs) {
        const auto& truth = instant.truths[static_cast<std::size_t>(i)];
        const auto& track = instant.tracks[static_cast<std::size_t>(j)];
        cost += std::pow((track.position - truth.position).norm(), order);
    }
    return cost;
}

}  // namespace

Pairs matchWithinCutoff(const Instant& instant, const SetDistanceParameters& parameters) {
    const double farCost = std::pow(parameters.cutoff, parameters.order);
    return assignWithGreatestGain(farCost - distances(instant).array().pow(parameters.order));
}

Gospa gospa(const Instant& instant, const SetDistanceParameters& parameters) {
    const Pairs pairs = matchWithinCutoff(instant, parameters);
    Gospa result;
    result.localisationCost = localisationCost(instant, pairs, parameters.order);
    result.missed = static_cast<int>(instant.truths.size() - pairs.size());
    result.falseTracks = static_cast<int>(instant.tracks.size() - pairs.size());
    const double alone = std::pow(parameters.cutoff, parameters.order) / 2.0;
    result.distance =
        std::pow(result.localisationCost + alone * (result.missed + result.falseTracks),
                 1.0 / parameters.order);
    return result;
}

double ospa(const Instant& instant, const SetDistanceParameters& parameters) {
    const std::size_t larger = std::max(instant.truths.size(), instant.tracks.size());
    if (larger == 0) {
        return 0.0;
    }
    const Pairs pairs = matchWithinCutoff(instant, parameters);
    const double farCost = std::pow(parameters.cutoff, parameters.order);
    // Every unpaired object or track costs c^p, whether too distant or surplus.
    const double total = localisationCost(instant, pairs, parameters.order) +
                         farCost * static_cast<double>(larger - pairs.size());
    return std::pow(total / static_cast<double>(larger), 1.0 / parameters.order);
}

void GospaMean::add(const Instant& instant) {
    const Gospa one = gospa(instant, parameters_);
    sum_ += one.distance;
    localisationCost_ += one.localisationCost;
    missed_ += one.missed;
    falseTracks_ += one.falseTracks;
    ++instants_;
}

GospaMean::Result GospaMean::result() const {
    const double n = std::max(1, instants_);
    const double alone = std::pow(parameters_.cutoff, parameters_.order) / 2.0;
    const auto length = [&](double power) { return std::pow(power / n, 1.0 / parameters_.order); };
    Result result;
    result.mean = sum_ / n;
    result.rootMeanPower = length(localisationCost_ + alone * (missed_ + falseTracks_));
    result.localisation = length(localisationCost_);
    result.missed = length(alone * missed_);
    result.falseTracks = length(alone * falseTracks_);
    result.missedPerInstant = missed_ / n;
    result.falsePerInstant = falseTracks_ / n;
    return result;
}

void OspaMean::add(const Instant& instant) {
    sum_ += ospa(instant, parameters_);
    ++instants_;
}

double OspaMean::result() const {
    return sum_ / std::max(1, instants_);
}

}  // namespace Workbench
