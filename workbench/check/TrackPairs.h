// SPDX-License-Identifier: Apache-2.0
// Finds objects that both sensors track, without trusting the stated installation much.
#pragma once

#include "adapter/RadarModel.h"
#include "check/MountingEstimate.h"
#include "geometry/Projection.h"
#include "recording/Recording.h"

#include <deque>
#include <map>
#include <optional>
#include <set>
#include <utility>
#include <vector>

namespace Workbench {

/// Collects samples of radar and video tracks that can only be one object: nothing else of either
/// sensor lies within a wide gate, so that wrong pairs are rare even with a bad installation.
///
/// Frames come in any order of the sensors; memory is bounded by a window of time and a number of
/// samples.
class TrackPairs {
public:
    /// @param header the installation as stated
    explicit TrackPairs(const RecordingHeader& header);

    /// @param frame the next frame
    void add(const SensorFrame& frame);

    /// @return the samples in order of time
    const std::vector<PairSample>& samples() const { return collected; }
    /// @return how many tracks video and radar have reported, and how many pairs of them were seen;
    ///         counted no further than 10,000
    std::size_t videoTracks() const { return videoIds.size(); }
    std::size_t radarTracks() const { return radarIds.size(); }
    std::size_t pairs() const { return pairIds.size(); }

private:
    /// A track at one time, seen from the camera: bearing from where it looks, depression
    /// [radians], distance on the ground [m].
    using View = Eigen::Vector3d;
    struct Sighting {
        double time;
        View view;
    };
    using Sightings = std::map<int, std::deque<Sighting>>;

    std::optional<View> viewOf(const Report& report) const;
    View viewOfGround(const Eigen::Vector2d& ground) const;
    void pairAt(double time);
    void keep(const PairSample& sample);

    using Ids = std::pair<std::int32_t, std::int32_t>;

    Projection projection;
    Eigen::Matrix2d toCamera;  ///< turns x to where the camera looks, so that no bearing wraps
    RadarModel radar;
    Sightings videoSightings;
    Sightings radarSightings;
    std::deque<double> pending;
    double lastVideo = 0.0;
    double lastRadar = 0.0;
    double lastSample = -1e300;
    double interval = 0.2;
    std::vector<PairSample> collected;
    std::set<std::int32_t> videoIds;
    std::set<std::int32_t> radarIds;
    std::set<Ids> pairIds;
};

}  // namespace Workbench
