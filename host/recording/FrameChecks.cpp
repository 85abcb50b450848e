// SPDX-License-Identifier: Apache-2.0
#include "host/recording/FrameChecks.h"

#include <veskar-host/InputError.h>

#include "host/json/LineText.h"

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

}  // namespace

void refuseEarlyArrival(const SensorFrame& frame) {
    if (frame.received < frame.time) {
        throw InputError("received: " + shortestText(frame.received) +
                         " is before the time of the frame, " + shortestText(frame.time));
    }
}

void refuseBoxesUpsideDown(const SensorFrame& frame) {
    for (std::size_t i = 0; i < frame.tracks.size(); ++i) {
        const ImageBox* box = boxOf(frame.tracks[i]);
        if (box != nullptr && !(box->bottom <= box->top)) {
            throw InputError("tracks[" + std::to_string(i) + "].box.top: is below bottom");
        }
    }
}

}  // namespace Veskar::Host::Internal
