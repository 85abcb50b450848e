// SPDX-License-Identifier: Apache-2.0
// Prints the fusion's results for a few scenes: after every frame each system track with id, sensor
// tracks, labels, probability and estimate, with all bits of the numbers. scripts/test-arm compares
// the text between architectures.
#include <veskar/Config.h>
#include <veskar/FusionModule.h>

#include "device/Scene.h"
#include "device/TrackLine.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <utility>

namespace {

using VeskarDevice::Scene;
using VeskarDevice::SceneSettings;

/// Radar and video alternate, ten frames a second each; a radar frame is fused once video time is
/// close to it.
void run(const Veskar::Config& config, const SceneSettings& settings, unsigned seed) {
    double now = 0.0;
    Scene scene(settings, seed);
    Veskar::FusionModule fusion(
        config, [&now] { return std::chrono::nanoseconds(static_cast<std::int64_t>(now * 1e9)); });
    for (int frame = 1; frame <= 200; ++frame) {
        now = 0.05 * frame;
        const Veskar::Source source = frame % 2 == 0 ? Veskar::Radar : Veskar::VideoObject;
        scene.moveTo(now);
        fusion.cycle(source, now, scene.report(source));
        std::printf("frame %d of source %d: %zu\n", frame, static_cast<int>(source),
                    fusion.systemTracks.size());
        for (const auto& track : fusion.systemTracks) {
            VeskarDevice::printLine(*track);
        }
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: fusion_trace FUSION.json\n");
        return EXIT_FAILURE;
    }
    try {
        Veskar::Config config = Veskar::Config::parse(argv[1]);
        const SceneSettings hard{32, 0.1, 0.02, 0.5};
        for (const bool useJVA : {true, false}) {
            for (const bool splitGating : {true, false}) {
                config.module.useJVA = useJVA;
                config.module.splitGating = splitGating;
                config.module.allowRadarToMultiple = !splitGating;
                config.module.removeClassMismatches = useJVA;
                std::printf("useJVA %d splitGating %d\n", static_cast<int>(useJVA),
                            static_cast<int>(splitGating));
                run(config, hard, 1);
            }
        }
    } catch (const std::exception& error) {
        std::fprintf(stderr, "fusion_trace: %s\n", error.what());
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}
