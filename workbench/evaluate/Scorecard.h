// SPDX-License-Identifier: Apache-2.0
// All metrics of one tracker over one part of the scene.
#pragma once

#include "evaluate/JudgedScene.h"
#include "evaluate/metrics/Accuracy.h"
#include "evaluate/metrics/ClearMot.h"
#include "evaluate/metrics/ConfirmationDelay.h"
#include "evaluate/metrics/Hota.h"
#include "evaluate/metrics/Identity.h"
#include "evaluate/metrics/PictureQuality.h"
#include "evaluate/metrics/SetDistance.h"

#include <utility>
#include <vector>

namespace Workbench {

/// One metric of a scorecard.
struct Figure {
    const char* key;       ///< identifier as in the literature or TrackEval
    const char* label;     ///< name and unit for users
    int decimals;          ///< digits behind the point for users
    bool needsAllObjects;  ///< meaningless when the truth is incomplete
    bool isEssential;      ///< shown in short tables
    double value;
};

/// Collects the metrics. All use one distance: it is the cutoff of GOSPA and OSPA and the distance
/// of zero similarity; tracks match within half of it.
class Scorecard {
public:
    /// @param cutoff m
    /// @param observer position of the sensors on the ground, m
    Scorecard(double cutoff, const Eigen::Vector2d& observer);

    /// First pass over the instants of the part.
    void add(const JudgedScene& scene);
    /// Begins the second pass.
    void beginAgain();
    /// The same calls as of add; positions, numbers and matches suffice.
    void addAgain(const JudgedScene& scene);

    /// @return all metrics after both passes, always in the same order
    std::vector<Figure> figures() const;
    /// @return see ClearMot::matches
    const std::vector<std::pair<int, int>>& matches() const { return clearMot_.matches(); }

private:
    SetDistanceParameters setDistance_;
    GospaMean gospaMean_;
    OspaMean ospaMean_;
    ClearMot clearMot_;
    Identity identity_;
    Hota hota_;
    PictureQuality quality_;
    Accuracy accuracy_;
    Consistency consistency_;
    ConfirmationDelay delay_;
};

}  // namespace Workbench
