// SPDX-License-Identifier: Apache-2.0
// A fusion module on a clock in the test's hand, and a world of one dimension: every object stands
// or moves along u, and everything else agrees.
#pragma once

#include <veskar/FusionModule.h>

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace VeskarTest {

using Tracks = std::vector<std::shared_ptr<Veskar::Track>>;

/// Variance of every state component of the tracks below, unless a test wants another.
constexpr double usualVariance = 0.01;
/// The gate of the configuration below, in u, for two tracks of that variance: 3 sqrt(2) sigma.
constexpr double gateWidth = 0.42426;
/// Outside of it.
constexpr double far = 2.0 * gateWidth;

/// @return optimal assignment, a combined gate of 3, confirmation at 0.9 and 0.6
Veskar::Config fusionConfig();

/// What a test varies of a report.
struct Seen {
    double u = 0.0;
    double velocity = 0.0;  ///< along u
    double gain = 2.0;
    std::string className = "human";
    double variance = usualVariance;
};

/// @return a video-object track that agrees with all others but for what is seen
std::shared_ptr<Veskar::Track> video(int id, double time, const Seen& seen = {});
/// @return a radar track that agrees with all others but for what is seen
std::shared_ptr<Veskar::Track> radar(int id, double time, const Seen& seen = {});

/// What the fusion has come to, for bitwise comparison.
struct Outcome {
    std::vector<int> ids;
    std::vector<double> numbers;

    bool operator==(const Outcome& other) const {
        return ids == other.ids && numbers == other.numbers;
    }
};

class FusionTest : public testing::Test {
protected:
    /// The module, made from `config` by the first use.
    Veskar::FusionModule& module();
    /// Lets the next use make another module.
    void restart() { made_.reset(); }

    /// One video frame.
    void showVideo(double time, const Tracks& tracks) {
        module().cycle(Veskar::VideoObject, time, tracks);
    }
    /// One radar frame; it waits unless video time has come near.
    void showRadar(double time, const Tracks& tracks) {
        module().cycle(Veskar::Radar, time, tracks);
    }
    /// A radar frame that is fused at once, whatever video did before.
    void fuseRadar(double time, const Tracks& tracks) {
        module().cycleFrame(Veskar::Radar, time, tracks);
    }
    /// Makes system track 1 of video track 1 and radar track 1 at u = 0, and nothing else; the time
    /// is 10 s afterwards.
    void makeFusedTrack(const Seen& seen = {});

    /// Sets the steady clock.
    void setClock(double seconds);

    Veskar::SystemTrack& systemTrack(std::size_t index) { return *module().systemTracks.at(index); }
    std::vector<int> systemIds();
    /// @return ids of the sensor tracks that a system track holds
    std::vector<int> heldIds(std::size_t index, Veskar::Source source);
    Outcome outcome();

    Veskar::Config config = fusionConfig();
    std::chrono::nanoseconds now{};
    int clockReadings = 0;

private:
    std::unique_ptr<Veskar::FusionModule> made_;
};

}  // namespace VeskarTest
