// SPDX-License-Identifier: Apache-2.0
// The fused estimate of a system track: fusion, defusion and prediction.
#include <veskar/ImagePlane.h>
#include <veskar/SystemTrack.h>

#include "track/Dereference.h"
#include "track/EstimateChange.h"
#include "track/TakeReport.h"

#include <utility>

namespace Veskar {

void SystemTrack::updateState(std::shared_ptr<Track> track) {
    const Track& report = dereference(track);
    const SensorTracks& held = sensorTracks[report.source];
    const auto previous = held.find(report.id);
    const Track* replaced = previous == held.end() ? nullptr : &dereference(previous->second);
    takeReport(*this, std::move(track), estimateAfter({this, &report, replaced}));
}

void takeReport(SystemTrack& system, std::shared_ptr<Track> track, const FusedEstimate& fused) {
    Track& report = dereference(track);
    const auto [entry, isNew] =
        system.sensorTracks[report.source].try_emplace(report.id, std::move(track));
    if (!isNew) {
        report.startTime = dereference(entry->second).startTime;
        entry->second = std::move(track);
    }
    system.state = fused.x;
    system.covariance = fused.P;

    // The video box has priority over the radar box.
    if (report.source == Source::VideoObject ||
        (report.source == Source::Radar && !system.hasTracks(Source::VideoObject))) {
        system.boundingBox = report.boundingBox;
    }
    system.updateOriginAndStartTime();
}

void SystemTrack::applyDefusion(const Track& track) {
    const std::size_t supports =
        sensorTracks[Source::VideoObject].size() + sensorTracks[Source::Radar].size();
    if (supports < 2) {
        return;
    }
    const FusedEstimate fused = estimateAfter({this, nullptr, &track});
    state = fused.x;
    covariance = fused.P;
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
