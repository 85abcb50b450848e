// SPDX-License-Identifier: Apache-2.0
#include "live/service/LiveFusion.h"

#include "host/pipeline/ReplayOptions.h"

#include <utility>

namespace Veskar::Live {

LiveFusion::LiveFusion(const Host::Installation& installation, bool withTags,
                       Host::FusionPipeline::Sink sink, Faults& faults)
    : installation_(installation),
      withTags_(withTags),
      sink_(std::move(sink)),
      faults_(faults),
      intake_(faults) {}

void LiveFusion::fuse(const FusionSettings& settings) {
    Host::FusionPipeline::Options options = Host::Internal::replayOptions();
    options.withTags = withTags_;
    pipeline_.reset();  // there may be one at a time
    failed_ = 0;
    pipeline_ = std::make_unique<Host::FusionPipeline>(installation_, settings.config, sink_,
                                                       settings.parameters, options);
}

void LiveFusion::push(Host::SensorFrame frame, Steady now) {
    const std::optional<Host::SensorFrame> taken = intake_.take(std::move(frame), now);
    if (!taken) {
        return;
    }
    if (recorder_) {
        recorder_->write(*taken);
    }
    if (pipeline_) {
        pipeline_->push(*taken);
        noteFailure();
    }
}

void LiveFusion::observe(FusionObserver* observer) {
    if (pipeline_) {
        pipeline_->setObserver(observer);
    }
}

void LiveFusion::advance(Steady now) {
    advanceTo(intake_.clock(now));
}

std::unique_ptr<Host::FrameRecorder> LiveFusion::end(Steady now) {
    const double clock = intake_.clock(now);
    advanceTo(clock);
    if (recorder_) {
        recorder_->end(clock);
    }
    return std::move(recorder_);
}

void LiveFusion::advanceTo(double clock) {
    if (pipeline_) {
        pipeline_->advance(clock);
        noteFailure();
    }
}

std::optional<Host::FusionPipeline::Counts> LiveFusion::fused() const {
    return pipeline_ ? std::optional(pipeline_->counts()) : std::nullopt;
}

std::optional<Host::FrameRecorder::Counts> LiveFusion::recorded() const {
    return recorder_ ? std::optional(recorder_->counts()) : std::nullopt;
}

void LiveFusion::noteFailure() {
    const Host::FusionPipeline::Counts& counts = pipeline_->counts();
    if (counts.failedFrames > failed_) {
        failed_ = counts.failedFrames;
        faults_.report("the fusion could not associate a frame",
                       "the first: " + counts.firstFailure);
    }
}

}  // namespace Veskar::Live
