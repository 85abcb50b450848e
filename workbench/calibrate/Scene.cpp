// SPDX-License-Identifier: Apache-2.0
#include "calibrate/Scene.h"

#include <algorithm>
#include <cmath>
#include <map>

namespace Workbench {
namespace {

constexpr double momentInterval = 0.25;  // s between moments
constexpr std::size_t mostLooks = 40000;

/// How long a radar's tracker remembers a turn or a change of speed, s.
constexpr double trackerMemory = 3.0;
/// An object moves straight when its way over that time bends by less, m and share of the way.
constexpr double bendNoise = 0.4;
constexpr double bendShare = 0.06;
/// Shortest way that tells a direction, m.
constexpr double shortestWay = 1.5;

/// In the radar's plane, whose height above the ground hardly matters for a motion.
Eigen::Vector2d flatPlace(const RadarSighting& sighting) {
    return sighting.range * Eigen::Vector2d(std::cos(sighting.azimuth), std::sin(sighting.azimuth));
}

/// The sighting nearest to a time, within the history.
const RadarSighting& nearest(const std::vector<RadarSighting>& sightings, double time) {
    const auto after =
        std::lower_bound(sightings.begin(), sightings.end(), time,
                         [](const RadarSighting& sighting, double t) { return sighting.time < t; });
    return after == sightings.end() ? sightings.back() : *after;
}

/// Describes each sighting of a track.
class Motions {
public:
    Motions(std::size_t history, const std::vector<RadarSighting>& sightings)
        : history_(history), sightings_(sightings) {}

    RadarLook at(std::size_t i) {
        RadarLook look;
        look.history = history_;
        look.sighting = sightings_[i];
        const double time = look.sighting.time;
        const RadarSighting& oldest = nearest(sightings_, time - trackerMemory);
        const RadarSighting& middle = nearest(sightings_, time - 0.5 * trackerMemory);
        const RadarSighting& newest = nearest(sightings_, time + 0.5);
        const Eigen::Vector2d now = flatPlace(look.sighting);
        const Eigen::Vector2d way = flatPlace(newest) - flatPlace(middle);
        if (way.norm() > shortestWay) {
            heading_ = std::atan2(way[1], way[0]);
            hasHeading_ = true;
        }
        look.heading = heading_;
        look.hasHeading = hasHeading_;
        look.speed = way.norm() / std::max(newest.time - middle.time, momentInterval);
        const bool isOldEnough =
            time - sightings_.front().time >= trackerMemory && newest.time - time > 0.3;
        look.isSteady = isOldEnough && isStraight(flatPlace(oldest), flatPlace(middle), now);
        return look;
    }

private:
    static bool isStraight(const Eigen::Vector2d& before, const Eigen::Vector2d& then,
                           const Eigen::Vector2d& now) {
        const double bend = (before + now - 2.0 * then).norm();
        return bend < bendNoise + bendShare * (now - before).norm();
    }

    std::size_t history_;
    const std::vector<RadarSighting>& sightings_;
    double heading_ = 0.0;
    bool hasHeading_ = false;
};

/// Keeps every n-th moment, so that long recordings take no longer.
void thinOut(std::vector<Moment>& moments) {
    std::size_t looks = 0;
    for (const Moment& moment : moments) {
        looks += moment.looks.size();
    }
    const std::size_t step = looks / mostLooks + 1;
    std::size_t kept = 0;
    for (std::size_t i = 0; i < moments.size(); i += step) {
        std::swap(moments[kept++], moments[i]);
    }
    moments.resize(kept);
}

}  // namespace

std::vector<Moment> momentsOf(const Sightings& sightings) {
    // Reports of one radar frame have the same time.
    std::map<double, std::vector<RadarLook>> byTime;
    for (std::size_t history = 0; history < sightings.radar().size(); ++history) {
        const std::vector<RadarSighting>& list = sightings.radar()[history].sightings;
        Motions motions(history, list);
        for (std::size_t i = 0; i < list.size(); ++i) {
            byTime[list[i].time].push_back(motions.at(i));
        }
    }
    std::vector<Moment> moments;
    for (auto& [time, looks] : byTime) {
        if (moments.empty() || time - moments.back().time >= momentInterval - 1e-6) {
            moments.push_back({time, std::move(looks)});
        }
    }
    thinOut(moments);
    return moments;
}

}  // namespace Workbench
