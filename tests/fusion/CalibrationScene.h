// SPDX-License-Identifier: Apache-2.0
// System tracks that radar and video see well enough for calibration.
#pragma once

#include <veskar/Config.h>
#include <veskar/SystemTrack.h>

#include "support/TrackFactory.h"

#include <memory>

namespace VeskarTest {

constexpr int calibrationVideoId = 7;

inline Veskar::Config makeCalibrationConfig() {
    Veskar::Config config;
    config.module.autocalibrationAgeLimit = 1.0;
    config.module.autocalibrationVideoCoastingLimit = 0.1;
    config.module.autocalibrationEdgeLimit = 0.99;
    config.module.autocalibrationVideoNearLimit = 0.25;
    config.module.autocalibrationAspectLimits = {{"human", {0.3, 0.65}}};
    return config;
}

inline Veskar::Track& videoOf(Veskar::SystemTrack& track) {
    return *track.sensorTracks[Veskar::Source::VideoObject].begin()->second;
}

inline Veskar::Track& radarOf(Veskar::SystemTrack& track) {
    return *track.sensorTracks[Veskar::Source::Radar].begin()->second;
}

/// A human in the middle of the image, 2 s old, that meets every condition.
inline std::shared_ptr<Veskar::SystemTrack> makeCalibrationTrack(int radarId = 41) {
    Report report;
    report.source = Veskar::Source::VideoObject;
    report.id = calibrationVideoId;
    report.className = "human";
    const auto video = makeTrack(report);
    video->boundingBox = Eigen::Vector4d(-0.045, 0.09, -0.16, 0.32);
    auto track = makeSystemTrack(video);
    track->sensorTracks[Veskar::Source::Radar][radarId] = makeTrack(Veskar::Source::Radar, radarId);
    track->systemStartTime = track->time - 2.0;
    return track;
}

}  // namespace VeskarTest
