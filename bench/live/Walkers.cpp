// SPDX-License-Identifier: Apache-2.0
#include "live/Walkers.h"

#include <cmath>

namespace VeskarBench {
namespace {

using Veskar::Host::RadarReport;
using Veskar::Host::VideoReport;

constexpr double speed = 1.3;   // m/s
constexpr double period = 8.0;  // s, to and fro
constexpr double height = 1.75;

/// Whether a person walks to the left.
bool isGoing(std::size_t person, double time) {
    const double phase = time / period + 0.37 * static_cast<double>(person);
    return phase - std::floor(phase) < 0.5;
}

}  // namespace

Walkers::Walkers(const Veskar::Host::Installation& installation, std::size_t number, double stay)
    : camera_(installation.camera.build()),
      radar_(installation.radar.mounting.position),
      number_(number),
      stay_(stay) {}

Veskar::Host::SensorFrame Walkers::seenBy(Veskar::Source source, double time) const {
    Veskar::Host::SensorFrame frame{source, time, time, {}};
    for (std::size_t person = 0; person < number_; ++person) {
        const Eigen::Vector2d place = positionOf(person, time);
        const Eigen::Vector3d foot(place[0], place[1], 0.0);
        const double way = isGoing(person, time) ? speed : -speed;
        if (source == Veskar::Radar) {
            RadarReport report;
            report.id = idOf(person, time);
            report.range = (foot - radar_).norm();
            report.azimuth =
                Veskar::Host::degrees(std::atan2(-(place[1] - radar_[1]), place[0] - radar_[0]));
            report.speed = speed;
            report.direction = way > 0.0 ? -90.0 : 90.0;
            frame.tracks.emplace_back(report);
        } else {
            const auto motion = camera_.project(foot, {0.0, way, 0.0});
            const Eigen::Vector2d head = camera_.position(foot + Eigen::Vector3d(0, 0, height));
            const double half = 0.15 * (head[1] - motion.uv[1]);
            VideoReport report;
            report.id = idOf(person, time);
            report.box = {motion.uv[0] - half, motion.uv[1], motion.uv[0] + half, head[1]};
            report.velocity = motion.rate;
            report.labels.objectClass = {"human", 0.85};
            report.labels.upperClothingColor = {"red", 0.6};
            report.labels.lowerClothingColor = {"black", 0.6};
            frame.tracks.emplace_back(report);
        }
    }
    return frame;
}

/// Rows of 16, 4 m apart, 2 to 3 m between neighbours.
Eigen::Vector2d Walkers::positionOf(std::size_t person, double time) const {
    const std::size_t row = person / 16;
    const double x = 18.0 + 4.0 * static_cast<double>(row);
    const double column = static_cast<double>(person % 16) - 7.5;
    const double phase = time / period + 0.37 * static_cast<double>(person);
    const double within = phase - std::floor(phase);
    const double way = within < 0.5 ? within : 1.0 - within;
    return {x, column * x / 9.0 + speed * period * (way - 0.25)};
}

std::int32_t Walkers::idOf(std::size_t person, double time) const {
    const double generation =
        stay_ > 0.0
            ? std::floor(time / stay_ + static_cast<double>(person) / static_cast<double>(number_))
            : 0.0;
    return static_cast<std::int32_t>(person + 1) +
           static_cast<std::int32_t>(number_) * static_cast<std::int32_t>(generation);
}

}  // namespace VeskarBench
