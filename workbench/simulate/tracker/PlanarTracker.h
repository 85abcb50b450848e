// SPDX-License-Identifier: Apache-2.0
// The tracker within a simulated or emulated sensor: from detections to tracks.
#pragma once

#include "simulate/tracker/PlanarFilter.h"

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
    /// Measured velocity (a radar's Doppler), used to initialise a track.
    struct Velocity {
        Eigen::Vector2d value;       ///< in the plane, per second
        Eigen::Matrix2d covariance;  ///< of `value`; large where nothing was measured
    };
    std::optional<Velocity> velocity;
};

/// Tuning of a tracker.
struct TrackerParameters {
    double accelerationStd = 1.0;     ///< process noise, plane units per s^2
    double initialVelocityStd = 3.0;  ///< initial uncertainty, plane units per s
    double squaredGate = 11.8;        ///< on the squared Mahalanobis distance (99.7 % of 2 dof)
    int confirmationHits = 3;         ///< detections that confirm a track
    double tentativeCoasting = 0.25;  ///< s without detection that end a tentative track
    double confirmedCoasting = 1.0;   ///< s without detection that end a confirmed one
};

/// A track of the tracker.
struct PlanarTrack {
    std::int32_t id;                       ///< unique over the life of the tracker
    std::int32_t firstId;                  ///< the id at its start; stays when `id` changes
    PlanarFilter filter;                   ///< the estimate
    double born;                           ///< time of the first detection, s
    double seen;                           ///< time of the last detection, s
    int hits;                              ///< number of detections
    std::optional<std::size_t> detection;  ///< index of its detection in this frame, if any
};

/// Nearest-neighbour tracker with one optimal assignment per frame, computed by the library's
/// assignment solver.
class PlanarTracker {
public:
    /// @param parameters tuning
    explicit PlanarTracker(const TrackerParameters& parameters) : tuning_(parameters) {}

    /// Predicts the tracks to a time, assigns at most one detection to each, starts tracks from
    /// unassigned detections and deletes tracks without detections for too long.
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
    /// Changes the id of a track, as real trackers do after losing an object shortly.
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
