// SPDX-License-Identifier: Apache-2.0
#include "host/recording/FrameChecks.h"

#include <veskar-host/InputError.h>

#include "host/json/LineText.h"

#include <cmath>
#include <string>

namespace Veskar::Host::Internal {
namespace {

const ImageBox* boxOf(const Report& report) {
    if (const auto* video = std::get_if<VideoReport>(&report)) {
        return &video->box;
    }
    const auto* ready = std::get_if<ReadyEstimate>(&report);
    return ready != nullptr && ready->box ? &*ready->box : nullptr;
}

/// Ahead as far as the fusion takes for another time base; behind farther than any frame is
/// overtaken.
bool isFar(double stamp, double last) {
    constexpr double farthestAhead = 3600.0;
    constexpr double farthestBehind = 1.0;
    return stamp > last + farthestAhead || stamp < last - farthestBehind;
}

}  // namespace

void refuseEarlyArrival(const SensorFrame& frame) {
    if (frame.received < frame.time) {
        throw InputError("received", shortestText(frame.received) +
                                         " is before the time of the frame, " +
                                         shortestText(frame.time));
    }
}

void refuseBoxesUpsideDown(const SensorFrame& frame) {
    for (std::size_t i = 0; i < frame.tracks.size(); ++i) {
        const ImageBox* box = boxOf(frame.tracks[i]);
        if (box != nullptr && !(box->bottom <= box->top)) {
            throw InputError("tracks[" + std::to_string(i) + "].box.top", "is below bottom");
        }
    }
}

void FrameOrder::check(const SensorFrame& frame) const {
    const auto before = lastTime_.find(frame.source);
    if (before != lastTime_.end() && !(frame.time > before->second)) {
        throw InputError("time", shortestText(frame.time) + " is not later than " +
                                     shortestText(before->second) + ", the time of the " +
                                     sourceName(frame.source) + " frame before");
    }
    refuseEarlyArrival(frame);
    if (lastReceived_ && frame.received < *lastReceived_) {
        throw InputError("received", shortestText(frame.received) + " is before " +
                                         shortestText(*lastReceived_) +
                                         ", when the frame before was received; frames stand in "
                                         "the order of their arrival");
    }
}

void FrameOrder::take(const SensorFrame& frame) {
    lastTime_[frame.source] = frame.time;
    lastReceived_ = frame.received;
}

bool FrameOrder::isFar(const SensorFrame& frame) const {
    const auto before = lastTime_.find(frame.source);
    return (before != lastTime_.end() && Internal::isFar(frame.time, before->second)) ||
           (lastReceived_ && Internal::isFar(frame.received, *lastReceived_));
}

bool FrameOrder::mayEnd(double received) const {
    return std::isfinite(received) && (!lastReceived_ || received >= *lastReceived_);
}

}  // namespace Veskar::Host::Internal
