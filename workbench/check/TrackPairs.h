// SPDX-License-Identifier: Apache-2.0
// Finds objects that both sensors track, without trusting the stated installation much.
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
    const std::vector<PairSample>& samples() const { return collected_; }
    /// @return how many tracks video and radar have reported, and how many pairs of them were seen;
    ///         counted no further than 10,000
    std::size_t videoTracks() const { return videoIds_.size(); }
    std::size_t radarTracks() const { return radarIds_.size(); }
    std::size_t pairs() const { return pairIds_.size(); }

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

    Projection projection_;
    Eigen::Matrix2d toCamera_;  ///< turns x to where the camera looks, so that no bearing wraps
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
