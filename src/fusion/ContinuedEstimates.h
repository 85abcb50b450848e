// SPDX-License-Identifier: Apache-2.0
// The next estimates of system tracks whose sensor track reports again.
#pragma once

#include <veskar/SystemTrack.h>

#include "arithmetic/Lanes.h"
#include "fusion/ReportIndex.h"
#include "track/EstimateChange.h"

#include <array>
#include <cstddef>
#include <memory>
#include <vector>

namespace Veskar {

/// Computes the estimates of a frame two by two, which costs little more than one by one at a time.
/// Keeps its memory from frame to frame.
class ContinuedEstimates {
public:
    /// @param held the tracks of the frame's source that a system track holds
    /// @return whether the estimate is computed here: with several tracks each starts from that of
    ///         the one before
    static bool covers(const SystemTrack::SensorTracks& held) { return held.size() == 1; }

    /// Finds the system tracks with a report, whose estimates next answers in their order. None of
    /// the tracks may change its estimate until that of its system track has been asked for.
    ///
    /// @param systemTracks the system tracks
    /// @param source source of the frame
    /// @param reports of the frame
    void assign(const std::vector<std::shared_ptr<SystemTrack>>& systemTracks, Source source,
                const ReportIndex& reports);

    /// @return the estimate of the next of those system tracks after its report
    const FusedEstimate& next();

private:
    std::vector<EstimateChange> changes_;
    std::size_t asked_ = 0;
    std::array<FusedEstimate, laneCount> computed_;
};

}  // namespace Veskar
