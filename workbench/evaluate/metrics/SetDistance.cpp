// SPDX-License-Identifier: Apache-2.0
#include "evaluate/metrics/SetDistance.h"

#include <algorithm>
#include <cmath>

namespace Workbench {
namespace {

/// A matching compares thousands of powers, for which std::pow took a quarter of an evaluation.
double power(double base, double exponent) {
    return exponent == 2.0 ? base * base : std::pow(base, exponent);
}

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

Pairs matchWithinCutoff(const Instant& instant, const NearPairs& near,
                        const SetDistanceParameters& parameters) {
    const double farCost = power(parameters.cutoff, parameters.order);
    std::vector<Gain> gains;
    gains.reserve(near.size());
    for (const NearPair& pair : near) {
        gains.push_back({pair.truth, pair.track, farCost - power(pair.distance, parameters.order)});
    }
    Pairs matches;
    for (const std::size_t place :
         assignWithGreatestGain(instant.truths.size(), instant.tracks.size(), gains)) {
        matches.emplace_back(near[place].truth, near[place].track);
    }
    return matches;
}

Gospa gospa(const Instant& instant, const Pairs& matches, const SetDistanceParameters& parameters) {
    Gospa result;
    result.localisationCost = localisationCost(instant, matches, parameters.order);
    result.matched = static_cast<int>(matches.size());
    result.missed = static_cast<int>(instant.truths.size() - matches.size());
    result.falseTracks = static_cast<int>(instant.tracks.size() - matches.size());
    const double alone = std::pow(parameters.cutoff, parameters.order) / 2.0;
    result.distance =
        std::pow(result.localisationCost + alone * (result.missed + result.falseTracks),
                 1.0 / parameters.order);
    return result;
}

double ospa(const Gospa& costs, const SetDistanceParameters& parameters) {
    const int unpaired = std::max(costs.missed, costs.falseTracks);
    const int larger = costs.matched + unpaired;
    if (larger == 0) {
        return 0.0;
    }
    // Every unpaired object or track costs c^p, whether too distant or surplus.
    const double farCost = std::pow(parameters.cutoff, parameters.order);
    return std::pow((costs.localisationCost + farCost * unpaired) / larger, 1.0 / parameters.order);
}

void GospaMean::add(const Gospa& one) {
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

void OspaMean::add(const Gospa& costs) {
    sum_ += ospa(costs, parameters_);
    ++instants_;
}

double OspaMean::result() const {
    return sum_ / std::max(1, instants_);
}

}  // namespace Workbench
