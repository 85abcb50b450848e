// SPDX-License-Identifier: Apache-2.0
// The SIAP metrics completeness, ambiguity and spuriousness.
#pragma once

#include "evaluate/metrics/Instant.h"
#include "evaluate/metrics/NearPairs.h"

namespace Workbench {

/// Metrics of the Single Integrated Air Picture (Votruba et al.: "Single Integrated Air Picture
/// (SIAP) Metrics Implementation", 2001). In contrast to the one-to-one metrics, every track
/// belongs to the nearest true object within a radius, so that two tracks of one object count as
/// duplicates.
class PictureQuality {
public:
    /// @param reach largest distance of a track from its object, m
    explicit PictureQuality(double reach) : radius_(reach) {}

    /// @param near pairs of @p instant, at least those within the radius
    void add(const Instant& instant, const NearPairs& near);

    /// Values without anything to average are NaN.
    struct Result {
        double completeness = 0.0;         ///< share of the true objects that have a track
        double duplicatesPerObject = 0.0;  ///< further tracks per object that has one
        double spuriousness = 0.0;         ///< share of the tracks without an object
    };
    Result result() const;

private:
    double radius_;
    int truths_ = 0;
    int tracks_ = 0;
    int trackedTruths_ = 0;
    int assignedTracks_ = 0;
};

}  // namespace Workbench
