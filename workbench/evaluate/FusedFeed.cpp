// SPDX-License-Identifier: Apache-2.0
#include "evaluate/FusedFeed.h"

namespace Workbench {

RecordingHeader headerOfRun(const FusedReader& fused, RecordingHeader recording) {
    recording.camera = fused.header().camera;
    recording.radar = fused.header().radar;
    return recording;
}

void FusedFeed::follow(const RecordingLine& line) {
    const auto* truth = std::get_if<TruthFrame>(&line);
    const auto isReached = [&](const FusedFrame& frame) {
        return truth != nullptr ? frame.received < truth->time
                                : frame.received <= std::get<SensorFrame>(line).received;
    };
    while (next_ && isReached(*next_)) {
        handOne();
    }
}

bool FusedFeed::handOne() {
    if (!next_) {
        return false;
    }
    sink_(*next_);
    next_ = file_.next();
    return true;
}

}  // namespace Workbench
