// SPDX-License-Identifier: Apache-2.0
// The SIAP figures: how complete the picture is, how ambiguous and how spurious.
#pragma once

#include "evaluate/metrics/Instant.h"

namespace Workbench {

/// Figures of the Single Integrated Air Picture (Votruba et al.: "Single Integrated Air Picture
/// (SIAP) Metrics Implementation", 2001). Unlike in the one-to-one metrics every track belongs to
/// the nearest true object within a radius, so that two tracks on one object show as duplicates.
class PictureQuality {
public:
    /// @param reach m, how near a track must be to belong to an object
    explicit PictureQuality(double reach) : radius_(reach) {}

    void add(const Instant& instant);

    /// Not a number where there is nothing to average.
    struct Result {
        double completeness = 0.0;         ///< share of the true objects that have a track
        double duplicatesPerObject = 0.0;  ///< tracks beyond the first per object that has one
        double spuriousness = 0.0;         ///< share of the tracks that belong to no object
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
