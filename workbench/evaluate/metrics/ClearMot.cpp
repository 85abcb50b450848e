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

ClearMot::ObjectHistory& ClearMot::historyOf(const TrueObject& object) {
    const auto place = static_cast<std::size_t>(object.number);
    if (place >= objects_.size()) {
        objects_.resize(place + 1);
    }
    return objects_[place];
}

void ClearMot::add(const Instant& instant, const NearPairs& near) {
    matchedNow_.clear();
    for (const TrueObject& truth : instant.truths) {
        ++historyOf(truth).present;
    }
    if (instant.truths.empty() || instant.tracks.empty()) {
        counts_.FN += static_cast<int>(instant.truths.size());
        counts_.FP += static_cast<int>(instant.tracks.size());
        return;
    }

    std::vector<Gain> gains;
    gains.reserve(near.size());
    for (const NearPair& pair : near) {
        const double alike = similarity(pair.distance, parameters_.zeroDistance);
        if (alike < parameters_.threshold - std::numeric_limits<double>::epsilon()) {
            continue;
        }
        const ObjectHistory& object =
            historyOf(instant.truths[static_cast<std::size_t>(pair.truth)]);
        const bool continued =
            object.matchedAt == instant_ &&
            object.lastTrack == instant.tracks[static_cast<std::size_t>(pair.track)].number;
        gains.push_back({pair.truth, pair.track, alike + (continued ? continuationGain : 0.0)});
    }
    const std::vector<std::size_t> pairs =
        assignWithGreatestGain(instant.truths.size(), instant.tracks.size(), gains);
    for (const std::size_t place : pairs) {
        const TrueObject& truth = instant.truths[static_cast<std::size_t>(gains[place].row)];
        const JudgedTrack& track = instant.tracks[static_cast<std::size_t>(gains[place].column)];
        ObjectHistory& object = historyOf(truth);
        const bool isSwitch = object.matched > 0 && object.lastTrack != track.number;
        counts_.IDSW += isSwitch ? 1 : 0;
        object.beginnings += object.matchedAt == instant_ ? 0 : 1;
        if (isSwitch || object.matched == 0) {
            object.tracks.insert(track.number);
        }
        object.lastTrack = track.number;
        object.matchedAt = instant_ + 1;
        ++object.matched;
        matchedNow_.emplace_back(truth.id, track.id);
        const double distance = (track.position - truth.position).norm();
        similaritySum_ += similarity(distance, parameters_.zeroDistance);
        distanceSum_ += distance;
    }
    ++instant_;
    counts_.TP += static_cast<int>(pairs.size());
    counts_.FN += static_cast<int>(instant.truths.size() - pairs.size());
    counts_.FP += static_cast<int>(instant.tracks.size() - pairs.size());
}

ClearMot::Result ClearMot::result() const {
    Result result = counts_;
    std::size_t tracks = 0;
    int objectsMatched = 0;
    for (const ObjectHistory& object : objects_) {
        if (object.present == 0) {
            continue;
        }
        const double share = static_cast<double>(object.matched) / object.present;
        if (share > mostlyTracked) {
            ++result.MT;
        } else if (share >= mostlyLost) {
            ++result.PT;
        } else {
            ++result.ML;
        }
        result.Frag += std::max(0, object.beginnings - 1);
        tracks += object.tracks.size();
        objectsMatched += object.matched > 0 ? 1 : 0;
    }
    result.tracksPerObject = average(static_cast<double>(tracks), objectsMatched);
    result.MOTA = static_cast<double>(result.TP - result.FP - result.IDSW) /
                  std::max(1, result.TP + result.FN);
    result.MOTP = similaritySum_ / std::max(1, result.TP);
    result.motpDistance = average(distanceSum_, result.TP);
    return result;
}

}  // namespace Workbench
