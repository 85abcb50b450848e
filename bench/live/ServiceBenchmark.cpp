// SPDX-License-Identifier: Apache-2.0
// What the live program takes from the machine, and how long a frame takes through it: 64 people,
// video at 20 Hz and radar at 10 Hz, in and out over a mosquitto on the loopback interface.
#include "host/TestInstallation.h"
#include "live/LiveSystem.h"

#include <algorithm>
#include <chrono>
#include <vector>

#include <benchmark/benchmark.h>

namespace {

using Clock = VeskarBench::LiveSystem::Clock;
using std::chrono::milliseconds;
using std::chrono::seconds;
using VeskarBench::LiveSystem;
using VeskarBench::Walkers;

double secondsOf(Clock::duration duration) {
    return std::chrono::duration<double>(duration).count();
}

double quantile(std::vector<double>& values, double share) {
    const auto nth = values.begin() +
                     static_cast<std::ptrdiff_t>(share * static_cast<double>(values.size() - 1));
    std::nth_element(values.begin(), nth, values.end());
    return *nth;
}

Walkers people(std::size_t number, double stay = 0.0) {
    return {VeskarTest::testInstallation(), number, stay};
}

/// From the hand-over of a video frame to the arrival of the fused frame at a subscriber: twice
/// through the broker, and once through the program.
void frameAtItsPace(benchmark::State& state) {
    LiveSystem system(people(static_cast<std::size_t>(state.range(0))),
                      static_cast<std::size_t>(state.range(1)));
    std::vector<double> latencies;
    const double cpuBefore = system.status("cpuSeconds");
    const Clock::time_point begin = Clock::now();
    Clock::time_point due = begin;
    bool withRadar = true;
    for (auto _ : state) {
        system.waitUntil(due);
        const Clock::time_point sent = system.publish(Veskar::VideoObject);
        const Clock::time_point fused =
            system.awaitFused(Veskar::VideoObject, sent + milliseconds(50));
        latencies.push_back(secondsOf(fused - sent));
        state.SetIterationTime(latencies.back());
        if (withRadar) {
            system.waitUntil(due + milliseconds(25));
            system.publish(Veskar::Radar);
        }
        withRadar = !withRadar;
        due += milliseconds(50);
    }
    const double cpu = system.status("cpuSeconds") - cpuBefore;
    state.counters["p50_ms"] = 1e3 * quantile(latencies, 0.5);
    state.counters["p99_ms"] = 1e3 * quantile(latencies, 0.99);
    // Of the program alone: from the arrival of its message to the hand-over to the output.
    state.counters["inside_p50_ms"] = 1e3 * system.status("latencyMedian");
    state.counters["inside_p99_ms"] = 1e3 * system.status("latencyP99");
    state.counters["core_percent"] = 100.0 * cpu / secondsOf(Clock::now() - begin);
    state.counters["MB"] = system.status("memory") / 1e6;
}

/// From the start of the program to the first fused frame, while the sensors publish.
void startToFirstFrame(benchmark::State& state) {
    LiveSystem system(people(64));
    for (auto _ : state) {
        system.restart();
        const Clock::time_point begin = Clock::now();
        Clock::time_point fused;
        bool withRadar = true;
        do {
            if (withRadar) {
                system.publish(Veskar::Radar);
            }
            withRadar = !withRadar;
            const Clock::time_point sent = system.publish(Veskar::VideoObject);
            fused = system.awaitFused(Veskar::VideoObject, sent + milliseconds(50));
            if (fused < sent + milliseconds(50)) {
                break;
            }
        } while (fused - begin < seconds(10));
        state.SetIterationTime(secondsOf(fused - begin));
    }
}

/// An hour's frames as fast as they are fused, of people each of whom stays for half a second.
void hourOfChurn(benchmark::State& state) {
    constexpr int frames = 3600 * 20;
    for (auto _ : state) {
        LiveSystem system(people(64, 0.5));
        const Clock::time_point begin = Clock::now();
        for (int frame = 0; frame < frames; ++frame) {
            const Clock::time_point sent = system.publish(Veskar::VideoObject);
            system.awaitFused(Veskar::VideoObject, sent + milliseconds(50));
            if (frame % 2 == 0) {
                system.publish(Veskar::Radar);
            }
            if (frame == frames / 20) {
                state.counters["MB_after_3_min"] = system.status("memory") / 1e6;
            }
        }
        state.SetIterationTime(secondsOf(Clock::now() - begin));
        state.counters["MB_after_60_min"] = system.status("memory") / 1e6;
        state.counters["tracksOut"] = system.status("tracksOut");
    }
}

}  // namespace

// People, and viewers of the live view on the same machine.
BENCHMARK(frameAtItsPace)
    ->Args({64, 0})
    ->Args({64, 2})
    ->Args({64, 10})
    ->Iterations(600)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK(frameAtItsPace)
    ->Args({1000, 0})
    ->Iterations(200)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK(startToFirstFrame)->Iterations(10)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(hourOfChurn)->Iterations(1)->UseManualTime()->Unit(benchmark::kSecond);
