// SPDX-License-Identifier: Apache-2.0
#include "evaluate/Picture.h"

#include <algorithm>
#include <utility>

namespace Workbench {
namespace {

/// Times in recordings and fused tracks are rounded to a microsecond; the tolerance keeps the
/// decision at the limit independent of rounding.
constexpr double timeTolerance = 2e-6;

}  // namespace

std::optional<Picture::Reported> Picture::reportedOf(const FusedTrack& track) {
    if (!track.ground || !track.ground->position.allFinite() ||
        !track.ground->velocity.allFinite()) {
        return std::nullopt;
    }
    Reported reported;
    reported.track.id = track.id;
    reported.track.className = track.labels.objectClass.name;
    reported.track.position = track.ground->position;
    reported.track.velocity = track.ground->velocity;
    reported.track.covariance = track.ground->covariance;
    reported.track.velocityCovariance = track.ground->velocityCovariance;
    const auto seenLast = std::min_element(
        track.sensors.begin(), track.sensors.end(),
        [](const Support& a, const Support& b) { return a.coasting < b.coasting; });
    reported.coasting = seenLast == track.sensors.end() ? 0.0 : seenLast->coasting;
    return reported;
}

void Picture::replace(double time, std::vector<Reported> reports) {
    reportTime_ = time;
    current_ = std::move(reports);
}

std::vector<JudgedTrack> Picture::at(double time) const {
    const double elapsed = time - reportTime_;
    std::vector<JudgedTrack> shown;
    for (const Reported& reported : current_) {
        if (reported.coasting + elapsed > coastingLimit_ + timeTolerance) {
            continue;
        }
        JudgedTrack track = reported.track;
        track.position += elapsed * track.velocity;
        track.covariance += elapsed * elapsed * track.velocityCovariance;
        shown.push_back(std::move(track));
    }
    return shown;
}

}  // namespace Workbench
