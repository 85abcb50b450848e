// SPDX-License-Identifier: Apache-2.0
// Replays a recording as `veskar replay` does and prints the system tracks after every frame, with
// all bits of the numbers. scripts/test-arm compares the text between architectures.
#include <veskar/Config.h>

#include "device/TrackLine.h"
#include "host/pipeline/ReplayOptions.h"
#include "recording/RecordingReader.h"

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <variant>

namespace {

void run(const char* configuration, const char* recording) {
    Workbench::RecordingReader reader(recording, Workbench::TruthLines::Skip);
    const Workbench::FusionPipeline* fusing = nullptr;
    Workbench::FusionPipeline pipeline(
        reader.header(), Veskar::Config::parse(configuration),
        [&fusing](const Workbench::FusedFrame& frame) {
            const auto& tracks = fusing->fusion().systemTracks;
            std::printf("frame at %a of source %d: %zu\n", frame.time,
                        static_cast<int>(frame.source), tracks.size());
            for (const auto& track : tracks) {
                VeskarDevice::printLine(*track);
            }
        },
        {}, Workbench::replayOptions());
    fusing = &pipeline;
    while (const auto line = reader.next()) {
        if (const auto* frame = std::get_if<Workbench::SensorFrame>(&*line)) {
            pipeline.push(*frame);
        }
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: replay_trace FUSION.json RECORDING.jsonl\n");
        return EXIT_FAILURE;
    }
    try {
        run(argv[1], argv[2]);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "replay_trace: %s\n", error.what());
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}
