// SPDX-License-Identifier: Apache-2.0
#include "import/ImportedRecording.h"

#include "recording/RecordingWriter.h"

#include <algorithm>

namespace Workbench {

void write(const ImportedRecording& recording, OutputFile& output) {
    output.write(toJsonLine(recording.header));
    std::vector<const SensorFrame*> order;
    order.reserve(recording.frames.size());
    for (const SensorFrame& frame : recording.frames) {
        order.push_back(&frame);
    }
    std::stable_sort(order.begin(), order.end(), [](const SensorFrame* a, const SensorFrame* b) {
        return a->received < b->received;
    });
    auto truth = recording.truth.begin();
    for (const SensorFrame* frame : order) {
        for (; truth != recording.truth.end() && truth->time <= frame->time; ++truth) {
            output.write(toJsonLine(*truth));
        }
        output.write(toJsonLine(*frame));
    }
    for (; truth != recording.truth.end(); ++truth) {
        output.write(toJsonLine(*truth));
    }
}

}  // namespace Workbench
