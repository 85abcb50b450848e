// SPDX-License-Identifier: Apache-2.0
#include "evaluate/Picture.h"

#include <utility>

namespace Workbench {

void Picture::replace(double time, std::vector<Reported> reports) {
    reportTime = time;
    current = std::move(reports);
}

std::vector<JudgedTrack> Picture::at(double time) const {
    const double elapsed = time - reportTime;
    std::vector<JudgedTrack> shown;
    for (const Reported& reported : current) {
        if (reported.coasting + elapsed > coastingLimit) {
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
