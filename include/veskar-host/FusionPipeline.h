// SPDX-License-Identifier: Apache-2.0
// From sensor reports to fused tracks.
#pragma once

#include <veskar-host/ExportHost.h>
#include <veskar-host/FusedFrame.h>
#include <veskar-host/HostParameters.h>
#include <veskar-host/Installation.h>
#include <veskar-host/SensorFrame.h>
#include <veskar/Config.h>
#include <veskar/FusionModule.h>
#include <veskar/FusionObserver.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace Veskar::Host {

/// A complete host of the fusion: converts reports to tracks, adds frames for sensors that are
/// silent or slow, runs the fusion and passes the system tracks on after every fused frame.
///
/// Time is the host's: `SensorFrame::received` of the pushed frames, and the argument of advance.
/// Replaying a recording of the frames therefore reproduces what was fused live.
///
/// May be used by one thread at a time. Only one may exist per process at a time, because the
/// library numbers system tracks globally.
class VESKAR_HOST_EXPORT FusionPipeline {
public:
    /// Receives the system tracks after what push or advance has fused, on their thread; must not
    /// call the pipeline. When one frame lets several be fused at once, as video does for radar
    /// frames that wait in the module, it is called once, with the tracks after the last of them.
    ///
    /// What it throws reaches the caller of push or advance as soon as that has done its work, and
    /// the pipeline may be used further on; of several exceptions the first one does. May be empty.
    using Sink = std::function<void(const FusedFrame&)>;

    /// Optional behaviour.
    struct Options {
        /// Evaluates the detection priority of every track.
        bool withTags = false;
        /// Offset of the fusion's time base to that of the frames, s. Before the first video frame
        /// the fusion assumes one at time 0; when the frames' times begin near 0, as in a
        /// recording, radar frames within 0.1 s of it would be fused before any video.
        double uptime = 0.0;
        /// Queries the device's geolocation service for positions when the installation states no
        /// site; see Dbus::GeoLocation::getPosition for its threads. Off for replays, which must
        /// not depend on the machine that they run on.
        bool asksForPosition = true;
    };

    /// Statistics since construction.
    struct Counts {
        std::uint64_t videoFrames = 0;    ///< pushed
        std::uint64_t radarFrames = 0;    ///< pushed
        std::uint64_t ignoredFrames = 0;  ///< pushed, but of another source or with times that
                                          ///< are not finite
        std::uint64_t addedFrames = 0;    ///< empty or predicted, by the pipeline
        std::uint64_t failedFrames = 0;   ///< that the fusion could not associate
        std::string firstFailure;         ///< why, and when
        double fusionSeconds = 0.0;       ///< wall time inside FusionModule::cycle
    };

    /// @param installation the sensors and where they are
    /// @param config configuration of the fusion
    /// @param sink receives the results
    /// @param parameters constants of the adapter and of the duties
    FusionPipeline(const Installation& installation, const Config& config, Sink sink,
                   const HostParameters& parameters = {});
    /// As above.
    /// @param installation as above
    /// @param config as above
    /// @param sink as above
    /// @param parameters as above
    /// @param options optional behaviour
    FusionPipeline(const Installation& installation, const Config& config, Sink sink,
                   const HostParameters& parameters, const Options& options);
    ~FusionPipeline();
    FusionPipeline(const FusionPipeline&) = delete;
    FusionPipeline& operator=(const FusionPipeline&) = delete;

    /// Hands a frame to the fusion, and before it those that the host has to add. A frame of a
    /// source that is neither video nor radar, or with a time that is not finite, is ignored and
    /// counted.
    ///
    /// A frame with more tracks than one assignment holds (512 on a side) is counted as failed: the
    /// fusion ages its tracks and continues with the next frame.
    ///
    /// @param frame in the order of arrival
    void push(const SensorFrame& frame);
    /// Adds the frames that are due until then for silent or slow sensors. A live host calls it
    /// about ten times a second, so that radar frames are fused while the camera is silent.
    /// @param now the host's clock, s; frames pushed later are not received before it
    void advance(double now);

    /// @param observer receives the decisions of the fusion, or null; must outlive the pipeline or
    ///                 be replaced before. The times it receives are ahead of the frames' by
    ///                 Options::uptime.
    void setObserver(FusionObserver* observer);

    /// @return statistics since construction
    const Counts& counts() const;
    /// @return the fusion; its times are ahead of the frames' by Options::uptime
    const FusionModule& fusion() const;

private:
    class VESKAR_HOST_NO_EXPORT Engine;

    std::unique_ptr<Engine> engine_;
};

}  // namespace Veskar::Host
