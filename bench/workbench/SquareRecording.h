// SPDX-License-Identifier: Apache-2.0
// The recording that the benchmarks of the workbench work on.
#pragma once

#include <veskar/Config.h>

#include "io/OutputFile.h"
#include "recording/RecordingWriter.h"
#include "simulate/Simulation.h"

#include <filesystem>
#include <string>
#include <variant>

#include <unistd.h>

namespace WorkbenchBench {

/// A square where both sensors see all objects.
inline Workbench::Scenario square(int objects) {
    Workbench::Scenario scenario;
    scenario.name = "square";
    scenario.duration = 60.0;
    scenario.camera.mounting.position = {0.0, 0.0, 5.0};
    scenario.camera.mounting.pitch = 20.0;
    scenario.camera.imageToRadians = {0.0, 0.7853981633974483, 0.0, 0.0};
    scenario.camera.radiansToImage = {0.0, 1.2732395447351628, 0.0, 0.0};
    scenario.camera.fieldOfView = {0.7853981633974483, 0.44};
    scenario.radar.mounting.position = {0.0, 0.0, 4.6};
    scenario.video.maximumRange = 300.0;
    scenario.video.minimumBoxHeight = 0.001;
    scenario.video.occlusionLimit = 1.0;
    scenario.radarSensor.maximumRange = 300.0;
    scenario.radarSensor.rangeResolution = 0.5;
    scenario.radarSensor.azimuthResolution = 1.0;
    Workbench::ObjectTraits crowd;
    crowd.mode = Workbench::PathMode::Wander;
    crowd.areaMinimum = {30.0, -25.0};
    crowd.areaMaximum = {90.0, 25.0};
    crowd.count = objects;
    scenario.objects = {crowd};
    return scenario;
}

/// A minute of the square in a temporary file.
class SquareRecording {
public:
    explicit SquareRecording(int objects)
        : path(std::filesystem::temp_directory_path() /
               ("veskar-benchmark-" + std::to_string(::getpid()) + ".jsonl")) {
        const Workbench::Scenario scenario = square(objects);
        Workbench::Simulation simulation(scenario, 1);
        Workbench::OutputFile output(path);
        output.write(toJsonLine(simulation.header()));
        simulation.run(
            [&](const Workbench::RecordingLine& line) {
                output.write(std::visit([](const auto& frame) { return toJsonLine(frame); }, line));
            },
            [](double) {});
        output.commit();
    }
    ~SquareRecording() { std::filesystem::remove(path); }
    SquareRecording(const SquareRecording&) = delete;
    SquareRecording& operator=(const SquareRecording&) = delete;

    const std::string path;
};

inline const Veskar::Config& configuration() {
    static const auto config = Veskar::Config::defaults();
    return config;
}

}  // namespace WorkbenchBench
