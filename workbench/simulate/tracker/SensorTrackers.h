// SPDX-License-Identifier: Apache-2.0
// Trackers of the sensors: from detections to reports.
#pragma once

#include "recording/Recording.h"
#include "simulate/tracker/PlanarTracker.h"

#include <map>
#include <optional>
#include <vector>

namespace Workbench {

/// An object as a detector finds it in one image.
struct VideoDetection {
    ImageBox box;   ///< position
    Labels labels;  ///< class and colours
};

/// A radar's detection.
struct RadarDetection {
    double range;                                      ///< slant distance, m
    double azimuth;                                    ///< degrees clockwise from forward
    std::optional<double> radialSpeed = std::nullopt;  ///< Doppler, m/s, positive away
};

/// The tracker of the video analytics: tracks the foot points of objects.
class VideoTracker {
public:
    /// @param parameters tuning in image units
    /// @param positionStd standard deviation of a detected point, image units
    VideoTracker(const TrackerParameters& parameters, double positionStd);

    /// @param time seconds
    /// @param detections detections of this frame
    /// @return all tracks, tentative and coasting ones too
    std::vector<Report> update(double time, const std::vector<VideoDetection>& detections);

    /// @return the underlying tracker
    PlanarTracker& planar() { return tracker_; }

    /// @return tuning for a surveillance camera
    static TrackerParameters usualParameters();

private:
    struct Appearance {
        std::int32_t id;       ///< id of the track in the last frame
        Eigen::Vector2d size;  ///< width and height of the box, smoothed
        Labels labels;
    };
    void observe(Appearance& appearance, const VideoDetection& detection) const;
    Appearance appearanceOf(const PlanarTrack& track,
                            const std::vector<VideoDetection>& detections) const;

    PlanarTracker tracker_;
    double positionStd_;
    std::map<std::int32_t, Appearance> appearances_;  ///< by the first id of a track
};

/// The tracker of the radar, in the radar's plane.
class RadarTracker {
public:
    /// @param parameters tuning in metres
    /// @param rangeStd standard deviation of a detected range, m
    /// @param azimuthStd standard deviation of a detected azimuth, degrees
    RadarTracker(const TrackerParameters& parameters, double rangeStd, double azimuthStd);

    /// @param time seconds
    /// @param detections detections of this frame
    /// @return all tracks, tentative and coasting ones too
    std::vector<Report> update(double time, const std::vector<RadarDetection>& detections);

    /// @return the underlying tracker
    PlanarTracker& planar() { return tracker_; }

    /// @return tuning for people and road traffic at 10 Hz
    static TrackerParameters usualParameters();

private:
    PlanarDetection pointOf(const RadarDetection& detection) const;

    PlanarTracker tracker_;
    double tangentialSpeedStd_;
    double rangeStd_;
    double azimuthStd_;
};

}  // namespace Workbench
