// SPDX-License-Identifier: Apache-2.0
// From what the sensors report to fused tracks.
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

/// A whole host of the fusion: turns reports into tracks, steps in for sensors that are silent or
/// slow, runs the fusion and says what is known after every frame.
///
/// The clock is the host's: `SensorFrame::received` of the frames that are pushed, and the time
/// given to advance. A recording of the frames therefore replays to what was fused live.
///
/// For one thread at a time. One lives per process at a time: the library numbers system tracks
/// globally.
class VESKAR_HOST_EXPORT FusionPipeline {
public:
    /// Receives the system tracks after what push or advance has fused, on their thread; must not
    /// call the pipeline. When one frame lets several be fused at once, as video does for radar
    /// frames that wait in the module, it is called once, with the tracks after the last of them.
    ///
    /// What it throws reaches the caller of push or advance as soon as that has done its work, and
    /// the pipeline may be used further on; of several exceptions the first one does. May be empty.
    using Sink = std::function<void(const FusedFrame&)>;

    /// What a host may want beyond what a live one usually does.
    struct Options {
        /// Asks the detection priority about every track.
        bool withTags = false;
        /// Seconds by which the fusion's time base is ahead of that of the frames. The fusion takes
        /// the last video frame to be at time 0 before there is one, so where time begins near 0,
        /// as in a recording, its first radar frames would pass video by.
        double uptime = 0.0;
        /// Asks the device's geolocation service where tracks are when the installation states no
        /// site; see Dbus::GeoLocation::getPosition for its threads. A replay must not ask the
        /// machine that it happens to run on.
        bool asksForPosition = true;
    };

    /// What happened so far.
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
    /// @param options what is wanted beyond the usual
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
    /// fusion ages its tracks and goes on with the next frame.
    ///
    /// @param frame in the order of arrival
    void push(const SensorFrame& frame);
    /// Hands over the frames that the host has to add until then. A live host calls it ten times a
    /// second or so, which keeps radar going while the camera is silent.
    /// @param now the host's clock, s: the next frame of a sensor does not arrive before
    void advance(double now);

    /// @param observer told what the fusion decides, or null; must outlive the pipeline or be
    ///                 replaced before it ends. Its times are ahead by Options::uptime.
    void setObserver(FusionObserver* observer);

    /// @return what happened so far
    const Counts& counts() const;
    /// @return the fusion; its times are ahead by Options::uptime
    const FusionModule& fusion() const;

private:
    class VESKAR_HOST_NO_EXPORT Engine;

    std::unique_ptr<Engine> engine_;
};

}  // namespace Veskar::Host
