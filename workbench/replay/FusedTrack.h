// SPDX-License-Identifier: Apache-2.0
// What a host reads from a system track.
#pragma once

#include <veskar/GeoLocation.h>
#include <veskar/SystemTrack.h>

#include "adapter/HostAdapter.h"
#include "recording/Recording.h"

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include <Eigen/Core>

namespace Workbench {

/// A sensor track behind a system track.
struct Support {
    Veskar::Source source;  ///< VideoObject or Radar
    std::int32_t id;        ///< the sensor's track id
    double coasting;        ///< seconds since the sensor last saw the object
};

/// Where a system track is on the ground: device frame, x forward, y to the left, metres.
struct GroundPosition {
    Eigen::Vector2d position;            ///< m
    Eigen::Matrix2d covariance;          ///< of `position`, m^2
    Eigen::Vector2d velocity;            ///< m/s
    Eigen::Matrix2d velocityCovariance;  ///< of `velocity`, (m/s)^2
};

/// A system track in the terms of a user.
struct FusedTrack {
    std::int32_t id = 0;                             ///< of the system track
    bool confirmed = false;                          ///< by track management
    double probability = 0.0;                        ///< that the object exists
    Eigen::Vector2d image{0.0, 0.0};                 ///< u, v
    Eigen::Vector2d imageRate{0.0, 0.0};             ///< 1/s
    double range = 0.0;                              ///< slant, from the camera, moved to now, m
    double rangeRate = 0.0;                          ///< m/s
    std::optional<GroundPosition> ground;            ///< when the lens reaches the ground there
    std::optional<double> speed;                     ///< m/s
    std::optional<double> direction;                 ///< degrees clockwise from forward
    Labels labels;                                   ///< class and colours, probabilities 0..1
    ImageBox box;                                    ///< in the image
    std::optional<Dbus::GeoLocation::Position> geo;  ///< when the site is known
    double age = 0.0;                                ///< s
    std::vector<Support> sensors;                    ///< what feeds it
    std::optional<std::set<std::string>> tags;       ///< detection priority, on request
};

/// The system tracks after a frame.
struct FusedFrame {
    double time = 0.0;                            ///< of the estimates, s
    double received = 0.0;                        ///< the host's clock, s
    Veskar::Source source = Veskar::VideoObject;  ///< whose frame it was
    std::vector<FusedTrack> tracks;               ///< oldest first
};

/// What the library says of a system track: all that has to be read before the fusion goes on.
struct TrackReading {
    FusedTrack track;                          ///< without its place on the ground
    Eigen::Matrix2d placeCovariance;           ///< of (u, range)
    Eigen::Matrix2d rateCovariance;            ///< of (u', range')
    std::optional<Eigen::Vector2d> direction;  ///< of motion on the ground, as a sensor said
};

/// What the library says after a frame.
struct FrameReading {
    double time = 0.0;                            ///< as FusedFrame
    double received = 0.0;                        ///< as FusedFrame
    Veskar::Source source = Veskar::VideoObject;  ///< as FusedFrame
    std::vector<TrackReading> tracks;             ///< oldest first
};

/// Reads a system track.
///
/// The fusion does not move the range between reports; it is moved here by the range rate over the
/// age of the radar's report (of the camera's, without radar).
///
/// @param track a system track
/// @return what the library says of it
TrackReading readTrack(const Veskar::SystemTrack& track);

/// Finds out where a track is on the ground and how it moves there.
/// @param reading what the library said; moved from
/// @param adapter the adapter that made its sensor tracks
/// @return what a user wants to know
FusedTrack placed(TrackReading&& reading, const HostAdapter& adapter);

/// As above, for all tracks.
/// @param reading what the library said after a frame; moved from
/// @param adapter the adapter that made the sensor tracks
/// @return what a user wants to know
FusedFrame placed(FrameReading&& reading, const HostAdapter& adapter);

}  // namespace Workbench
