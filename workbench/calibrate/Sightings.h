// SPDX-License-Identifier: Apache-2.0
// The tracks of a recording as both sensors report them.
#pragma once

#include "recording/Recording.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include <Eigen/Core>

namespace Workbench {

/// A radar track at one time.
struct RadarSighting {
    double time = 0.0;     ///< s
    double range = 0.0;    ///< slant, m
    double azimuth = 0.0;  ///< radians to the left of the radar's forward direction
};

/// A whole box at one time.
struct VideoSighting {
    double time = 0.0;  ///< s
    /// Middle and bottom of the box, its width and height, image units.
    Eigen::Vector4d box = Eigen::Vector4d::Zero();
};

/// The uninterrupted sightings of one track of the radar.
struct RadarHistory {
    std::vector<RadarSighting> sightings;  ///< by time
};

/// The uninterrupted sightings of one track of video.
struct VideoHistory {
    std::vector<VideoSighting> sightings;   ///< by time
    std::map<std::string, double> classes;  ///< sum of the probabilities of each class

    /// @return the most probable class
    const std::string& className() const;
    /// @param time s
    /// @return the box then; nothing outside the history
    std::optional<Eigen::Vector4d> at(double time) const;
};

/// Collects the confirmed and currently seen tracks of a recording.
class Sightings {
public:
    /// @param frame the next frame
    void add(const SensorFrame& frame);
    /// @param time earlier sightings are forgotten, and histories without any other, s
    void forgetBefore(double time);

    const std::vector<RadarHistory>& radar() const { return radar_; }
    const std::vector<VideoHistory>& video() const { return video_; }

private:
    using Living = std::map<std::int32_t, std::size_t>;  ///< histories by the track's id

    void add(double time, const RadarReport& report);
    void add(double time, const VideoReport& report);

    std::vector<RadarHistory> radar_;
    std::vector<VideoHistory> video_;
    Living livingRadar_;
    Living livingVideo_;
};

}  // namespace Workbench
