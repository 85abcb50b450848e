// SPDX-License-Identifier: Apache-2.0
// What FusionModule::cycle remembers of the frames that have arrived.
#pragma once

#include <veskar/FusionModule.h>

#include "fusion/LogLimit.h"
#include "fusion/TimeBase.h"

#include <map>
#include <memory>
#include <optional>
#include <vector>

namespace Veskar {

struct FusionModule::Arrivals {
    /// A frame that waits for the next one to tell what it is worth.
    struct Frame {
        Source source;
        double timestamp;  ///< seconds
        std::vector<std::shared_ptr<Track>> tracks;
    };

    TimeBase timeBase;
    std::optional<Frame> heldBack;
    std::map<Source, double> lastTimestamps;  ///< of the last accepted frame of each source

    LogLimit zeroGain;
    LogLimit olderFrame;
    LogLimit radarWaits;
    LogLimit radarDropped;
};

}  // namespace Veskar
