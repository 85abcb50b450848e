// SPDX-License-Identifier: Apache-2.0
#include "evaluate/metrics/ClearMot.h"

#include "evaluate/metrics/Assignment.h"
#include "evaluate/metrics/Average.h"

#include <algorithm>
#include <limits>

namespace Workbench {
namespace {

/// Larger than any similarity, so that matches of the previous instant have priority.
constexpr double continuationGain = 1000.0;
constexpr double mostlyTracked = 0.8;
constexpr double mostlyLost = 0.2;

}  // namespace

void ClearMot::add(const Instant& instant) {
    const auto truthAt = [&](Eigen::Index i) -> const TrueObject& {
        return instant.truths[static_cast<std::size_t>(i)];
    };
    const auto trackAt = [&](Eigen::Index j) -> const JudgedTrack& {
        return instant.tracks[static_cast<std::size_t>(j)];
    };
    matchedNow_.clear();
    for (const TrueObject& truth : instant.truths) {
        ++objects_[truth.id].present;
    }
    if (instant.truths.empty() || instant.tracks.empty()) {
        counts_.FN += static_cast<int>(instant.truths.size());
        counts_.FP += static_cast<int>(instant.tracks.size());
        return;
    }

    const Eigen::MatrixXd similarity = similarities(instant, parameters_.zeroDistance);
    Eigen::MatrixXd gain = Eigen::MatrixXd::Zero(similarity.rows(), similarity.cols());
    for (Eigen::Index i = 0; i < gain.rows(); ++i) {
        const ObjectHistory& object = objects_[truthAt(i).id];
        for (Eigen::Index j = 0; j < gain.cols(); ++j) {
            if (similarity(i, j) < parameters_.threshold - std::numeric_limits<double>::epsilon()) {
                continue;
            }
            const bool continued =
                object.matchedInPreviousInstant && object.lastTrackId == trackAt(j).id;
            gain(i, j) = similarity(i, j) + (continued ? continuationGain : 0.0);
        }
    }
    const Pairs pairs = assignWithGreatestGain(gain);

    for (const auto& [i, j] : pairs) {
        ObjectHistory& object = objects_[truthAt(i).id];
        const int trackId = trackAt(j).id;
        counts_.IDSW += !object.trackIds.empty() && object.lastTrackId != trackId ? 1 : 0;
        object.beginnings += object.matchedInPreviousInstant ? 0 : 1;
        object.lastTrackId = trackId;
        ++object.matched;
        object.trackIds.insert(trackId);
        matchedNow_[truthAt(i).id] = trackId;
        similaritySum_ += similarity(i, j);
        distanceSum_ += (trackAt(j).position - truthAt(i).position).norm();
    }
    for (auto& [id, object] : objects_) {
        object.matchedInPreviousInstant = matchedNow_.count(id) > 0;
    }
    counts_.TP += static_cast<int>(pairs.size());
    counts_.FN += static_cast<int>(instant.truths.size() - pairs.size());
    counts_.FP += static_cast<int>(instant.tracks.size() - pairs.size());
}

ClearMot::Result ClearMot::result() const {
    Result result = counts_;
    std::size_t trackIds = 0;
    int objectsMatched = 0;
    for (const auto& [id, object] : objects_) {
        const double share = static_cast<double>(object.matched) / object.present;
        if (share > mostlyTracked) {
            ++result.MT;
        } else if (share >= mostlyLost) {
            ++result.PT;
        } else {
            ++result.ML;
        }
        result.Frag += std::max(0, object.beginnings - 1);
        trackIds += object.trackIds.size();
        objectsMatched += object.matched > 0 ? 1 : 0;
    }
    result.tracksPerObject = average(static_cast<double>(trackIds), objectsMatched);
    result.MOTA = static_cast<double>(result.TP - result.FP - result.IDSW) /
                  std::max(1, result.TP + result.FN);
    result.MOTP = similaritySum_ / std::max(1, result.TP);
    result.motpDistance = average(distanceSum_, result.TP);
    return result;
}

}  // namespace Workbench
