// SPDX-License-Identifier: Apache-2.0
// Cost of the operations that a frame applies to every system track.
#include <veskar/SystemTrack.h>

#include "support/EstimatePool.h"
#include "support/TrackFactory.h"

#include <memory>

#include <benchmark/benchmark.h>

namespace {

using Veskar::Source;
using Veskar::SystemTrack;
using Veskar::Track;
using VeskarBench::EstimatePool;
using VeskarTest::makeSystemTrack;
using VeskarTest::makeTrack;

/// A system track with one radar and one video-object track.
std::shared_ptr<SystemTrack> fusedTrack() {
    EstimatePool pool;
    auto system = makeSystemTrack(makeTrack(Source::Radar, 1, pool.next()));
    system->updateState(makeTrack(Source::VideoObject, 2, pool.next()));
    return system;
}

/// First report of a radar track; includes the allocation of its map node.
void updateStateOfNewReport(benchmark::State& state) {
    EstimatePool pool;
    const auto system = fusedTrack();
    const auto report = makeTrack(Source::Radar, 3, pool.next());
    const Veskar::StateVector x = system->state;
    const Veskar::StateMatrix P = system->covariance;
    for ([[maybe_unused]] auto _ : state) {
        system->updateState(report);
        benchmark::DoNotOptimize(system->state);
        system->sensorTracks[Source::Radar].erase(3);
        system->state = x;
        system->covariance = P;
    }
}

/// Two reports of one radar track alternate.
void updateStateOfRepeatedReport(benchmark::State& state) {
    EstimatePool pool;
    const auto system = fusedTrack();
    const std::shared_ptr<Track> reports[] = {makeTrack(Source::Radar, 1, pool.next()),
                                              makeTrack(Source::Radar, 1, pool.next())};
    system->updateState(reports[1]);
    std::size_t i = 0;
    for ([[maybe_unused]] auto _ : state) {
        system->updateState(reports[i++ % 2]);
        benchmark::DoNotOptimize(system->state);
    }
}

void applyDefusion(benchmark::State& state) {
    EstimatePool pool;
    const auto system = fusedTrack();
    const Track& video = *system->getSensorTracks(Source::VideoObject).begin()->second;
    const Veskar::StateVector x = system->state;
    const Veskar::StateMatrix P = system->covariance;
    for ([[maybe_unused]] auto _ : state) {
        system->applyDefusion(video);
        benchmark::DoNotOptimize(system->state);
        system->state = x;
        system->covariance = P;
    }
}

/// Predicts forward and back, to keep the numbers in range.
void predictWithTwoSensorTracks(benchmark::State& state) {
    const auto system = fusedTrack();
    double dt = 0.1;
    for ([[maybe_unused]] auto _ : state) {
        system->predict(system->time + dt);
        benchmark::DoNotOptimize(system->state);
        dt = -dt;
    }
}

void updateTrackProbability(benchmark::State& state) {
    const auto system = fusedTrack();
    double gain = 2.0;
    for ([[maybe_unused]] auto _ : state) {
        system->updateTrackProbability(gain);
        benchmark::DoNotOptimize(system->getTrackProbability());
        gain = 1.0 / gain;
    }
}

BENCHMARK(updateStateOfNewReport);
BENCHMARK(updateStateOfRepeatedReport);
BENCHMARK(applyDefusion);
BENCHMARK(predictWithTwoSensorTracks);
BENCHMARK(updateTrackProbability);

}  // namespace
