// SPDX-License-Identifier: Apache-2.0
#include "report/RunTable.h"

#include <veskar-host/Projection.h>

#include "report/Column.h"
#include "report/Resolution.h"

#include <cmath>

#include <Eigen/Eigenvalues>
#include <nlohmann/json.hpp>

namespace Workbench {
namespace {

/// The covariance ellipse of one standard deviation.
struct Ellipse {
    double major = noValue;  ///< half-axis, m
    double minor = noValue;  ///< half-axis, m
    double angle = noValue;  ///< of the major axis, degrees to the left of forward, -90..90
};

Ellipse ellipseOf(const Eigen::Matrix2d& covariance) {
    if (!covariance.allFinite()) {
        return {};
    }
    const Eigen::SelfAdjointEigenSolver<Eigen::Matrix2d> solver(covariance);
    const Eigen::Vector2d variances = solver.eigenvalues().cwiseMax(0.0);
    const Eigen::Vector2d axis = solver.eigenvectors().col(1);
    const double angle = degrees(std::atan2(axis[1], axis[0]));
    return {std::sqrt(variances[1]), std::sqrt(variances[0]),
            angle > 90.0 ? angle - 180.0 : (angle <= -90.0 ? angle + 180.0 : angle)};
}

std::string joined(const std::optional<std::set<std::string>>& tags) {
    std::string text;
    for (const std::string& tag : tags.value_or(std::set<std::string>{})) {
        text += (text.empty() ? "" : ", ") + tag;
    }
    return text;
}

}  // namespace

RunTable::RunTable(Words& vocabulary)
    : words_(vocabulary),
      tracks_({"id"}, {{"confirmed", 1.0},
                       {"probability", ratio},
                       {"x", metres},
                       {"y", metres},
                       {"major", metres},
                       {"minor", metres},
                       {"angle", wholeDegrees},
                       {"range", metres},
                       {"speed", metresPerSecond},
                       {"direction", wholeDegrees},
                       {"left", image},
                       {"bottom", image},
                       {"right", image},
                       {"top", image},
                       {"class", 1.0},
                       {"classProbability", twentieths},
                       {"color", 1.0},
                       {"upperClothingColor", 1.0},
                       {"lowerClothingColor", 1.0},
                       {"tags", 1.0}}),
      sensors_({"track", "source", "id"}, {{"coasting", tenths}}) {}

void RunTable::add(const FusedFrame& frame) {
    times_.push_back(frame.time);
    received_.push_back(frame.received);
    sources_.append(sourceNumber(frame.source));
    tracks_.beginFrame();
    sensors_.beginFrame();
    for (const FusedTrack& track : frame.tracks) {
        // Derivable values are left out: the range follows from the position, the velocity from
        // speed and direction.
        Eigen::Vector2d position(noValue, noValue);
        Ellipse ellipse;
        if (track.ground) {
            position = track.ground->position;
            ellipse = ellipseOf(track.ground->covariance);
        }
        const Labels& labels = track.labels;
        tracks_.add({track.id}, {track.confirmed ? 1.0 : 0.0,
                                 track.probability,
                                 position[0],
                                 position[1],
                                 ellipse.major,
                                 ellipse.minor,
                                 ellipse.angle,
                                 track.ground ? noValue : track.range,
                                 track.speed.value_or(noValue),
                                 track.direction.value_or(noValue),
                                 track.box.left,
                                 track.box.bottom,
                                 track.box.right,
                                 track.box.top,
                                 words_.numberOf(labels.objectClass.name),
                                 labels.objectClass.probability,
                                 words_.numberOf(labels.color.name),
                                 words_.numberOf(labels.upperClothingColor.name),
                                 words_.numberOf(labels.lowerClothingColor.name),
                                 words_.numberOf(joined(track.tags))});
        for (const Support& support : track.sensors) {
            sensors_.add({track.id, sourceNumber(support.source), support.id},
                         {wholeTenths(support.coasting)});
        }
    }
}

Json RunTable::json(double start) const {
    return {{"time", timeColumn(times_, start)},
            {"received", timeColumn(received_, start)},
            {"source", sources_.json()},
            {"tracks", tracks_.json()},
            {"sensors", sensors_.json()}};
}

}  // namespace Workbench
