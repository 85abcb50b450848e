// SPDX-License-Identifier: Apache-2.0
// Finds objects that both sensors track, without relying on an accurate installation.
#pragma once

#include <veskar-host/Projection.h>
#include <veskar-host/RadarModel.h>

#include "check/MountingEstimate.h"
#include "recording/Recording.h"

#include <deque>
#include <map>
#include <optional>
#include <set>
#include <utility>
#include <vector>

namespace Workbench {

/// Collects samples of radar and video tracks that belong to one object for certain: no other track
/// of either sensor lies within a wide gate, so that false pairs are rare even with a wrong
/// installation.
///
/// Frames of the sensors may come in any order. Memory is bounded: by a window of time and a
/// maximum number of samples.
class TrackPairs {
public:
    /// @param header the installation as stated
    explicit TrackPairs(const RecordingHeader& header);

    /// @param frame the next frame
    void add(const SensorFrame& frame);

    /// @return the samples in order of time
    const std::vector<PairSample>& samples() const { return collected_; }
    /// @return numbers of tracks that video and radar have reported, and of pairs of them; counted
    ///         up to 10,000
    std::size_t videoTracks() const { return videoIds_.size(); }
    std::size_t radarTracks() const { return radarIds_.size(); }
    std::size_t pairs() const { return pairIds_.size(); }

private:
    /// A track at one time, relative to the camera: bearing from its viewing direction and
    /// depression [radians], distance on the ground [m].
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

    Projection projection_;
    Eigen::Matrix2d toCamera_;  ///< rotates x to the viewing direction, so that no bearing wraps
    RadarModel radar_;
    Sightings videoSightings_;
    Sightings radarSightings_;
    std::deque<double> pending_;
    double lastVideo_ = 0.0;
    double lastRadar_ = 0.0;
    double lastSample_ = -1e300;
    double interval_ = 0.2;
    std::vector<PairSample> collected_;
    std::set<std::int32_t> videoIds_;
    std::set<std::int32_t> radarIds_;
    std::set<Ids> pairIds_;
};

}  // namespace Workbench
