// SPDX-License-Identifier: Apache-2.0
// Drives the fusion as a live host would, on the clock of a recording.
#pragma once

#include <veskar/Config.h>
#include <veskar/DetectionPriority.h>
#include <veskar/FusionModule.h>

#include "adapter/HostAdapter.h"
#include "recording/Recording.h"
#include "replay/FusedTrack.h"
#include "replay/HostDuties.h"

#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace Workbench {

/// Knows how many radar frames a call of FusionModule::cycle fuses: the module says so in its
/// documentation but not in its results.
class RadarQueue {
public:
    /// @param time time stamp of a video frame, s
    void videoFused(double time) { lastVideo_ = time; }
    /// @param time time stamp of a radar frame, s
    /// @return whether the module would let it wait for video
    bool wouldWait(double time) const { return !(time < lastVideo_ + videoLead); }
    /// @param time time stamp of a radar frame handed to cycle, s
    /// @param clock the module's clock, s
    /// @return time stamp of the last frame fused by that call; nothing when all of them wait
    std::optional<double> radarGiven(double time, double clock);

private:
    static constexpr double videoLead = 0.1;  ///< how far radar may be ahead of video, s

    std::deque<double> waiting_;
    double lastVideo_ = 0.0;
};

/// What a replay did.
struct ReplayCounts {
    std::uint64_t videoFrames = 0;   ///< of the recording
    std::uint64_t radarFrames = 0;   ///< of the recording
    std::uint64_t addedFrames = 0;   ///< empty or predicted, by the host
    std::uint64_t failedFrames = 0;  ///< that the fusion could not associate
    std::string firstFailure;        ///< why, and when
    double librarySeconds = 0.0;     ///< wall time inside FusionModule::cycle
};

/// One fusion run. One lives per process at a time: the library numbers system tracks globally.
class Replay {
public:
    /// Receives what the library says of the system tracks after every frame that was fused.
    using Sink = std::function<void(FrameReading)>;

    /// Seconds by which the module's clock is ahead of the recording's. The module takes the last
    /// video frame to be at time 0 before there is one, so a recording that begins there would see
    /// its first radar frames pass video by. On a device the clock has long been running.
    static constexpr double uptime = 100.0;

    /// @param header the installation
    /// @param config configuration of the fusion
    /// @param sink receives the results
    /// @param withTags whether to ask the detection priority about every track
    Replay(const RecordingHeader& header, const Veskar::Config& config, Sink sink,
           bool withTags = false);

    /// Hands a frame to the fusion, and before it those that the host has to add.
    /// @param frame in the order of arrival
    void feed(const SensorFrame& frame);
    /// Hands over the frames that the host has to add until then.
    /// @param now the host's clock, s: the next frame of a sensor does not arrive before
    void advance(double now);

    /// @param watcher told what the fusion decides, or null; must outlive this replay
    void setObserver(Veskar::FusionObserver* watcher) { module_.setObserver(watcher); }

    /// @return what happened so far
    const ReplayCounts& counts() const { return tally_; }
    /// @return the fusion
    const Veskar::FusionModule& fusion() const { return module_; }

private:
    /// A frame as the fusion takes it.
    struct HostFrame {
        Veskar::Source source;
        double time;
        std::vector<std::shared_ptr<Veskar::Track>> tracks;
    };

    void hand(HostFrame frame, double received);
    void release(double received);
    void cycle(Veskar::Source source, double time, double received,
               const std::vector<std::shared_ptr<Veskar::Track>>& tracks);
    void report(Veskar::Source source, double time, double received);

    double clock_ = 0.0;  ///< seconds
    HostAdapter adapter_;
    Veskar::FusionModule module_;
    HostDuties duties_;
    RadarQueue queue_;
    std::optional<HostFrame> held_;  ///< the last radar frame, while it is ahead of video
    Sink sink_;
    std::unique_ptr<Veskar::DetectionPriority> priority_;
    ReplayCounts tally_;
};

}  // namespace Workbench
