// SPDX-License-Identifier: Apache-2.0
// Cost of a frame, from the host's call to its return, with the plain configuration and with the
// shipped one, which has all rules.
//
// Times only the call, not the creation of the tracks by the host. "LU" is the time per object in
// units of the Mahalanobis distance in support/LuUnit.h, measured with every benchmark.
#include <veskar/FusionModule.h>
#include <veskar/FusionObserver.h>

#include "support/AllocationCounter.h"
#include "support/EstimatePool.h"
#include "support/LuUnit.h"
#include "support/TrackFactory.h"

#include <chrono>
#include <ctime>
#include <memory>
#include <vector>

#include <benchmark/benchmark.h>

namespace {

using Veskar::FusionModule;
using Veskar::Radar;
using Veskar::Source;
using Veskar::VideoObject;
using Tracks = std::vector<std::shared_ptr<Veskar::Track>>;

constexpr double period = 0.1;  ///< ten frames a second from each sensor

/// Processor time of this thread, which other programs on the machine hardly affect.
double processorSeconds() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

/// @return seconds of one LU
double measureLu() {
    constexpr int count = 20000;
    VeskarBench::EstimatePool pool;
    const double start = processorSeconds();
    for (int i = 0; i < count; ++i) {
        const VeskarTest::Estimate& a = pool.next();
        const VeskarTest::Estimate& b = pool.next();
        benchmark::DoNotOptimize(VeskarBench::luUnit(a.x, a.P, b.x, b.P));
    }
    return (processorSeconds() - start) / count;
}

/// @return the configuration of a benchmark with the arguments of perObject
Veskar::Config configOf(const benchmark::State& state) {
    Veskar::Config config =
        Veskar::Config::parse(state.range(2) != 0 ? VESKAR_SOURCE_DIR "/config/fusion.json"
                                                  : VESKAR_SOURCE_DIR "/config/fusion-plain.json");
    config.module.useJVA = state.range(1) != 0;
    return config;
}

/// Positions of the objects: in a row across the image, 3 m behind each other.
struct Row {
    double spread = 1.0;  ///< fraction of that width
    double shift = 0.0;   ///< along u
};

/// A crowd of the same density whatever its size.
/// @param objects their number
/// @param neighbours of each object inside its gate, roughly
Row crowdOf(int objects, int neighbours) {
    return {0.1 / neighbours * objects / 64.0, 0.0};
}

/// What each sensor sees.
struct View {
    int videoObjects;
    Row videoRow;
    int radarObjects;
    Row radarRow;
};

/// Both see the same.
View commonView(int objects, const Row& row) {
    return {objects, row, objects, row};
}

/// A sensor's view of objects in a row, all walking at the same speed, with individual covariances.
class Walkers {
public:
    Walkers(Source sensor, int count, const Row& place = {})
        : source_(sensor), objects_(count), row_(place) {}

    Tracks at(double time) {
        Tracks tracks;
        for (int id = 1; id <= objects_; ++id) {
            VeskarTest::Report report;
            report.source = source_;
            report.id = id;
            report.time = time;
            report.state << row_.spread * (1.8 * id / objects_ - 0.9) + row_.shift, 0.02, -0.2, 0.0,
                10.0 + row_.spread * 3.0 * id, 0.0;
            report.covariance = 1e-4 * pool_.next().P;
            report.className = "human";
            tracks.push_back(VeskarTest::makeTrack(report));
            tracks.back()->probability = 2.0;
            tracks.back()->boundingBox << report.state[0], 0.05, report.state[2], 0.2;
        }
        return tracks;
    }

private:
    Source source_;
    int objects_;
    Row row_;
    VeskarBench::EstimatePool pool_;
};

/// Accumulates the time of calls of `cycle`.
class Meter {
public:
    void cycle(FusionModule& module, Source source, double time, const Tracks& tracks) {
        const VeskarTest::AllocationScope scope;
        const double start = processorSeconds();
        module.cycle(source, time, tracks);
        seconds_ += processorSeconds() - start;
        allocations_ += static_cast<double>(scope.count());
        ++frames_;
    }

    double getSeconds() const { return seconds_; }
    double perFrame() const { return seconds_ / frames_; }
    double allocationsPerFrame() const { return allocations_ / frames_; }

private:
    double seconds_ = 0.0;
    double allocations_ = 0.0;
    double frames_ = 0.0;
};

void require(benchmark::State& state, bool condition, const char* what) {
    if (!condition) {
        state.SkipWithError(what);
    }
}

/// Every sensor reports the objects that it sees ten times a second. One iteration consists of a
/// video and a radar frame.
/// @param view what they see
/// @param expected system tracks
/// @param observer receives the decisions, or null
void fuseSteadily(benchmark::State& state, const View& view, std::size_t expected,
                  Veskar::FusionObserver* observer = nullptr) {
    const int objects = static_cast<int>(state.range(0));
    std::chrono::nanoseconds now{};
    FusionModule module(configOf(state), [&now] { return now; });
    module.setObserver(observer);
    Walkers videoWalkers(VideoObject, view.videoObjects, view.videoRow);
    Walkers radarWalkers(Radar, view.radarObjects, view.radarRow);
    double time = 10.0;
    Meter video;
    Meter radar;
    const auto frames = [&](Meter& videoMeter, Meter& radarMeter) {
        time += period;
        const Tracks seen = videoWalkers.at(time);
        videoMeter.cycle(module, VideoObject, time, seen);
        const Tracks heard = radarWalkers.at(time + period / 2.0);
        radarMeter.cycle(module, Radar, time + period / 2.0, heard);
    };
    for (int i = 0; i < 10; ++i) {
        Meter warmUp;
        frames(warmUp, warmUp);
    }
    const double lu = measureLu();
    for ([[maybe_unused]] auto _ : state) {
        const double before = video.getSeconds() + radar.getSeconds();
        frames(video, radar);
        state.SetIterationTime(video.getSeconds() + radar.getSeconds() - before);
    }
    const double unit = (lu + measureLu()) / 2.0 * objects;
    require(state, module.systemTracks.size() == expected, "not the system tracks expected");
    state.counters["LU(video)"] = video.perFrame() / unit;
    state.counters["LU(radar)"] = radar.perFrame() / unit;
    state.counters["allocs(video)"] = video.allocationsPerFrame();
    state.counters["allocs(radar)"] = radar.allocationsPerFrame();
    state.SetComplexityN(objects);
}

/// Both sensors hold every object.
void fuseSteadily(benchmark::State& state, const Row& row, Veskar::FusionObserver* observer) {
    const int objects = static_cast<int>(state.range(0));
    fuseSteadily(state, commonView(objects, row), static_cast<std::size_t>(objects), observer);
}

void steadyState(benchmark::State& state) {
    fuseSteadily(state, Row{}, nullptr);
}

void steadyStateInACrowd(benchmark::State& state) {
    fuseSteadily(state, crowdOf(static_cast<int>(state.range(0)), 10), nullptr);
}

/// The same place for every number of objects: about ten others are in the gate of each of 64, and
/// eighty in that of 512.
void steadyStateInADenseCrowd(benchmark::State& state) {
    fuseSteadily(state, crowdOf(64, 10), nullptr);
}

/// The same with an observer that ignores all events: the cost of passing them.
void steadyStateObserved(benchmark::State& state) {
    Veskar::FusionObserver observer;
    fuseSteadily(state, Row{}, &observer);
}

/// Each sensor sees another half of the objects, so that all system tracks could still be merged.
void steadyStateUnfused(benchmark::State& state) {
    const int objects = static_cast<int>(state.range(0));
    const int half = objects / 2;
    fuseSteadily(state, {half, {0.5, -0.5}, half, {0.5, 0.5}}, static_cast<std::size_t>(objects));
}

/// A radar frame shows objects for the first time that only video has tracked so far.
/// @param view what they see
/// @param expected system tracks afterwards
void newObjects(benchmark::State& state, const View& view, std::size_t expected) {
    Walkers videoWalkers(VideoObject, view.videoObjects, view.videoRow);
    Walkers radarWalkers(Radar, view.radarObjects, view.radarRow);
    FusionModule module(configOf(state), [] { return std::chrono::nanoseconds{}; });
    const auto meet = [&](Meter& meter) {
        module.clear();
        module.cycle(VideoObject, 10.0, videoWalkers.at(10.0));
        const Tracks heard = radarWalkers.at(10.05);
        meter.cycle(module, Radar, 10.05, heard);
    };
    Meter warmUp;
    meet(warmUp);
    Meter meter;
    const double lu = measureLu();
    for ([[maybe_unused]] auto _ : state) {
        const double before = meter.getSeconds();
        meet(meter);
        state.SetIterationTime(meter.getSeconds() - before);
    }
    require(state, module.systemTracks.size() == expected, "not the system tracks expected");
    const auto objects = static_cast<double>(state.range(0));
    state.counters["LU"] = meter.perFrame() / ((lu + measureLu()) / 2.0 * objects);
    state.counters["allocs"] = meter.allocationsPerFrame();
    state.SetComplexityN(state.range(0));
}

/// They are far apart, and each joins its system track.
void newObjectsJoin(benchmark::State& state) {
    const int objects = static_cast<int>(state.range(0));
    newObjects(state, commonView(objects, {}), static_cast<std::size_t>(objects));
}

/// All are so close to each other that every pair passes the gate.
constexpr Row oneGate{1e-4, 0.0};

/// Each joins one.
void newObjectsInACrowd(benchmark::State& state) {
    const int objects = static_cast<int>(state.range(0));
    newObjects(state, commonView(objects, oneGate), static_cast<std::size_t>(objects));
}

/// Radar sees more than an assignment can give away, and the others start system tracks.
void manyNewObjectsInACrowd(benchmark::State& state) {
    constexpr int radarObjects = 448;
    newObjects(state, {static_cast<int>(state.range(0)), oneGate, radarObjects, oneGate},
               radarObjects);
}

/// Radar sees other objects, which start system tracks.
void newObjectsElsewhere(benchmark::State& state) {
    const int objects = static_cast<int>(state.range(0));
    newObjects(state, {objects, {}, objects, {1.0, 100.0}}, 2 * static_cast<std::size_t>(objects));
}

void perObject(benchmark::internal::Benchmark* benchmark) {
    benchmark->ArgNames({"objects", "JVA", "rules"})
        ->UseManualTime()
        ->Unit(benchmark::kMicrosecond);
}

const std::vector<std::int64_t> growing = {64, 128, 256, 512};

BENCHMARK(steadyState)->Apply(perObject)->ArgsProduct({growing, {1}, {1}})->Complexity();
BENCHMARK(steadyState)->Apply(perObject)->ArgsProduct({{8, 32, 64, 128, 256}, {1, 0}, {0}});
BENCHMARK(steadyStateInACrowd)->Apply(perObject)->ArgsProduct({growing, {1}, {1}})->Complexity();
BENCHMARK(steadyStateInACrowd)->Apply(perObject)->ArgsProduct({{64}, {1}, {0}});
BENCHMARK(steadyStateInADenseCrowd)->Apply(perObject)->ArgsProduct({{512}, {1}, {0, 1}});
BENCHMARK(steadyStateUnfused)->Apply(perObject)->ArgsProduct({growing, {1}, {1}})->Complexity();
BENCHMARK(steadyStateObserved)->Apply(perObject)->ArgsProduct({{8, 32, 128}, {1}, {0, 1}});
BENCHMARK(newObjectsJoin)->Apply(perObject)->ArgsProduct({growing, {1}, {1}})->Complexity();
BENCHMARK(newObjectsJoin)->Apply(perObject)->ArgsProduct({{64}, {1, 0}, {0}});
BENCHMARK(newObjectsInACrowd)->Apply(perObject)->ArgsProduct({{64}, {1, 0}, {0, 1}});
BENCHMARK(manyNewObjectsInACrowd)->Apply(perObject)->ArgsProduct({{64}, {1}, {0, 1}});
BENCHMARK(newObjectsElsewhere)->Apply(perObject)->ArgsProduct({{64}, {1, 0}, {0, 1}});

}  // namespace
