// SPDX-License-Identifier: Apache-2.0
// Which objects of a described stream are gone.
#pragma once

#include "live/onvif/SceneDescription.h"

#include <cstdint>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace Veskar::Live {

/// @param id of an object
/// @return its name in a scene
inline ObjectName nameOf(std::int32_t id) {
    return {std::to_string(id), ""};
}

/// Remembers the objects of the last frame that was described.
class Disappearances {
public:
    /// @param present ids of the objects of a frame
    /// @return the names of those that were in the frame before and are not in this one
    std::vector<ObjectName> update(std::set<std::int32_t> present) {
        std::vector<ObjectName> gone;
        for (const std::int32_t id : described_) {
            if (present.count(id) == 0) {
                gone.push_back(nameOf(id));
            }
        }
        described_ = std::move(present);
        return gone;
    }

    /// @return whether that had no objects
    bool isEmpty() const { return described_.empty(); }

private:
    std::set<std::int32_t> described_;
};

}  // namespace Veskar::Live
