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
constexpr double crowdSpread = 0.01;

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

/// Every object is held by both sensors, and both report it ten times a second. One iteration
/// consists of a video and a radar frame.
/// @param row positions of the objects
/// @param observer receives the decisions, or null
void fuseSteadily(benchmark::State& state, const Row& row, Veskar::FusionObserver* observer) {
    const int objects = static_cast<int>(state.range(0));
    std::chrono::nanoseconds now{};
    FusionModule module(configOf(state), [&now] { return now; });
    module.setObserver(observer);
    Walkers videoWalkers(VideoObject, objects, row);
    Walkers radarWalkers(Radar, objects, row);
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
    require(state, module.systemTracks.size() == static_cast<std::size_t>(objects),
            "not every object is one system track");
    state.counters["LU(video)"] = video.perFrame() / unit;
    state.counters["LU(radar)"] = radar.perFrame() / unit;
    state.counters["allocs(video)"] = video.allocationsPerFrame();
    state.counters["allocs(radar)"] = radar.allocationsPerFrame();
    state.SetComplexityN(objects);
}

void steadyState(benchmark::State& state) {
    fuseSteadily(state, {}, nullptr);
}

/// About ten others are in the gate of every object.
void steadyStateInACrowd(benchmark::State& state) {
    fuseSteadily(state, {crowdSpread, 0.0}, nullptr);
}

/// The same with an observer that ignores all events: the cost of passing them.
void steadyStateObserved(benchmark::State& state) {
    Veskar::FusionObserver observer;
    fuseSteadily(state, {}, &observer);
}

/// A radar frame shows objects for the first time that only video has tracked so far.
/// @param radarRow positions as seen by radar
/// @param expected system tracks afterwards
void newObjects(benchmark::State& state, const Row& videoRow, const Row& radarRow,
                std::size_t expected) {
    const int objects = static_cast<int>(state.range(0));
    Walkers videoWalkers(VideoObject, objects, videoRow);
    Walkers radarWalkers(Radar, objects, radarRow);
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
    state.counters["LU"] = meter.perFrame() / ((lu + measureLu()) / 2.0 * objects);
    state.counters["allocs"] = meter.allocationsPerFrame();
}

/// They are far apart, and each joins its system track.
void newObjectsJoin(benchmark::State& state) {
    newObjects(state, {}, {}, static_cast<std::size_t>(state.range(0)));
}

/// They are so close that every pair passes the gate, and each joins one.
void newObjectsInACrowd(benchmark::State& state) {
    const Row crowd{1e-4, 0.0};
    newObjects(state, crowd, crowd, static_cast<std::size_t>(state.range(0)));
}

/// Radar sees other objects, which start system tracks.
void newObjectsElsewhere(benchmark::State& state) {
    newObjects(state, {}, {1.0, 100.0}, 2 * static_cast<std::size_t>(state.range(0)));
}

void perObject(benchmark::internal::Benchmark* benchmark) {
    benchmark->ArgNames({"objects", "JVA", "rules"})
        ->UseManualTime()
        ->Unit(benchmark::kMicrosecond);
}

BENCHMARK(steadyState)
    ->Apply(perObject)
    ->ArgsProduct({{8, 32, 64, 128, 256}, {1}, {0}})
    ->Complexity();
BENCHMARK(steadyState)
    ->Apply(perObject)
    ->ArgsProduct({{8, 32, 64, 128, 256}, {0}, {0}})
    ->Complexity();
BENCHMARK(steadyState)->Apply(perObject)->ArgsProduct({{64, 256}, {1}, {1}});
BENCHMARK(steadyStateInACrowd)->Apply(perObject)->ArgsProduct({{64}, {1}, {0, 1}});
BENCHMARK(steadyStateObserved)->Apply(perObject)->ArgsProduct({{8, 32, 128}, {1}, {0, 1}});
BENCHMARK(newObjectsJoin)->Apply(perObject)->ArgsProduct({{64}, {1, 0}, {0, 1}});
BENCHMARK(newObjectsInACrowd)->Apply(perObject)->ArgsProduct({{64}, {1, 0}, {0, 1}});
BENCHMARK(newObjectsElsewhere)->Apply(perObject)->ArgsProduct({{64}, {1, 0}, {0, 1}});

}  // namespace
