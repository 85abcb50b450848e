// SPDX-License-Identifier: Apache-2.0
#include "evaluate/Picture.h"

#include <utility>

namespace Workbench {
namespace {

/// Times in recordings and fused tracks are rounded to a microsecond; the tolerance keeps the
/// decision at the limit independent of rounding.
constexpr double timeTolerance = 2e-6;

}  // namespace

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
