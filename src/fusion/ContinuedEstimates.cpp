// SPDX-License-Identifier: Apache-2.0
#include "fusion/ContinuedEstimates.h"

#include "track/Dereference.h"

#include <algorithm>

namespace Veskar {

void ContinuedEstimates::assign(const std::vector<std::shared_ptr<SystemTrack>>& systemTracks,
                                Source source, const ReportIndex& reports) {
    changes_.clear();
    asked_ = 0;
    for (const std::shared_ptr<SystemTrack>& pointer : systemTracks) {
        const SystemTrack& system = dereference(pointer);
        const auto held = system.sensorTracks.find(source);
        if (held == system.sensorTracks.end() || !covers(held->second)) {
            continue;
        }
        const auto& [id, previous] = *held->second.begin();
        if (const std::shared_ptr<Track>* report = reports.find(id)) {
            changes_.push_back({&system, &dereference(*report), &dereference(previous)});
        }
    }
}

const FusedEstimate& ContinuedEstimates::next() {
    const std::size_t lane = asked_ % computed_.size();
    if (lane == 0) {
        const std::size_t partner = std::min(asked_ + 1, changes_.size() - 1);
        computed_ = estimatesAfter({changes_[asked_], changes_[partner]});
    }
    ++asked_;
    return computed_[lane];
}

}  // namespace Veskar
