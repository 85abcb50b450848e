// SPDX-License-Identifier: Apache-2.0
// Fused tracks from a file, in step with the recording that they were made from.
#pragma once

#include "recording/Recording.h"
#include "replay/FusedReader.h"

#include <functional>
#include <optional>

namespace Workbench {

/// @param fused what a fusion made of a recording
/// @param recording header of the recording
/// @return the header of the recording with the installation that the fusion knew
RecordingHeader headerOfRun(const FusedReader& fused, RecordingHeader recording);

/// Hands fused frames out when a host would have had them, so that tracks from a file are judged as
/// those of a running fusion are.
class FusedFeed {
public:
    /// Receives the fused frames.
    using Sink = std::function<void(const FusedFrame&)>;

    /// @param source the file; must outlive this
    /// @param sink receives its frames
    FusedFeed(FusedReader& source, Sink sink)
        : file_(source), sink_(std::move(sink)), next_(file_.next()) {}

    /// Hands out what the fusion knew when a line of the recording is reached: with a sensor's
    /// frame what it made of this frame, with a truth what it knew before.
    /// @param line in the order of the recording
    /// @throw InputError what is wrong with the file
    void follow(const RecordingLine& line);
    /// Hands out the next frame, whenever it arrived.
    /// @return false when there is none
    /// @throw InputError what is wrong with the file
    bool handOne();

private:
    FusedReader& file_;
    Sink sink_;
    std::optional<FusedFrame> next_;
};

}  // namespace Workbench
