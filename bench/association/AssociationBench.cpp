// SPDX-License-Identifier: Apache-2.0
// Whole association calls, compared with the literal rules on the same scene.
#include <veskar/TrackAssociator.h>

#include "association/LiteralAssociator.h"
#include "support/TrackFactory.h"

#include <array>
#include <cmath>
#include <string>
#include <unordered_set>
#include <vector>

#include <benchmark/benchmark.h>

namespace {

using Veskar::Source;
using VeskarTest::RandomEstimates;
using VeskarTest::Report;
using VeskarTest::SensorTracks;
using VeskarTest::SystemTracks;

/// Objects in front of a camera: half of them video-only, half radar-only system tracks, and a
/// radar frame with new reports.
struct Frame {
    SystemTracks systems;
    SensorTracks sensors;
};

enum class Density {
    Far,   ///< a hundred distant places: one pair in a hundred is close
    Close  ///< all objects at one place
};

using Place = std::array<double, 3>;  ///< u, v, range

Report makeReport(RandomEstimates& random, Source source, int id, const Place& place) {
    Report report;
    report.source = source;
    report.id = id;
    report.className = random.integer(0, 3) == 0 ? "car" : "human";
    report.state << place[0], 0.1, place[1], 0.0, place[2], 0.5;
    for (int k = 0; k < 6; ++k) {
        report.state[k] += random.uniform(-0.01, 0.01);
    }
    report.covariance = random.covariance() * 1e-3;
    return report;
}

Frame makeFrame(int count, Density density, Source newReports, bool bothSides) {
    RandomEstimates random(31);
    const int places = density == Density::Close ? 1 : 100;
    const auto place = [&](int k) {
        return Place{std::cos(2.4 * k) * 0.9, std::sin(1.7 * k) * 0.9, 5.0 + 2.0 * k};
    };
    Frame frame;
    for (int i = 0; i < count; ++i) {
        const Source source = bothSides && i % 2 == 1 ? Source::Radar : Source::VideoObject;
        auto track = VeskarTest::makeTrack(makeReport(random, source, i, place(i % places)));
        track->startTime = random.uniform(0.0, 10.0);
        frame.systems.push_back(VeskarTest::makeSystemTrack(track, i));
        const int reported = random.integer(0, places - 1);
        frame.sensors.push_back(
            VeskarTest::makeTrack(makeReport(random, newReports, 10000 + i, place(reported))));
    }
    return frame;
}

Veskar::Config makeConfig(bool split) {
    Veskar::Config config;
    config.module.splitGating = split;
    config.module.useJVA = true;
    config.module.gatingDistance = 5.0;
    config.module.positionGatingDistance = 3.5;
    config.module.velocityGatingSimilarity = 0.5;
    config.module.velocityMinGatingLimit = 0.05;
    config.module.stationaryBlockingMinSpeed = 10.0 / 3.6;
    config.module.stationaryBlockingMaxUVSpeed = 0.03;
    config.module.stationaryBlockingMinVideoAge = 3.0;
    config.detectionPriority.vodHeightFractionLimit = 0.1;
    return config;
}

template <typename Associator, Density density, bool split>
void sensorToSystem(benchmark::State& state) {
    const Frame frame = makeFrame(static_cast<int>(state.range(0)), density, Source::Radar, false);
    Associator associator(makeConfig(split));
    std::unordered_set<int> removedIds;
    std::size_t pairs = 0;
    for ([[maybe_unused]] auto _ : state) {
        pairs =
            associator
                .sensorToSystemAssociation(frame.sensors, frame.systems, Source::Radar, removedIds)
                .size();
    }
    state.counters["pairs"] = static_cast<double>(pairs);
}

template <typename Associator, Density density, bool split>
void systemToSystem(benchmark::State& state) {
    const Frame frame = makeFrame(static_cast<int>(state.range(0)), density, Source::Radar, true);
    Associator associator(makeConfig(split));
    std::size_t pairs = 0;
    for ([[maybe_unused]] auto _ : state) {
        pairs = associator.systemToSystemAssociation(frame.systems, {}).size();
    }
    state.counters["pairs"] = static_cast<double>(pairs);
}

/// The steady state: every sensor track is held already.
void sensorToSystemHeld(benchmark::State& state) {
    Frame frame = makeFrame(static_cast<int>(state.range(0)), Density::Far, Source::Radar, false);
    for (std::size_t i = 0; i < frame.systems.size(); ++i) {
        frame.systems[i]->updateState(frame.sensors[i]);
    }
    Veskar::TrackAssociator associator(makeConfig(false));
    std::unordered_set<int> removedIds;
    for ([[maybe_unused]] auto _ : state) {
        benchmark::DoNotOptimize(
            associator
                .sensorToSystemAssociation(frame.sensors, frame.systems, Source::Radar, removedIds)
                .size());
    }
}

using Veskar::TrackAssociator;
using VeskarTest::LiteralAssociator;

const std::vector<std::int64_t> all = {16, 64, 128, 512};
const std::vector<std::int64_t> small = {16, 64};

#define VESKAR_ASSOCIATION_BENCH(call, name, density, split)    \
    BENCHMARK_TEMPLATE(call, TrackAssociator, density, split)   \
        ->ArgsProduct({all})                                    \
        ->Name(#call "/" name);                                 \
    BENCHMARK_TEMPLATE(call, LiteralAssociator, density, split) \
        ->ArgsProduct({small})                                  \
        ->Name(#call "/" name "/literal")

VESKAR_ASSOCIATION_BENCH(sensorToSystem, "far", Density::Far, false);
VESKAR_ASSOCIATION_BENCH(sensorToSystem, "farSplit", Density::Far, true);
VESKAR_ASSOCIATION_BENCH(sensorToSystem, "close", Density::Close, false);
VESKAR_ASSOCIATION_BENCH(sensorToSystem, "closeSplit", Density::Close, true);
VESKAR_ASSOCIATION_BENCH(systemToSystem, "far", Density::Far, false);
VESKAR_ASSOCIATION_BENCH(systemToSystem, "farSplit", Density::Far, true);
VESKAR_ASSOCIATION_BENCH(systemToSystem, "close", Density::Close, false);
VESKAR_ASSOCIATION_BENCH(systemToSystem, "closeSplit", Density::Close, true);
BENCHMARK(sensorToSystemHeld)->ArgsProduct({all})->Name("sensorToSystem/held");

}  // namespace
