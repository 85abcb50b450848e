// SPDX-License-Identifier: Apache-2.0
// Fused frames on their way out.
#pragma once

#include <veskar-host/FusedFrame.h>

#include "live/onvif/FusedScene.h"
#include "live/service/RunConfiguration.h"
#include "live/service/TrackEvents.h"
#include "live/transport/Output.h"
#include "live/transport/RateLimit.h"

#include <memory>
#include <string>

namespace Veskar::Live {

/// Leaves out tracks that are not asked for, keeps to the rate, and writes the rest in the format
/// of an output.
class TrackOutput {
public:
    /// @param settings of the output
    /// @param installation where the sensors are
    /// @param loop runs delays
    /// @param output where the messages go
    TrackOutput(const OutputSettings& settings, const Host::Installation& installation,
                EventLoop& loop, std::unique_ptr<Output> output);

    /// @param frame the tracks after a frame
    /// @param utc its time
    void offer(const Host::FusedFrame& frame, UtcTime utc);
    /// Sends what the rate limit holds back.
    void flush() { limit_.flush(); }
    /// Says that all tracks are gone, in formats that have words for it: the fusion begins anew,
    /// with ids that may occur again, or ends.
    /// @param utc when that is
    void endTracks(UtcTime utc);

    /// @return the output's name
    const std::string& name() const { return settings_.name; }
    /// @return where the messages go
    const Output& output() const { return *output_; }
    /// @return frames that the rate limit left out
    std::uint64_t replaced() const { return limit_.replaced(); }

private:
    struct Moment {
        Host::FusedFrame frame;
        UtcTime utc{};
    };

    bool isWanted(const Host::FusedTrack& track) const;
    void write(const Moment& moment);
    void send(std::string message);

    OutputSettings settings_;
    std::unique_ptr<Output> output_;
    FusedScene scene_;
    TrackEvents events_;
    RateLimit<Moment> limit_;
};

}  // namespace Veskar::Live
