// SPDX-License-Identifier: Apache-2.0
// Speed of a replay including reading and writing, and the share of that time inside the library.
#include "host/fused/FusedText.h"
#include "io/OutputFile.h"
#include "recording/ReadAhead.h"
#include "recording/RecordingReader.h"
#include "recording/RecordingWriter.h"
#include "replay/Replay.h"
#include "replay/WriteBehind.h"
#include "simulate/Simulation.h"

#include <chrono>
#include <filesystem>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include <benchmark/benchmark.h>
#include <unistd.h>

namespace {

// A square where both sensors see all objects.
Workbench::Scenario square(int objects) {
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

class RecordingFile {
public:
    explicit RecordingFile(int objects)
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
    ~RecordingFile() { std::filesystem::remove(path); }
    RecordingFile(const RecordingFile&) = delete;
    RecordingFile& operator=(const RecordingFile&) = delete;

    const std::string path;
};

// Accumulates the statistics of replays and reports them per second and as shares of the time.
class Tally {
public:
    void add(const Workbench::FusionPipeline::Counts& counts) {
        frames_ += static_cast<double>(counts.videoFrames + counts.radarFrames);
        inLibrary_ += counts.fusionSeconds;
    }
    void report(benchmark::State& state) const {
        const double all = std::chrono::duration<double>(Clock::now() - start_).count();
        state.counters["frames"] = benchmark::Counter(frames_, benchmark::Counter::kIsRate);
        state.counters["libraryShare"] = inLibrary_ / all;
    }

private:
    using Clock = std::chrono::steady_clock;

    Clock::time_point start_ = Clock::now();
    double frames_ = 0.0;
    double inLibrary_ = 0.0;
};

const Veskar::Config& configuration() {
    static const auto config = Veskar::Config::defaults();
    return config;
}

// The whole command: text in, text out.
void BM_Replay(benchmark::State& state) {
    const RecordingFile file(static_cast<int>(state.range(0)));
    Tally tally;
    for ([[maybe_unused]] const auto iteration : state) {
        Workbench::RecordingReader reader(file.path, Workbench::TruthLines::Skip);
        Workbench::OutputFile output("/dev/null");
        Workbench::WriteBehind writer(
            output, [](Workbench::LineText& text, const Workbench::FusedFrame& frame) {
                append(text, frame);
            });
        Workbench::FusionPipeline run(
            reader.header(), configuration(),
            [&](const Workbench::FusedFrame& frame) { writer.write(frame); }, {},
            Workbench::replayOptions());
        Workbench::ReadAhead lines(reader);
        while (const auto line = lines.next()) {
            run.push(std::get<Workbench::SensorFrame>(*line));
        }
        writer.finish();
        tally.add(run.counts());
    }
    tally.report(state);
}

// The work of a live host: adapter, fusion and conversion of the system tracks, without text.
void BM_Host(benchmark::State& state) {
    const RecordingFile file(static_cast<int>(state.range(0)));
    Workbench::RecordingReader reader(file.path, Workbench::TruthLines::Skip);
    std::vector<Workbench::SensorFrame> frames;
    while (auto line = reader.next()) {
        frames.push_back(std::get<Workbench::SensorFrame>(std::move(*line)));
    }
    Tally tally;
    for ([[maybe_unused]] const auto iteration : state) {
        Workbench::FusionPipeline run(
            reader.header(), configuration(),
            [](const Workbench::FusedFrame& frame) { benchmark::DoNotOptimize(&frame); }, {},
            Workbench::replayOptions());
        for (const Workbench::SensorFrame& frame : frames) {
            run.push(frame);
        }
        tally.add(run.counts());
    }
    tally.report(state);
}

}  // namespace

BENCHMARK(BM_Host)->Arg(10)->Arg(50)->Arg(200)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Replay)->Arg(10)->Arg(50)->Arg(200)->Unit(benchmark::kMillisecond);
