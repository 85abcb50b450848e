// SPDX-License-Identifier: Apache-2.0
// Lists of tracks as they come from Python.
#pragma once

#include <veskar/SystemTrack.h>

#include "Bindings.h"

#include <algorithm>
#include <memory>
#include <vector>

namespace Bindings {

/// Refuses None among tracks, on which the library would stop the process.
/// @return the same tracks
template <typename T>
const std::vector<std::shared_ptr<T>>& complete(const std::vector<std::shared_ptr<T>>& tracks) {
    if (std::find(tracks.begin(), tracks.end(), nullptr) != tracks.end()) {
        throw py::type_error("None among the tracks");
    }
    return tracks;
}

}  // namespace Bindings
