// SPDX-License-Identifier: Apache-2.0
// Plays a scenario and writes down what the sensors report.
#pragma once

#include "recording/Recording.h"
#include "scenario/Scenario.h"
#include "simulate/Motion.h"
#include "simulate/RadarSensor.h"
#include "simulate/Random.h"
#include "simulate/VideoSensor.h"

#include <cstdint>
#include <functional>
#include <map>
#include <utility>

namespace Workbench {

/// One run of a scenario. The same scenario and seed give the same recording, byte for byte.
class Simulation {
public:
    /// @param scenario must outlive this
    /// @param seed seed of everything that is drawn
    Simulation(const Scenario& scenario, std::uint64_t seed);

    /// @return the header of the recording
    RecordingHeader header() const;

    /// Plays the scenario.
    /// @param write receives the lines in the order in which a host would receive them
    /// @param progress receives the simulated time after each frame, s
    void run(const std::function<void(const RecordingLine&)>& write,
             const std::function<void(double)>& progress);

private:
    // When a sensor looks next and when its last frame arrived.
    struct Schedule {
        const SensorTraits* traits;
        Veskar::Source source;
        Random random;
        std::uint64_t frame = 0;
        double lastReceived = 0.0;

        double next() const;
    };
    template <typename Sensor>
    void look(Schedule& schedule, Sensor& sensor);
    void recordTruth(double time);
    void deliver(double until, const std::function<void(const RecordingLine&)>& write);

    const Scenario& scenario_;
    std::uint64_t seed_;
    Motion motion_;
    Projection statedCamera_;
    VideoSensor video_;
    RadarSensor radar_;
    // On their way to the host, by arrival; equal arrivals in the order of their making.
    std::multimap<double, RecordingLine> underway_;
};

}  // namespace Workbench
