// SPDX-License-Identifier: Apache-2.0
// A fusion module with a simulated clock, and a one-dimensional world: objects differ in u only.
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

/// Default variance of every state component of the tracks below.
constexpr double usualVariance = 0.01;
/// Width of the gate in u for two tracks of that variance, with the configuration below: 3 sqrt(2)
/// sigma.
constexpr double gateWidth = 0.42426;
/// Outside of it.
constexpr double far = 2.0 * gateWidth;

/// @return optimal assignment, a combined gate of 3, confirmation at 0.9 and 0.6
Veskar::Config fusionConfig();

/// The properties of a report that tests vary.
struct Seen {
    double u = 0.0;
    double velocity = 0.0;  ///< along u
    double gain = 2.0;
    std::string className = "human";
    double variance = usualVariance;
};

/// @return a video-object track that equals all others except in these properties
std::shared_ptr<Veskar::Track> video(int id, double time, const Seen& seen = {});
/// @return a radar track that equals all others except in these properties
std::shared_ptr<Veskar::Track> radar(int id, double time, const Seen& seen = {});

/// The state of the fusion, for bitwise comparison.
struct Outcome {
    std::vector<int> ids;
    std::vector<double> numbers;

    bool operator==(const Outcome& other) const {
        return ids == other.ids && numbers == other.numbers;
    }
};

class FusionTest : public testing::Test {
protected:
    /// The module, created from `config` at first use.
    Veskar::FusionModule& module();
    /// The next use creates another module.
    void restart() { made_.reset(); }

    /// One video frame.
    void showVideo(double time, const Tracks& tracks) {
        module().cycle(Veskar::VideoObject, time, tracks);
    }
    /// One radar frame; it is held back unless video time is close.
    void showRadar(double time, const Tracks& tracks) {
        module().cycle(Veskar::Radar, time, tracks);
    }
    /// Fuses a radar frame at once, independently of video time.
    void fuseRadar(double time, const Tracks& tracks) {
        module().cycleFrame(Veskar::Radar, time, tracks);
    }
    /// Creates only system track 1, from video track 1 and radar track 1 at u = 0; the time is 10 s
    /// afterwards.
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
