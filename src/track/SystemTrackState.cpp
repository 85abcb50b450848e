// SPDX-License-Identifier: Apache-2.0
// The fused estimate of a system track: fusion, defusion and prediction.
#include <veskar/ImagePlane.h>
#include <veskar/SystemTrack.h>

#include "track/Dereference.h"
#include "track/Information.h"

#include <utility>

namespace Veskar {
namespace {

Information informationOf(const Track& track) {
    return Information::fromEstimate(track.state, track.covariance);
}

}  // namespace

void SystemTrack::updateState(std::shared_ptr<Track> track) {
    Track& report = dereference(track);
    const auto [entry, isNew] =
        sensorTracks[report.source].try_emplace(report.id, std::move(track));

    Information fused = informationOf(*this);
    if (!isNew) {
        const Track& previous = dereference(entry->second);
        fused -= informationOf(previous);
        report.startTime = previous.startTime;
        entry->second = std::move(track);
    }
    fused += informationOf(report);
    fused.toEstimate(state, covariance);

    // The video box has priority over the radar box.
    if (report.source == Source::VideoObject ||
        (report.source == Source::Radar && !hasTracks(Source::VideoObject))) {
        boundingBox = report.boundingBox;
    }
    updateOriginAndStartTime();
}

void SystemTrack::applyDefusion(const Track& track) {
    const std::size_t supports =
        sensorTracks[Source::VideoObject].size() + sensorTracks[Source::Radar].size();
    if (supports < 2) {
        return;
    }
    Information fused = informationOf(*this);
    fused -= informationOf(track);
    fused.toEstimate(state, covariance);
}

void SystemTrack::predict(double t) {
    setCoastingTimeTracks(t - time);
    Track::predict(t);
    for (const Source moved : {Source::Radar, Source::VideoObject}) {
        for (const auto& entry : sensorTracks[moved]) {
            dereference(entry.second).predict(t);
        }
    }
}

void SystemTrack::updateOriginAndStartTime() {
    if (!isOutsideImage(startPosition[0], startPosition[1])) {
        return;
    }
    const Eigen::Vector2d position(state[0], state[2]);
    startPosition = isInsideImage(position[0], position[1])
                        ? intersectionWithImageBorder(startPosition[0], startPosition[1],
                                                      position[0], position[1])
                        : position;
    systemStartTime = time;
}

}  // namespace Veskar
