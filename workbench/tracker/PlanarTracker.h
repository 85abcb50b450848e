// SPDX-License-Identifier: Apache-2.0
// The tracker inside a sensor: from detections without identity to tracks.
#pragma once

#include "tracker/PlanarFilter.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

#include <Eigen/Core>

namespace Workbench {

/// A detection in the tracker's plane.
struct PlanarDetection {
    Eigen::Vector2d position;    ///< in the plane
    Eigen::Matrix2d covariance;  ///< of `position`
    /// What the sensor measured of the velocity (a radar's Doppler), to start a track with.
    struct Velocity {
        Eigen::Vector2d value;       ///< in the plane, per second
        Eigen::Matrix2d covariance;  ///< of `value`; wide where nothing was measured
    };
    std::optional<Velocity> velocity;
};

/// What a tracker is tuned by.
struct TrackerParameters {
    double accelerationStd = 1.0;     ///< process noise, plane units per s^2
    double initialVelocityStd = 3.0;  ///< before anything is known, plane units per s
    double squaredGate = 11.8;        ///< on the squared Mahalanobis distance (99.7 % of 2 dof)
    int confirmationHits = 3;         ///< detections that confirm a track
    double tentativeCoasting = 0.25;  ///< s without detection that end a tentative track
    double confirmedCoasting = 1.0;   ///< s without detection that end a confirmed one
};

/// A track of the tracker.
struct PlanarTrack {
    std::int32_t id;                       ///< unique over the life of the tracker
    std::int32_t firstId;                  ///< the id it began with; stays when `id` changes
    PlanarFilter filter;                   ///< the estimate
    double born;                           ///< time of the first detection, s
    double seen;                           ///< time of the last detection, s
    int hits;                              ///< detections so far
    std::optional<std::size_t> detection;  ///< index of this frame's detection, if it had one
};

/// Nearest-neighbour tracking with one optimal assignment per frame, solved by the library's
/// assignment solver.
class PlanarTracker {
public:
    /// @param parameters tuning
    explicit PlanarTracker(const TrackerParameters& parameters) : tuning_(parameters) {}

    /// Brings the tracks to a time, gives each at most one detection, starts tracks from what is
    /// left over and ends those that were not seen for too long.
    ///
    /// @param time seconds, not before the last call
    /// @param detections this frame's detections
    void update(double time, const std::vector<PlanarDetection>& detections);

    /// @return live tracks, oldest first
    const std::vector<PlanarTrack>& tracks() const { return list_; }
    /// @param track one of the tracks
    /// @return whether enough detections have confirmed it
    bool isConfirmed(const PlanarTrack& track) const {
        return track.hits >= tuning_.confirmationHits;
    }
    /// Gives a track a new id, as a real tracker does when it loses and finds an object at once.
    /// @param index place in tracks()
    void renumber(std::size_t index) { list_[index].id = nextId_++; }

private:
    std::vector<std::pair<std::size_t, std::size_t>> assign(
        const std::vector<PlanarDetection>& detections) const;
    bool isLost(const PlanarTrack& track, double time) const;
    PlanarFilter start(const PlanarDetection& detection) const;

    TrackerParameters tuning_;
    std::vector<PlanarTrack> list_;
    double now_ = 0.0;
    std::int32_t nextId_ = 1;
};

}  // namespace Workbench
