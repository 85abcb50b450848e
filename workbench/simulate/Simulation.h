// SPDX-License-Identifier: Apache-2.0
// Simulates a scenario and records the reports of its sensors.
#pragma once

#include "recording/Recording.h"
#include "simulate/Motion.h"
#include "simulate/RadarSensor.h"
#include "simulate/Random.h"
#include "simulate/VideoSensor.h"
#include "simulate/scenario/Scenario.h"

#include <cstdint>
#include <functional>
#include <map>
#include <utility>

namespace Workbench {

/// One run of a scenario. The same scenario and seed give identical recordings.
class Simulation {
public:
    /// @param scenario must outlive this
    /// @param seed seed of all random numbers
    Simulation(const Scenario& scenario, std::uint64_t seed);

    /// @return the header of the recording
    RecordingHeader header() const;

    /// Runs the simulation.
    /// @param write receives the lines in the order of their arrival
    /// @param progress receives the simulated time after each frame, s
    void run(const std::function<void(const RecordingLine&)>& write,
             const std::function<void(double)>& progress);

private:
    // When the next frame of a sensor is due and when its last one arrived.
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
    // Frames on their way to the host, by time of arrival; equal times in the order of creation.
    std::multimap<double, RecordingLine> underway_;
};

}  // namespace Workbench
