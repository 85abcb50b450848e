// SPDX-License-Identifier: Apache-2.0
// Cost of the comparisons that association makes for every pair.
#include <veskar/Track.h>

#include "support/EstimatePool.h"
#include "support/TrackFactory.h"

#include <memory>
#include <vector>

#include <benchmark/benchmark.h>

namespace {

using Veskar::Track;
using VeskarBench::EstimatePool;

/// A ring of tracks.
class TrackPool {
public:
    TrackPool() {
        EstimatePool pool;
        for (int i = 0; i < 509; ++i) {
            tracks_.push_back(VeskarTest::makeTrack(Veskar::Source::Radar, i, pool.next()));
        }
    }

    const Track& next() { return *tracks_[position_++ % tracks_.size()]; }

private:
    std::vector<std::shared_ptr<Track>> tracks_;
    std::size_t position_ = 0;
};

template <typename Comparison>
void compare(benchmark::State& state, Comparison comparison) {
    TrackPool pool;
    for ([[maybe_unused]] auto _ : state) {
        const Track& a = pool.next();
        const Track& b = pool.next();
        benchmark::DoNotOptimize(comparison(a, b));
    }
}

void statisticalDistance(benchmark::State& state) {
    compare(state, [](const Track& a, const Track& b) { return a.statisticalDistance(b); });
}

void positionStatisticalDistance(benchmark::State& state) {
    compare(state, [](const Track& a, const Track& b) { return a.positionStatisticalDistance(b); });
}

void logPdf(benchmark::State& state) {
    compare(state, [](const Track& a, const Track& b) { return a.logPdf(b); });
}

void velocitySimilarity(benchmark::State& state) {
    compare(state, [](const Track& a, const Track& b) { return a.velocitySimilarity(b, 0.3); });
}

BENCHMARK(statisticalDistance);
BENCHMARK(positionStatisticalDistance);
BENCHMARK(logPdf);
BENCHMARK(velocitySimilarity);

}  // namespace
