// SPDX-License-Identifier: Apache-2.0
// What the live view costs: the fusion's part, and that of the server.
#include "host/TestInstallation.h"
#include "live/Walkers.h"
#include "live/view/StateText.h"
#include "live/view/Viewer.h"

#include <array>
#include <memory>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

namespace {

using Veskar::Live::Viewer;
using Veskar::Live::ViewMailbox;
using Veskar::Live::ViewNews;
using Veskar::Live::ViewState;

/// As after a frame with so many people, each of whom both sensors see.
ViewState stateOf(std::size_t people) {
    const Veskar::Host::Installation installation = VeskarTest::testInstallation();
    const VeskarBench::Walkers walkers(installation, people);
    ViewState state;
    state.adapter =
        std::make_shared<Veskar::Host::HostAdapter>(installation, VeskarTest::configuration());
    state.video = walkers.seenBy(Veskar::VideoObject, 1.0);
    state.radar = walkers.seenBy(Veskar::Radar, 1.0);
    Veskar::Host::FusedTrack track;
    track.confirmed = true;
    state.fused = {1.0, 1.0, Veskar::VideoObject, {}};
    for (std::size_t i = 0; i < people; ++i) {
        track.id = static_cast<int>(i);
        state.fused.tracks.push_back(track);
    }
    return state;
}

/// On the thread of the fusion, ten times a second while there are viewers.
void handOver(benchmark::State& state) {
    const ViewState shown = stateOf(static_cast<std::size_t>(state.range(0)));
    ViewMailbox mailbox;
    for (auto _ : state) {
        mailbox.post(ViewState(shown));
    }
}

/// On the thread of the server, once for all viewers.
void writeState(benchmark::State& state) {
    const ViewState shown = stateOf(static_cast<std::size_t>(state.range(0)));
    std::size_t bytes = 0;
    for (auto _ : state) {
        const std::string text = textOf(shown);
        bytes = text.size();
        benchmark::DoNotOptimize(text.data());
    }
    state.counters["bytes"] = static_cast<double>(bytes);
}

/// On the thread of the server, all that is sent to so many viewers of 64 people, but the sending.
void tellViewers(benchmark::State& state) {
    const ViewState shown = stateOf(64);
    ViewNews news("{}");
    std::vector<Viewer> viewers(static_cast<std::size_t>(state.range(0)),
                                Viewer(nullptr, {}, news));
    std::array<char, 16384> buffer{};
    for (auto _ : state) {
        ViewMailbox::Contents contents;
        contents.state = shown;
        news.add(std::move(contents));
        for (Viewer& viewer : viewers) {
            while (viewer.read(news, buffer.data(), buffer.size()) > 0) {
            }
        }
    }
}

}  // namespace

BENCHMARK(handOver)->Arg(16)->Arg(64)->Arg(256)->Unit(benchmark::kMicrosecond);
BENCHMARK(writeState)->Arg(16)->Arg(64)->Arg(256)->Unit(benchmark::kMicrosecond);
BENCHMARK(tellViewers)->Arg(1)->Arg(2)->Arg(10)->Arg(16)->Unit(benchmark::kMicrosecond);
