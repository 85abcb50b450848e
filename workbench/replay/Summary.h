// SPDX-License-Identifier: Apache-2.0
// Summarises a replay for users.
#pragma once

#include <veskar-host/FusedFrame.h>
#include <veskar-host/FusionPipeline.h>

#include "HostLibrary.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>

namespace Workbench {

/// Collects one row per system track. Memory grows with the number of confirmed system tracks.
class Summary {
public:
    /// @param frame the tracks after a frame
    void add(const FusedFrame& frame);

    /// @param counts statistics of the replay
    /// @return totals and a table of the confirmed system tracks, with line ends
    std::string text(const FusionPipeline::Counts& counts) const;

private:
    struct Life {
        double from = 0.0;
        double to = 0.0;
        std::optional<double> confirmed;
        std::string className;
        double speedSum = 0.0;
        double distance = 0.0;  ///< from the device, at the end, m
        std::uint64_t frames = 0;
        std::uint64_t radarFrames = 0;  ///< with a radar track
        std::uint64_t videoFrames = 0;  ///< with a video track
    };
    std::string row(std::int32_t id, const Life& life) const;

    std::map<std::int32_t, Life> lives_;
    std::uint64_t outputFrames_ = 0;
    std::uint64_t systemTracks_ = 0;  ///< all, including unconfirmed ones
    double begin_ = 0.0;
    double end_ = 0.0;
    std::int32_t lastId_ = 0;
};

}  // namespace Workbench
