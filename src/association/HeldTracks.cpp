// SPDX-License-Identifier: Apache-2.0
#include "association/HeldTracks.h"

#include "track/Dereference.h"

#include <algorithm>

namespace Veskar {

void HeldTracks::start(const std::vector<std::shared_ptr<SystemTrack>>& systemTracks) {
    systems = &systemTracks;
    collected = false;
}

bool HeldTracks::holds(const Track& track) {
    if (!collected || track.source != source) {
        collect(track.source);
    }
    if (std::binary_search(heldIds.begin(), heldIds.end(), track.id)) {
        return true;
    }
    if (unknowing != nullptr) {
        unknowing->getSensorTracks(source);  // throws
    }
    return false;
}

void HeldTracks::collect(Source newSource) {
    collected = true;
    source = newSource;
    unknowing = nullptr;
    heldIds.clear();
    for (const auto& pointer : *systems) {
        const SystemTrack& system = dereference(pointer);
        const auto tracks = system.sensorTracks.find(source);
        if (tracks == system.sensorTracks.end()) {
            unknowing = &system;
            break;
        }
        for (const auto& entry : tracks->second) {
            heldIds.push_back(entry.first);
        }
    }
    std::sort(heldIds.begin(), heldIds.end());
}

}  // namespace Veskar
