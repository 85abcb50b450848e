// SPDX-License-Identifier: Apache-2.0
// What happens to tracks: appearance, confirmation, priority tags, disappearance.
#pragma once

#include <veskar-host/FusedFrame.h>

#include "live/onvif/UtcTime.h"

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace Veskar::Live {

/// Tells how the tracks of a frame differ from those of the one before.
class TrackEvents {
public:
    /// @param frame the tracks that are there
    /// @param utc time of the frame
    /// @return an object of JSON for each event, without line end:
    ///         {"event":"appeared","time":"2026-05-01T12:00:00.250000Z","id":7,"class":"car",
    ///         "confirmed":false}; with the "tags" of the detection priority where they are known.
    ///         The events are "appeared", "confirmed", "tagged" (the tags have changed) and
    ///         "disappeared".
    std::vector<std::string> update(const Host::FusedFrame& frame, UtcTime utc);

private:
    struct State {
        std::string className;
        bool isConfirmed = false;
        std::set<std::string> tags;
    };

    std::map<std::int32_t, State> known_;
};

}  // namespace Veskar::Live
