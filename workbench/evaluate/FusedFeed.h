// SPDX-License-Identifier: Apache-2.0
// Feeds fused tracks from a file in step with the recording that they were made from.
#pragma once

#include "recording/Recording.h"
#include "replay/FusedReader.h"

#include <functional>
#include <optional>

namespace Workbench {

/// @param fused fused tracks of a recording
/// @param recording header of the recording
/// @return the header of the recording with the installation that the fusion used
RecordingHeader headerOfRun(const FusedReader& fused, RecordingHeader recording);

/// Passes fused frames on at the time of their arrival, so that tracks from a file are evaluated
/// like those of a running fusion.
class FusedFeed {
public:
    /// Receives the fused frames.
    using Sink = std::function<void(const FusedFrame&)>;

    /// @param source the file; must outlive this
    /// @param sink receives its frames
    FusedFeed(FusedReader& source, Sink sink)
        : file_(source), sink_(std::move(sink)), next_(file_.next()) {}

    /// Passes on the fused frames that a host has at a line of the recording: at a sensor frame
    /// including the one made from it, at a truth line those that arrived before.
    /// @param line the lines in the order of the recording
    /// @throw InputError the fault of the file
    void follow(const RecordingLine& line);
    /// Passes on the next frame, whenever it arrived.
    /// @return false when there is none
    /// @throw InputError the fault of the file
    bool handOne();

private:
    FusedReader& file_;
    Sink sink_;
    std::optional<FusedFrame> next_;
};

}  // namespace Workbench
