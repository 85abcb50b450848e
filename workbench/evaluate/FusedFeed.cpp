// SPDX-License-Identifier: Apache-2.0
#include "evaluate/FusedFeed.h"

namespace Workbench {

void FusedFeed::follow(const RecordingLine& line) {
    const auto* truth = std::get_if<TruthFrame>(&line);
    const auto isReached = [&](const FusedFrame& frame) {
        return truth != nullptr ? frame.received < truth->time
                                : frame.received <= std::get<SensorFrame>(line).received;
    };
    while (next && isReached(*next)) {
        sink(*next);
        next = file.next();
    }
}

}  // namespace Workbench
