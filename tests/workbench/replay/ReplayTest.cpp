// SPDX-License-Identifier: Apache-2.0
#include "Installation.h"
#include "Process.h"
#include "host/pipeline/ReplayOptions.h"
#include "simulate/Simulation.h"
#include "simulate/scenario/Scenario.h"

#include <algorithm>

#include <gtest/gtest.h>

using Workbench::FusedFrame;
using Workbench::FusionPipeline;
using Workbench::SensorFrame;

TEST(Replay, PutsTheWalkerWhereHeIs) {
    Workbench::Scenario scenario =
        Workbench::readScenario(VeskarTest::dataFile("tiny.scenario.json"));
    Workbench::Simulation simulation(scenario, 3);
    FusedFrame last;
    FusionPipeline pipeline(
        simulation.header(), VeskarTest::configuration(),
        [&](const FusedFrame& frame) { last = frame; }, {}, Workbench::replayOptions());
    simulation.run(
        [&](const Workbench::RecordingLine& line) {
            if (const auto* frame = std::get_if<SensorFrame>(&line)) {
                pipeline.push(*frame);
            }
        },
        [](double) {});
    const Eigen::Vector2d truth(14.75, 5.0 - 1.5 * last.time);
    double nearest = 1e9;
    for (const Workbench::FusedTrack& track : last.tracks) {
        if (track.confirmed && track.ground) {
            nearest = std::min(nearest, (track.ground->position - truth).norm());
        }
    }
    EXPECT_LT(nearest, 0.8);
}
