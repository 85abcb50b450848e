// SPDX-License-Identifier: Apache-2.0
// A system track with its position on the ground.
#pragma once

#include <veskar-host/ImageBox.h>
#include <veskar-host/Labels.h>
#include <veskar/GeoLocation.h>
#include <veskar/Track.h>

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include <Eigen/Core>

namespace Veskar::Host {

/// A sensor track that is fused into a system track.
struct Support {
    Source source;    ///< VideoObject or Radar
    std::int32_t id;  ///< the sensor's track id
    double coasting;  ///< seconds since the sensor last saw the object
};

/// Where a system track is on the ground: device frame, x forward, y to the left, metres.
struct GroundPosition {
    Eigen::Vector2d position;            ///< m
    Eigen::Matrix2d covariance;          ///< of `position`, m^2
    Eigen::Vector2d velocity;            ///< m/s
    Eigen::Matrix2d velocityCovariance;  ///< of `velocity`, (m/s)^2
};

/// A system track, with its position on the ground and its classification.
struct FusedTrack {
    std::int32_t id = 0;                               ///< system track id
    bool confirmed = false;                            ///< by track management
    double probability = 0.0;                          ///< that the object exists
    Eigen::Vector2d image{0.0, 0.0};                   ///< u, v
    Eigen::Vector2d imageRate{0.0, 0.0};               ///< 1/s
    double range = 0.0;                                ///< from the camera, at the frame's time, m
    double rangeRate = 0.0;                            ///< m/s
    std::optional<GroundPosition> ground;              ///< nothing: not on the ground
    std::optional<double> speed;                       ///< m/s
    std::optional<double> direction;                   ///< degrees clockwise from forward
    Labels labels;                                     ///< class and colours, probabilities 0..1
    ImageBox box;                                      ///< in the image
    std::optional<::Dbus::GeoLocation::Position> geo;  ///< from the site, or the device's service
    double age = 0.0;                                  ///< s
    std::vector<Support> sensors;                      ///< what feeds it
    std::optional<std::set<std::string>> tags;         ///< detection priority, on request
};

}  // namespace Veskar::Host
