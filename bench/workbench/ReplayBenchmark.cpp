// SPDX-License-Identifier: Apache-2.0
// Speed of a replay including reading and writing, and the share of that time inside the library.
#include "SquareRecording.h"
#include "host/fused/FusedText.h"
#include "host/pipeline/ReplayOptions.h"
#include "io/OutputFile.h"
#include "recording/ReadAhead.h"
#include "recording/RecordingReader.h"
#include "replay/WriteBehind.h"

#include <chrono>
#include <utility>
#include <variant>
#include <vector>

#include <benchmark/benchmark.h>

namespace {

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

// The whole command: text in, text out.
void BM_Replay(benchmark::State& state) {
    const WorkbenchBench::SquareRecording file(static_cast<int>(state.range(0)));
    Tally tally;
    for ([[maybe_unused]] const auto iteration : state) {
        Workbench::RecordingReader reader(file.path, Workbench::TruthLines::Skip);
        Workbench::OutputFile output("/dev/null");
        Workbench::WriteBehind writer(
            output, [](Workbench::LineText& text, const Workbench::FusedFrame& frame) {
                append(text, frame);
            });
        Workbench::FusionPipeline run(
            reader.header(), WorkbenchBench::configuration(),
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
    const WorkbenchBench::SquareRecording file(static_cast<int>(state.range(0)));
    Workbench::RecordingReader reader(file.path, Workbench::TruthLines::Skip);
    std::vector<Workbench::SensorFrame> frames;
    while (auto line = reader.next()) {
        frames.push_back(std::get<Workbench::SensorFrame>(std::move(*line)));
    }
    Tally tally;
    for ([[maybe_unused]] const auto iteration : state) {
        Workbench::FusionPipeline run(
            reader.header(), WorkbenchBench::configuration(),
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
