// SPDX-License-Identifier: Apache-2.0
#include "association/HeldTracks.h"

#include "track/Dereference.h"

#include <algorithm>

namespace Veskar {

void HeldTracks::start(const std::vector<std::shared_ptr<SystemTrack>>& systemTracks) {
    systems_ = &systemTracks;
    collected_ = false;
}

bool HeldTracks::holds(const Track& track) {
    if (!collected_ || track.source != source_) {
        collect(track.source);
    }
    if (std::binary_search(heldIds_.begin(), heldIds_.end(), track.id)) {
        return true;
    }
    if (unknowing_ != nullptr) {
        unknowing_->getSensorTracks(source_);  // throws
    }
    return false;
}

void HeldTracks::collect(Source source) {
    collected_ = true;
    source_ = source;
    unknowing_ = nullptr;
    heldIds_.clear();
    for (const auto& pointer : *systems_) {
        const SystemTrack& system = dereference(pointer);
        const auto tracks = system.sensorTracks.find(source_);
        if (tracks == system.sensorTracks.end()) {
            unknowing_ = &system;
            break;
        }
        for (const auto& entry : tracks->second) {
            heldIds_.push_back(entry.first);
        }
    }
    std::sort(heldIds_.begin(), heldIds_.end());
}

}  // namespace Veskar
