// SPDX-License-Identifier: Apache-2.0
// All metrics of one tracker over one part of the scene.
#pragma once

#include "evaluate/metrics/Accuracy.h"
#include "evaluate/metrics/ClearMot.h"
#include "evaluate/metrics/ConfirmationDelay.h"
#include "evaluate/metrics/Hota.h"
#include "evaluate/metrics/Identity.h"
#include "evaluate/metrics/PictureQuality.h"
#include "evaluate/metrics/SetDistance.h"

#include <map>
#include <string>
#include <vector>

namespace Workbench {

/// One figure of a scorecard.
struct Figure {
    const char* key;       ///< name for machines, as the literature or TrackEval spells it
    const char* label;     ///< name and unit for people
    int decimals;          ///< for people
    bool needsAllObjects;  ///< means nothing when the truth leaves objects out
    bool isEssential;      ///< worth a line in a short table
    double value;
};

/// Collects the metrics. Their parameters follow from one distance: it is the cutoff of GOSPA and
/// OSPA and the distance of similarity zero; tracks count as matched within half of it.
class Scorecard {
public:
    /// @param cutoff m
    /// @param observer position of the sensors on the ground, m
    Scorecard(double cutoff, const Eigen::Vector2d& observer);

    void add(const Instant& instant);

    /// @return all figures, always the same ones in the same order
    std::vector<Figure> figures() const;
    /// @return see ClearMot::matches
    const std::map<int, int>& matches() const { return clearMot_.matches(); }

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
