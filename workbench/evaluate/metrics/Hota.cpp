// SPDX-License-Identifier: Apache-2.0
#include "evaluate/metrics/Hota.h"

#include "evaluate/metrics/Assignment.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace Workbench {
namespace {

constexpr double epsilon = std::numeric_limits<double>::epsilon();

/// Counts for one localisation threshold.
struct ThresholdCounts {
    double matches = 0.0;
    double truths = 0.0;
    double tracks = 0.0;
    double similarity = 0.0;
    std::map<std::pair<int, int>, double> matchesOfPair;

    double detection() const { return matches / std::max(1.0, truths + tracks - matches); }
    double localisation() const { return std::max(1e-10, similarity) / std::max(1e-10, matches); }
    double association(const IdCounts& truthCounts, const IdCounts& trackCounts) const {
        double sum = 0.0;
        for (const auto& [pair, n] : matchesOfPair) {
            sum +=
                n * n / std::max(1.0, truthCounts.of(pair.first) + trackCounts.of(pair.second) - n);
        }
        return sum / std::max(1.0, matches);
    }
};

}  // namespace

void Hota::add(const Instant& instant) {
    const std::vector<int> truths = countAppearances(instant.truths, truthCounts_);
    const std::vector<int> tracks = countAppearances(instant.tracks, trackCounts_);
    const Eigen::MatrixXd similarity = similarities(instant, zeroDistance_);
    const Eigen::VectorXd ofTruth = similarity.rowwise().sum();
    const Eigen::RowVectorXd ofTrack = similarity.colwise().sum();
    Moment moment{{}, static_cast<int>(truths.size()), static_cast<int>(tracks.size())};
    for (Eigen::Index i = 0; i < similarity.rows(); ++i) {
        for (Eigen::Index j = 0; j < similarity.cols(); ++j) {
            const double s = similarity(i, j);
            const double denominator = ofTruth(i) + ofTrack(j) - s;
            if (s > 0.0 && denominator > epsilon) {
                const int truth = truths[static_cast<std::size_t>(i)];
                const int track = tracks[static_cast<std::size_t>(j)];
                potentialMatches_[{truth, track}] += s / denominator;
                moment.pairs.push_back({truth, track, s});
            }
        }
    }
    moments_.push_back(std::move(moment));
}

double Hota::alignment(int truth, int track) const {
    const double potential = potentialMatches_.at({truth, track});
    return potential / (truthCounts_.of(truth) + trackCounts_.of(track) - potential);
}

std::vector<Hota::Similar> Hota::match(const Moment& moment) const {
    IdCounts rows;
    IdCounts columns;
    std::vector<std::pair<int, int>> cells;
    cells.reserve(moment.pairs.size());
    for (const Similar& pair : moment.pairs) {
        cells.emplace_back(rows.countAppearance(pair.truth), columns.countAppearance(pair.track));
    }
    Eigen::MatrixXd gain = Eigen::MatrixXd::Zero(rows.size(), columns.size());
    Eigen::MatrixXi indexOf = Eigen::MatrixXi::Zero(rows.size(), columns.size());
    for (std::size_t k = 0; k < cells.size(); ++k) {
        const Similar& pair = moment.pairs[k];
        const auto& [row, column] = cells[k];
        gain(row, column) = alignment(pair.truth, pair.track) * pair.similarity;
        indexOf(row, column) = static_cast<int>(k);
    }
    std::vector<Similar> matched;
    for (const auto& [row, column] : assignWithGreatestGain(gain)) {
        matched.push_back(moment.pairs[static_cast<std::size_t>(indexOf(row, column))]);
    }
    return matched;
}

Hota::Result Hota::result() const {
    std::array<ThresholdCounts, thresholdCount> thresholds;
    for (const Moment& moment : moments_) {
        const std::vector<Similar> matched = match(moment);
        for (int k = 0; k < thresholdCount; ++k) {
            ThresholdCounts& counts = thresholds[static_cast<std::size_t>(k)];
            counts.truths += moment.truths;
            counts.tracks += moment.tracks;
            for (const Similar& pair : matched) {
                if (pair.similarity >= 0.05 * (k + 1) - epsilon) {
                    counts.matches += 1.0;
                    counts.similarity += pair.similarity;
                    counts.matchesOfPair[{pair.truth, pair.track}] += 1.0;
                }
            }
        }
    }
    Result result;
    for (const ThresholdCounts& counts : thresholds) {
        const double detection = counts.detection();
        const double association = counts.association(truthCounts_, trackCounts_);
        result.DetA += detection / thresholdCount;
        result.AssA += association / thresholdCount;
        result.HOTA += std::sqrt(detection * association) / thresholdCount;
        result.LocA += counts.localisation() / thresholdCount;
    }
    return result;
}

}  // namespace Workbench
