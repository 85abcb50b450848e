// SPDX-License-Identifier: Apache-2.0
#include "check/TrackPairs.h"

#include "check/TrackGap.h"

#include <algorithm>
#include <cmath>

#include <Eigen/Geometry>

namespace Workbench {
namespace {

/// Half the time span for rates, and how long sightings are kept, seconds.
constexpr double halfSpan = 0.5;
constexpr double sightingMemory = 4.0;
constexpr std::size_t mostSamples = 40000;

/// Tracks of one object may differ by errors of the installation up to these gates, and no other
/// track may lie within twice the gates.
const double bearingGate = radians(5.0);
constexpr double depressionGate = 0.05;
constexpr double aloneFactor = 2.0;

template <typename View, typename Deque>
std::optional<View> interpolate(const Deque& sightings, double time) {
    const auto after =
        std::lower_bound(sightings.begin(), sightings.end(), time,
                         [](const auto& sighting, double t) { return sighting.time < t; });
    if (after == sightings.end() || after == sightings.begin()) {
        return std::nullopt;
    }
    const auto before = std::prev(after);
    const double gap = after->time - before->time;
    if (gap > longestTrackGap) {
        return std::nullopt;
    }
    const double share = (time - before->time) / gap;
    return View((1.0 - share) * before->view + share * after->view);
}

/// Adds an id to a set of bounded size.
template <typename Id>
void countOnce(std::set<Id>& counted, const Id& id) {
    constexpr std::size_t most = 10000;
    if (counted.size() < most) {
        counted.insert(id);
    }
}

/// A track at one time, with rates.
struct Glimpse {
    std::int32_t id;
    Eigen::Vector3d view;
    Eigen::Vector3d rate;
};

/// Whether an object moves straight. In turns the trackers of both sensors follow with different
/// delays, which would be mistaken for a lag of their clocks.
bool isStraight(const Eigen::Vector3d& before, const Eigen::Vector3d& now,
                const Eigen::Vector3d& after) {
    constexpr double bearingNoise = 0.012;  // radians
    constexpr double distanceNoise = 0.5;   // m
    constexpr double bend = 0.1;
    const Eigen::Vector3d sagitta = (after + before - 2.0 * now).cwiseAbs();
    const Eigen::Vector3d way = (after - before).cwiseAbs();
    return sagitta[0] < bearingNoise + bend * way[0] && sagitta[2] < distanceNoise + bend * way[2];
}

template <typename Sightings>
std::vector<Glimpse> glimpsesAt(const Sightings& tracks, double time) {
    std::vector<Glimpse> result;
    for (const auto& [id, sightings] : tracks) {
        const auto before = interpolate<Eigen::Vector3d>(sightings, time - halfSpan);
        const auto now = interpolate<Eigen::Vector3d>(sightings, time);
        const auto after = interpolate<Eigen::Vector3d>(sightings, time + halfSpan);
        if (before && now && after && isStraight(*before, *now, *after)) {
            result.push_back({id, *now, (*after - *before) / (2.0 * halfSpan)});
        }
    }
    return result;
}

bool isNear(const Glimpse& a, const Glimpse& b, double factor) {
    return std::abs(a.view[0] - b.view[0]) < factor * bearingGate &&
           std::abs(a.view[1] - b.view[1]) < factor * depressionGate;
}

std::size_t countNear(const Glimpse& one, const std::vector<Glimpse>& others, double factor) {
    return static_cast<std::size_t>(
        std::count_if(others.begin(), others.end(),
                      [&](const Glimpse& other) { return isNear(one, other, factor); }));
}

template <typename Sightings>
void forgetBefore(Sightings& tracks, double time) {
    for (auto track = tracks.begin(); track != tracks.end();) {
        auto& sightings = track->second;
        while (!sightings.empty() && sightings.front().time < time) {
            sightings.pop_front();
        }
        track = sightings.empty() ? tracks.erase(track) : std::next(track);
    }
}

}  // namespace

TrackPairs::TrackPairs(const RecordingHeader& header)
    : projection_(header.camera.build()),
      toCamera_(Eigen::Rotation2Dd(-radians(header.camera.mounting.yaw))),
      radar_(header.radar, {}) {}

TrackPairs::View TrackPairs::viewOfGround(const Eigen::Vector2d& ground) const {
    const Eigen::Vector2d offset = toCamera_ * (ground - projection_.origin().head<2>());
    const double distance = offset.norm();
    return {std::atan2(offset[1], offset[0]), std::atan2(projection_.origin()[2], distance),
            distance};
}

std::optional<TrackPairs::View> TrackPairs::viewOf(const Report& report) const {
    const ReportBase& base = baseOf(report);
    if (!base.confirmed || base.coasting > 0.0) {
        return std::nullopt;
    }
    if (const auto* seen = std::get_if<RadarReport>(&report)) {
        return viewOfGround(radar_.groundPoint(seen->range, seen->azimuth).position);
    }
    const auto* seen = std::get_if<VideoReport>(&report);
    // The foot of an object whose box touches the edge of the image may lie outside the image.
    if (seen == nullptr || seen->box.bottom < -0.97 || seen->box.left < -0.97 ||
        seen->box.right > 0.97) {
        return std::nullopt;
    }
    const Eigen::Vector3d ray =
        projection_.ray(0.5 * (seen->box.left + seen->box.right), seen->box.bottom);
    const double depression = std::asin(std::clamp(-ray[2], -1.0, 1.0));
    const Eigen::Vector2d aside = toCamera_ * ray.head<2>();
    return View(std::atan2(aside[1], aside[0]), depression, 0.0);
}

void TrackPairs::add(const SensorFrame& frame) {
    const bool isVideo = frame.source == Veskar::VideoObject;
    Sightings& tracks = isVideo ? videoSightings_ : radarSightings_;
    for (const Report& report : frame.tracks) {
        const std::optional<View> view = viewOf(report);
        auto& sightings = tracks[baseOf(report).id];
        if (baseOf(report).confirmed) {
            countOnce(isVideo ? videoIds_ : radarIds_, baseOf(report).id);
        }
        if (view && (sightings.empty() || sightings.back().time < frame.time)) {
            sightings.push_back({frame.time, *view});
        }
    }
    (isVideo ? lastVideo_ : lastRadar_) = frame.time;
    if (isVideo) {
        pending_.push_back(frame.time);
    }
    while (!pending_.empty() && pending_.front() + halfSpan <= std::min(lastVideo_, lastRadar_)) {
        pairAt(pending_.front());
        pending_.pop_front();
    }
    const double oldest = std::max(lastVideo_, lastRadar_) - sightingMemory;
    while (!pending_.empty() && pending_.front() < oldest) {
        pending_.pop_front();
    }
    forgetBefore(tracks, oldest);
}

void TrackPairs::pairAt(double time) {
    if (time < lastSample_ + interval_) {
        return;
    }
    lastSample_ = time;
    const std::vector<Glimpse> byVideo = glimpsesAt(videoSightings_, time);
    const std::vector<Glimpse> byRadar = glimpsesAt(radarSightings_, time);
    for (const Glimpse& seen : byVideo) {
        const auto partner =
            std::find_if(byRadar.begin(), byRadar.end(),
                         [&](const Glimpse& other) { return isNear(seen, other, 1.0); });
        const bool isAlone = partner != byRadar.end() &&
                             countNear(seen, byRadar, aloneFactor) == 1 &&
                             countNear(*partner, byVideo, aloneFactor) == 1;
        if (isAlone) {
            countOnce(pairIds_, {seen.id, partner->id});
            // Takes the bearing's rate from video and the depression's from radar, which measure
            // them better.
            keep({time, seen.view[0] - partner->view[0], seen.rate[0],
                  seen.view[1] - partner->view[1], partner->rate[1], partner->view[2]});
        }
    }
}

/// When there are too many samples, drops every second one and halves the rate of sampling.
void TrackPairs::keep(const PairSample& sample) {
    collected_.push_back(sample);
    if (collected_.size() < mostSamples) {
        return;
    }
    std::size_t kept = 0;
    for (std::size_t i = 0; i < collected_.size(); i += 2) {
        collected_[kept++] = collected_[i];
    }
    collected_.resize(kept);
    interval_ *= 2.0;
}

}  // namespace Workbench
