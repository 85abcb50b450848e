// SPDX-License-Identifier: Apache-2.0
#include "track/EstimateChange.h"

#include "track/Information.h"
#include "track/SymmetricLanes.h"

namespace Veskar {
namespace {

using Tracks = std::array<const Track*, laneCount>;
using Vector = SymmetricLanes::Vector;

constexpr std::size_t size = SymmetricLanes::size;

Information informationOf(const Track& track) {
    return Information::fromEstimate(track.state, track.covariance);
}

/// By general inverses.
FusedEstimate inInformationForm(const EstimateChange& change) {
    Information fused = informationOf(*change.track);
    if (change.removed != nullptr) {
        fused -= informationOf(*change.removed);
    }
    if (change.added != nullptr) {
        fused += informationOf(*change.added);
    }
    FusedEstimate result;
    fused.toEstimate(result.x, result.P);
    return result;
}

/// Their information matrices with the opposite sign.
/// @param valid loses the lanes in which the covariance is not symmetric and positive definite
SymmetricLanes negatedInformation(const Tracks& tracks, IntLanes& valid) {
    const StateMatrix& first = tracks[0]->covariance;
    const StateMatrix& second = tracks[1]->covariance;
    SymmetricLanes N(first, second);
    valid = valid & areSymmetric(first, second) & N.sweep(1.0);
    return N;
}

Lanes stateOf(const Tracks& tracks, std::size_t i) {
    const auto row = static_cast<Eigen::Index>(i);
    return Lanes{tracks[0]->state[row], tracks[1]->state[row]};
}

/// The difference of their states to others, weighed by information.
/// @param N information matrices
Vector pull(const SymmetricLanes& N, const Tracks& towards, const Tracks& from) {
    Vector d;
    unroll<size>([&](auto i) { d[i] = stateOf(towards, i) - stateOf(from, i); });
    return N * d;
}

}  // namespace

std::array<FusedEstimate, laneCount> estimatesAfter(
    const std::array<EstimateChange, laneCount>& changes) {
    const Tracks tracks = {changes[0].track, changes[1].track};
    IntLanes valid = lanesOf(std::int64_t{-1});
    SymmetricLanes sum = negatedInformation(tracks, valid);
    Vector force;  // P'^-1 (x' - x)
    force.fill(lanesOf(0.0));
    if (changes[0].removed != nullptr) {
        const Tracks removed = {changes[0].removed, changes[1].removed};
        const SymmetricLanes N = negatedInformation(removed, valid);
        sum -= N;
        const Vector f = pull(N, removed, tracks);
        unroll<size>([&](auto i) { force[i] = force[i] + f[i]; });
    }
    if (changes[0].added != nullptr) {
        const Tracks added = {changes[0].added, changes[1].added};
        const SymmetricLanes N = negatedInformation(added, valid);
        sum += N;
        const Vector f = pull(N, added, tracks);
        unroll<size>([&](auto i) { force[i] = force[i] - f[i]; });
    }
    valid = valid & sum.sweep(-1.0);
    const Vector step = sum * force;

    std::array<FusedEstimate, laneCount> results;
    sum.copyTo(results[0].P, results[1].P);
    unroll<size>([&](auto i) {
        const Lanes x = stateOf(tracks, i) + step[i];
        results[0].x.coeffRef(i) = x[0];
        results[1].x.coeffRef(i) = x[1];
    });
    for (int lane = 0; lane < laneCount; ++lane) {
        if (valid[lane] == 0) {
            const auto k = static_cast<std::size_t>(lane);
            results[k] = inInformationForm(changes[k]);
        }
    }
    return results;
}

FusedEstimate estimateAfter(const EstimateChange& change) {
    return estimatesAfter({change, change})[0];
}

}  // namespace Veskar
