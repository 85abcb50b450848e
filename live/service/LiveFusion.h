// SPDX-License-Identifier: Apache-2.0
// The fusion of live frames, and their recording.
#pragma once

#include <veskar-host/FrameRecorder.h>
#include <veskar-host/FusionPipeline.h>

#include "live/service/FrameIntake.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <utility>

namespace Veskar::Live {

/// The settings of the fusion, as a replay takes them.
struct FusionSettings {
    Config config;
    Host::HostParameters parameters;
};

/// Fuses frames as they come, records them, or both. `veskar replay` of the recording gives the
/// fused frames of this, byte for byte: the frames have passed a FrameIntake, the pipeline has the
/// options of a replay, and the recording states its end.
///
/// One thread at a time may use it; only one that fuses may exist per process.
class LiveFusion {
public:
    using Steady = FrameIntake::Steady;

    /// @param installation the sensors and where they are; must outlive this
    /// @param withTags whether tracks get the tags of the detection priority
    /// @param sink receives fused frames; must not call this
    /// @param faults receives what goes wrong; must outlive this
    LiveFusion(const Host::Installation& installation, bool withTags,
               Host::FusionPipeline::Sink sink, Faults& faults);

    /// Begins to fuse, without any track.
    /// @param settings those of the fusion
    void fuse(const FusionSettings& settings);
    /// Begins to record.
    /// @param recorder what records; nothing else may record
    void record(std::unique_ptr<Host::FrameRecorder> recorder) { recorder_ = std::move(recorder); }

    /// @param frame with the time of its measurement, by the steady clock
    /// @param now when this is called
    void push(Host::SensorFrame frame, Steady now);
    /// Fuses what is due for silent and slow sensors.
    /// @param now when this is called
    void advance(Steady now);
    /// Fuses what is due, and lets the recording state its end.
    /// @param now when this is called
    /// @return what recorded, and records no longer; its destructor waits for the disk. Null: there
    ///         was nothing
    std::unique_ptr<Host::FrameRecorder> end(Steady now);

    /// @param observer receives the decisions of the fusion, or null; must outlive this or be
    ///                 replaced before. A new fusion is not observed.
    void observe(FusionObserver* observer);

    /// @return what was counted of the frames
    const FrameIntake::Counts& taken() const { return intake_.counts(); }
    /// @return what the fusion counts since fuse was called; nothing when it was not
    std::optional<Host::FusionPipeline::Counts> fused() const;
    /// @return what the recorder counts; nothing without one
    std::optional<Host::FrameRecorder::Counts> recorded() const;

private:
    void advanceTo(double clock);
    void noteFailure();

    const Host::Installation& installation_;
    bool withTags_;
    Host::FusionPipeline::Sink sink_;
    Faults& faults_;
    FrameIntake intake_;
    std::unique_ptr<Host::FrameRecorder> recorder_;
    std::unique_ptr<Host::FusionPipeline> pipeline_;
    std::uint64_t failed_ = 0;  ///< frames of which was told
};

}  // namespace Veskar::Live
