// SPDX-License-Identifier: Apache-2.0
#include "check/RadarMotion.h"

#include <veskar-host/Projection.h>

#include "check/Median.h"
#include "check/TrackGap.h"

#include <algorithm>
#include <cmath>

namespace Workbench {
namespace {

constexpr double span = 1.0;        // seconds
constexpr double leastSpeed = 0.5;  // m/s; below it noise dominates
constexpr std::size_t mostWays = 20000;
const double leastCosine = std::cos(radians(30.0));

std::optional<double> medianOfAny(const std::vector<float>& numbers) {
    return numbers.empty() ? std::nullopt : std::optional<double>(medianOf(numbers));
}

}  // namespace

RadarMotion::RadarMotion(const RecordingHeader& header) : radar_(header.radar, {}) {}

void RadarMotion::add(const SensorFrame& frame) {
    for (const Report& report : frame.tracks) {
        const auto* seen = std::get_if<RadarReport>(&report);
        if (seen == nullptr) {
            continue;
        }
        std::deque<Point>& track = tracks_[seen->id];
        if (!track.empty() && frame.time - track.back().time > longestTrackGap) {
            track.clear();
        }
        if (seen->confirmed && !(seen->coasting > 0.0)) {
            track.push_back({frame.time, *seen});
        }
        if (!track.empty() && track.back().time - track.front().time >= span) {
            compare(track);
            track.erase(track.begin(), std::prev(track.end()));
        }
    }
    for (auto track = tracks_.begin(); track != tracks_.end();) {
        const bool isOver =
            track->second.empty() || frame.time - track->second.back().time > longestTrackGap;
        track = isOver ? tracks_.erase(track) : std::next(track);
    }
}

void RadarMotion::compare(const std::deque<Point>& track) {
    const Point& first = track.front();
    const Point& last = track.back();
    const RadarReport& middle = track[track.size() / 2].report;
    const double time = last.time - first.time;
    const double radialSpeed = (last.report.range - first.report.range) / time;
    if (middle.radialSpeed && std::abs(radialSpeed) > leastSpeed &&
        radialFactors_.size() < mostWays) {
        radialFactors_.push_back(static_cast<float>(*middle.radialSpeed / radialSpeed));
    }
    if (!middle.speed || !middle.direction) {
        return;
    }
    for (const AzimuthForm form : azimuthForms) {
        const auto placeOf = [&](const RadarReport& report) {
            return radar_.groundPoint(report.range, readAs(form, report.azimuth)).position;
        };
        const Eigen::Vector2d velocity = (placeOf(last.report) - placeOf(first.report)) / time;
        Ways& ways = byAzimuth_[static_cast<std::size_t>(form)];
        if (velocity.norm() < leastSpeed || ways.count >= mostWays) {
            continue;
        }
        ++ways.count;
        ways.speedFactors.push_back(static_cast<float>(*middle.speed / velocity.norm()));
        for (const DirectionForm direction : directionForms) {
            const Eigen::Vector2d there =
                radar_.groundDirection(readAs(direction, *middle.direction));
            ways.agreeing[static_cast<std::size_t>(direction)] +=
                there.dot(velocity.normalized()) > leastCosine ? 1 : 0;
        }
    }
}

std::uint64_t RadarMotion::ways(AzimuthForm azimuth) const {
    return byAzimuth_[static_cast<std::size_t>(azimuth)].count;
}

double RadarMotion::share(AzimuthForm azimuth, DirectionForm direction) const {
    const Ways& ways = byAzimuth_[static_cast<std::size_t>(azimuth)];
    return ways.count == 0
               ? 0.0
               : static_cast<double>(ways.agreeing[static_cast<std::size_t>(direction)]) /
                     static_cast<double>(ways.count);
}

std::optional<double> RadarMotion::speedFactor(AzimuthForm azimuth) const {
    return medianOfAny(byAzimuth_[static_cast<std::size_t>(azimuth)].speedFactors);
}

std::optional<double> RadarMotion::radialSpeedFactor() const {
    return medianOfAny(radialFactors_);
}

}  // namespace Workbench
