// SPDX-License-Identifier: Apache-2.0
#include "evaluate/metrics/Accuracy.h"

#include "evaluate/metrics/Average.h"

#include <cmath>

#include <Eigen/Cholesky>

namespace Workbench {
namespace {

/// The 95 % quantile of the chi-square distribution with two degrees of freedom, -2 ln 0.05.
const double chiSquare95 = -2.0 * std::log(0.05);

}  // namespace

void Accuracy::add(const Instant& instant, const Pairs& pairs) {
    for (const auto& [i, j] : pairs) {
        const TrueObject& truth = instant.truths[static_cast<std::size_t>(i)];
        const JudgedTrack& track = instant.tracks[static_cast<std::size_t>(j)];
        const Eigen::Vector2d error = track.position - truth.position;
        const Eigen::Vector2d sight = (truth.position - observer_).normalized();
        const double along = sight.dot(error);
        const double across = sight.x() * error.y() - sight.y() * error.x();
        errors_.count(static_cast<float>(error.norm()));
        radial_ += along;
        crossRange_ += across;
        squaredRadial_ += along * along;
        squaredCrossRange_ += across * across;
        classMatches_ += truth.className == track.className ? 1 : 0;
        if (truth.velocity) {
            squaredVelocity_ += (track.velocity - *truth.velocity).squaredNorm();
            ++velocityMatches_;
        }
    }
}

void Accuracy::addAgain(const Instant& instant, const Pairs& pairs) {
    for (const auto& [i, j] : pairs) {
        const Eigen::Vector2d error = instant.tracks[static_cast<std::size_t>(j)].position -
                                      instant.truths[static_cast<std::size_t>(i)].position;
        errors_.countAgain(static_cast<float>(error.norm()));
    }
}

Accuracy::Result Accuracy::result() const {
    const auto n = static_cast<double>(errors_.size());
    Result result;
    result.matches = static_cast<int>(errors_.size());
    result.positionRmse = std::sqrt(average(squaredRadial_ + squaredCrossRange_, n));
    result.positionMedian = errors_.result();
    result.radialRmse = std::sqrt(average(squaredRadial_, n));
    result.crossRangeRmse = std::sqrt(average(squaredCrossRange_, n));
    result.radialBias = average(radial_, n);
    result.crossRangeBias = average(crossRange_, n);
    result.velocityMatches = velocityMatches_;
    result.velocityRmse = std::sqrt(average(squaredVelocity_, velocityMatches_));
    result.classAgreement = average(classMatches_, n);
    return result;
}

void Consistency::add(const Instant& instant, const Pairs& pairs) {
    for (const auto& [i, j] : pairs) {
        const JudgedTrack& track = instant.tracks[static_cast<std::size_t>(j)];
        const Eigen::LLT<Eigen::Matrix2d> factor(track.covariance);
        if (!track.covariance.allFinite() || factor.info() != Eigen::Success) {
            continue;
        }
        const Eigen::Vector2d error =
            track.position - instant.truths[static_cast<std::size_t>(i)].position;
        const double nees = error.dot(factor.solve(error));
        sum_ += nees;
        within_ += nees < chiSquare95 ? 1 : 0;
        ++matches_;
    }
}

Consistency::Result Consistency::result() const {
    return {average(sum_, matches_), average(within_, matches_), matches_};
}

}  // namespace Workbench
