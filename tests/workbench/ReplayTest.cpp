// SPDX-License-Identifier: Apache-2.0
#include "Installation.h"
#include "Process.h"
#include "replay/Replay.h"
#include "scenario/Scenario.h"
#include "simulate/Simulation.h"

#include <cmath>
#include <vector>

#include <gtest/gtest.h>

using Workbench::FusedFrame;
using Workbench::RadarQueue;
using Workbench::Replay;
using Workbench::SensorFrame;

namespace {

Workbench::RadarReport radarTrack(int id) {
    Workbench::RadarReport report;
    report.id = id;
    report.range = 20.0 + 3.0 * id;
    report.azimuth = 0.0;
    report.radialSpeed = 1.0;
    return report;
}

struct Collected {
    std::vector<FusedFrame> frames;
    Workbench::ReplayCounts counts;
};

Collected replay(const std::vector<SensorFrame>& frames,
                 const Workbench::RecordingHeader& header = VeskarTest::installation()) {
    Collected collected;
    const Workbench::HostAdapter adapter(header, VeskarTest::configuration());
    Replay run(header, VeskarTest::configuration(), [&](Workbench::FrameReading reading) {
        collected.frames.push_back(placed(std::move(reading), adapter));
    });
    for (const SensorFrame& frame : frames) {
        run.feed(frame);
    }
    collected.counts = run.counts();
    return collected;
}

}  // namespace

TEST(RadarQueue, HoldsFramesUntilVideoHasComeNear) {
    RadarQueue queue;
    queue.videoFused(10.0);
    EXPECT_EQ(queue.radarGiven(10.05, 10.1), 10.05);
    EXPECT_FALSE(queue.radarGiven(10.15, 10.2));
    queue.videoFused(10.1);
    EXPECT_EQ(queue.radarGiven(10.19, 10.3), 10.19);
}

TEST(RadarQueue, LetsFramesGoThatAreMoreThanAWaitOld) {
    RadarQueue queue;
    EXPECT_FALSE(queue.radarGiven(100.0, 100.0));
    EXPECT_FALSE(queue.radarGiven(100.1, 101.5));
    EXPECT_EQ(queue.radarGiven(100.2, 101.51), 100.0);
}

TEST(Replay, WritesOneFrameForEachThatWasFused) {
    // The first radar frame waits for video and is fused right after the video frame it waited for.
    const auto collected = replay({{Veskar::VideoObject, 1.0, 1.0, {}},
                                   {Veskar::Radar, 1.1, 1.1, {radarTrack(1)}},
                                   {Veskar::VideoObject, 1.1, 1.11, {}},
                                   {Veskar::Radar, 1.15, 1.15, {radarTrack(1)}}});
    ASSERT_EQ(collected.frames.size(), 4u);
    EXPECT_EQ(collected.frames[0].source, Veskar::VideoObject);
    EXPECT_EQ(collected.frames[1].source, Veskar::VideoObject);
    EXPECT_EQ(collected.frames[1].time, 1.1);
    EXPECT_EQ(collected.frames[2].source, Veskar::Radar);
    EXPECT_NEAR(collected.frames[2].time, 1.1, 1e-9);
    EXPECT_EQ(collected.frames[2].received, 1.11);
    EXPECT_EQ(collected.frames[3].source, Veskar::Radar);
    EXPECT_NEAR(collected.frames[3].time, 1.15, 1e-9);
    EXPECT_EQ(collected.frames[3].received, 1.15);
    ASSERT_EQ(collected.frames[3].tracks.size(), 1u);
    EXPECT_NEAR(collected.frames[3].tracks[0].range, 23.0, 0.5);
}

TEST(Replay, ItsOwnEmptyVideoFrameReleasesAWaitingRadarFrame) {
    // Video falls silent at 1.0; the radar frame of 1.15 waits for it until 1.2.
    const auto collected = replay({{Veskar::VideoObject, 1.0, 1.0, {}},
                                   {Veskar::Radar, 1.15, 1.15, {radarTrack(1)}},
                                   {Veskar::Radar, 1.21, 1.21, {radarTrack(1)}}});
    EXPECT_EQ(collected.counts.addedFrames, 1u);
    ASSERT_EQ(collected.frames.size(), 4u);
    EXPECT_EQ(collected.frames[1].source, Veskar::VideoObject);
    EXPECT_EQ(collected.frames[2].source, Veskar::Radar);
    EXPECT_NEAR(collected.frames[2].time, 1.15, 1e-9);
    EXPECT_NEAR(collected.frames[2].received, 1.2, 1e-9);
}

TEST(Replay, RadarFramesDoNotWaitForAVideoThatIsSilent) {
    std::vector<SensorFrame> frames;
    frames.reserve(40);
    for (int i = 0; i < 40; ++i) {
        frames.push_back({Veskar::Radar, 5.0 + 0.1 * i, 5.02 + 0.1 * i, {radarTrack(1)}});
    }
    const auto collected = replay(frames);
    EXPECT_GT(collected.counts.addedFrames, 35u);
    for (const FusedFrame& frame : collected.frames) {
        // Until video is known to be silent they do wait.
        if (frame.source == Veskar::Radar && frame.received > 5.3) {
            EXPECT_NEAR(frame.received - frame.time, 0.02, 1e-9);
        }
    }
    EXPECT_EQ(collected.frames.back().source, Veskar::Radar);
    EXPECT_TRUE(collected.frames.back().tracks.at(0).confirmed);
}

TEST(Replay, ASlowRadarKeepsItsTracksAlive) {
    std::vector<SensorFrame> frames;
    double nextRadar = 1.0;
    for (double time = 1.0; time < 12.0; time += 0.1) {
        frames.push_back({Veskar::VideoObject, time, time, {}});
        if (time >= nextRadar) {
            frames.push_back({Veskar::Radar, time, time + 0.01, {radarTrack(1)}});
            nextRadar += 1.6;
        }
    }
    const auto collected = replay(frames);
    // Born anew at the second scan, when the radar is known to be slow, and then the same to the
    // end.
    std::set<int> ids;
    for (const FusedFrame& frame : collected.frames) {
        if (frame.time > 3.0) {
            ASSERT_EQ(frame.tracks.size(), 1u) << frame.time;
            ids.insert(frame.tracks[0].id);
        }
    }
    EXPECT_EQ(ids.size(), 1u);
}

TEST(Replay, MoreTracksThanAnAssignmentHoldsAreReportedAndSurvived) {
    std::vector<SensorFrame> frames;
    for (int i = 0; i < 10; ++i) {
        SensorFrame frame{Veskar::VideoObject, 1.0 + 0.1 * i, 1.0 + 0.1 * i, {}};
        for (int id = 0; id < (i < 5 ? 600 : 3); ++id) {
            Workbench::VideoReport report;
            report.id = id;
            report.box = {-0.9 + 0.003 * id, -0.5, -0.899 + 0.003 * id, -0.3};
            report.velocity = Eigen::Vector2d::Zero();
            report.labels.objectClass = {"human", 0.9};
            frame.tracks.emplace_back(report);
        }
        frames.push_back(std::move(frame));
    }
    const auto collected = replay(frames);
    EXPECT_GT(collected.counts.failedFrames, 0u);
    EXPECT_EQ(collected.counts.firstFailure,
              "video frame at 1.1 s: One of the JVA costMatrix dimensions was too big (>512)");
    EXPECT_EQ(collected.frames.size(), 10u);
}

TEST(Replay, PutsTheWalkerWhereHeIs) {
    Workbench::Scenario scenario =
        Workbench::readScenario(VeskarTest::dataFile("tiny.scenario.json"));
    Workbench::Simulation simulation(scenario, 3);
    std::vector<SensorFrame> frames;
    simulation.run(
        [&](const Workbench::RecordingLine& line) {
            if (const auto* frame = std::get_if<SensorFrame>(&line)) {
                frames.push_back(*frame);
            }
        },
        [](double) {});
    const auto collected = replay(frames, simulation.header());
    const FusedFrame& last = collected.frames.back();
    const Eigen::Vector2d truth(14.75, 5.0 - 1.5 * last.time);
    double nearest = 1e9;
    for (const Workbench::FusedTrack& track : last.tracks) {
        if (track.confirmed && track.ground) {
            nearest = std::min(nearest, (track.ground->position - truth).norm());
        }
    }
    EXPECT_LT(nearest, 0.8);
}
