// SPDX-License-Identifier: Apache-2.0
#include "evaluate/FusedFeed.h"

#include "io/InputError.h"

#include <fmt/format.h>

namespace Workbench {

RecordingHeader headerOfRun(const FusedReader& fused, const RecordingReader& recording) {
    const FusedHeader& made = fused.header();
    RecordingHeader header = recording.header();
    if (made.name != header.name) {
        throw InputError(
            fmt::format("{}:1: name: these tracks are of the recording \"{}\", not of \"{}\" ({})",
                        fused.input().name(), made.name, header.name, recording.input().name()));
    }
    header.camera = made.camera;
    header.radar = made.radar;
    return header;
}

void FusedFeed::follow(const RecordingLine& line) {
    const auto* truth = std::get_if<TruthFrame>(&line);
    const auto isReached = [&](const FusedFrame& frame) {
        return truth != nullptr ? frame.received < truth->time
                                : frame.received <= std::get<SensorFrame>(line).received;
    };
    while (next && isReached(*next)) {
        handOne();
    }
}

bool FusedFeed::handOne() {
    if (!next) {
        return false;
    }
    sink(*next);
    next = file.next();
    return true;
}

}  // namespace Workbench
