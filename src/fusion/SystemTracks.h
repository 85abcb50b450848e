// SPDX-License-Identifier: Apache-2.0
// What several steps of the fusion do with system tracks and their list.
#pragma once

#include <veskar/SystemTrack.h>

#include "track/Dereference.h"
#include "track/EstimateChange.h"

#include <algorithm>
#include <memory>
#include <vector>

namespace Veskar {

/// Takes over the class and the colours of a report.
void takeLabels(SystemTrack& systemTrack, const Track& report);

/// Fuses a report into the estimate, weighs it in the track probability and takes its labels.
void fuseReport(SystemTrack& systemTrack, const std::shared_ptr<Track>& report);

/// The same with an estimate that has been computed already, see takeReport.
void fuseReport(SystemTrack& systemTrack, const std::shared_ptr<Track>& report,
                const FusedEstimate& fused);

/// Deletes system tracks; the others keep their order.
template <typename Predicate>
void eraseIf(std::vector<std::shared_ptr<SystemTrack>>& systemTracks, Predicate isDeleted) {
    const auto isDeletedTrack = [&isDeleted](const std::shared_ptr<SystemTrack>& systemTrack) {
        return isDeleted(dereference(systemTrack));
    };
    systemTracks.erase(std::remove_if(systemTracks.begin(), systemTracks.end(), isDeletedTrack),
                       systemTracks.end());
}

}  // namespace Veskar
