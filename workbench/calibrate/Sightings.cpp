// SPDX-License-Identifier: Apache-2.0
#include "calibrate/Sightings.h"

#include <veskar-host/Projection.h>

#include "check/TrackGap.h"

#include <algorithm>
#include <utility>
#include <variant>

namespace Workbench {
namespace {

/// @return the history that continues the track at a time; a new one after a gap
template <typename History>
History* historyOf(std::map<std::int32_t, std::size_t>& living, std::vector<History>& histories,
                   std::int32_t id, double time) {
    const auto known = living.find(id);
    if (known != living.end()) {
        History& history = histories[known->second];
        const double gap = time - history.sightings.back().time;
        if (gap <= longestTrackGap) {
            return gap > 0.0 ? &history : nullptr;
        }
    }
    living[id] = histories.size();
    histories.emplace_back();
    return &histories.back();
}

/// Histories and the living tracks that they belong to move up.
template <typename History>
void forget(std::map<std::int32_t, std::size_t>& living, std::vector<History>& histories,
            double time) {
    std::vector<std::optional<std::size_t>> places(histories.size());
    std::vector<History> kept;
    for (std::size_t i = 0; i < histories.size(); ++i) {
        auto& sightings = histories[i].sightings;
        const auto first =
            std::find_if(sightings.begin(), sightings.end(),
                         [&](const auto& sighting) { return sighting.time >= time; });
        if (first != sightings.end()) {
            sightings.erase(sightings.begin(), first);
            places[i] = kept.size();
            kept.push_back(std::move(histories[i]));
        }
    }
    for (auto track = living.begin(); track != living.end();) {
        const std::optional<std::size_t> place = places[track->second];
        if (place) {
            track->second = *place;
            ++track;
        } else {
            track = living.erase(track);
        }
    }
    histories = std::move(kept);
}

}  // namespace

const std::string& VideoHistory::className() const {
    return std::max_element(classes.begin(), classes.end(),
                            [](const auto& a, const auto& b) { return a.second < b.second; })
        ->first;
}

std::optional<Eigen::Vector4d> VideoHistory::at(double time) const {
    const auto after =
        std::lower_bound(sightings.begin(), sightings.end(), time,
                         [](const VideoSighting& sighting, double t) { return sighting.time < t; });
    if (after == sightings.begin() || after == sightings.end()) {
        return std::nullopt;
    }
    const VideoSighting& before = *std::prev(after);
    const double share = (time - before.time) / (after->time - before.time);
    return Eigen::Vector4d((1.0 - share) * before.box + share * after->box);
}

void Sightings::add(double time, const RadarReport& report) {
    if (RadarHistory* const history = historyOf(livingRadar_, radar_, report.id, time)) {
        history->sightings.push_back({time, report.range, -radians(report.azimuth)});
    }
}

void Sightings::add(double time, const VideoReport& report) {
    // Objects that reach beyond the image have cut boxes.
    constexpr double edge = 0.97;
    const ImageBox& box = report.box;
    if (box.left < -edge || box.right > edge || box.bottom < -edge || box.top > edge) {
        return;
    }
    if (VideoHistory* const history = historyOf(livingVideo_, video_, report.id, time)) {
        history->sightings.push_back({time,
                                      {0.5 * (box.left + box.right), box.bottom,
                                       box.right - box.left, box.top - box.bottom}});
        const Label& label = report.labels.objectClass;
        history->classes[label.name] += label.probability;
    }
}

void Sightings::forgetBefore(double time) {
    forget(livingRadar_, radar_, time);
    forget(livingVideo_, video_, time);
}

void Sightings::add(const SensorFrame& frame) {
    for (const Report& report : frame.tracks) {
        const ReportBase& base = baseOf(report);
        if (!base.confirmed || base.coasting > 0.0) {
            continue;
        }
        if (const auto* heard = std::get_if<RadarReport>(&report)) {
            add(frame.time, *heard);
        } else if (const auto* seen = std::get_if<VideoReport>(&report)) {
            add(frame.time, *seen);
        }
    }
}

}  // namespace Workbench
