// SPDX-License-Identifier: Apache-2.0
// Speed of an evaluation including reading and fusion, to be compared with that of a replay, and of
// a simulation.
#include "SquareRecording.h"
#include "evaluate/Evaluation.h"
#include "host/pipeline/ReplayOptions.h"
#include "recording/RecordingReader.h"

#include <variant>

#include <benchmark/benchmark.h>

namespace {

// As `veskar evaluate RECORDING` does it.
void BM_Evaluate(benchmark::State& state) {
    const WorkbenchBench::SquareRecording file(static_cast<int>(state.range(0)));
    for ([[maybe_unused]] const auto iteration : state) {
        Workbench::RecordingReader reader(file.path);
        Workbench::Evaluation evaluation(reader.header(), WorkbenchBench::configuration(), {});
        Workbench::FusionPipeline run(
            reader.header(), WorkbenchBench::configuration(),
            [&](const Workbench::FusedFrame& frame) { evaluation.add(frame); }, {},
            Workbench::replayOptions());
        while (const auto line = reader.next()) {
            if (const auto* frame = std::get_if<Workbench::SensorFrame>(&*line)) {
                run.push(*frame);
            } else {
                run.advance(std::get<Workbench::TruthFrame>(*line).time);
            }
            evaluation.add(*line);
        }
        benchmark::DoNotOptimize(evaluation.figures());
    }
}

// Without the text of the recording.
void BM_Simulate(benchmark::State& state) {
    const Workbench::Scenario scenario = WorkbenchBench::square(static_cast<int>(state.range(0)));
    for ([[maybe_unused]] const auto iteration : state) {
        Workbench::Simulation simulation(scenario, 1);
        simulation.run(
            [](const Workbench::RecordingLine& line) { benchmark::DoNotOptimize(&line); },
            [](double) {});
    }
}

}  // namespace

// The evaluation works on several threads; real time is what a user waits.
BENCHMARK(BM_Evaluate)
    ->Arg(10)
    ->Arg(50)
    ->Arg(200)
    ->MeasureProcessCPUTime()
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Simulate)->Arg(10)->Arg(50)->Arg(200)->Unit(benchmark::kMillisecond);
