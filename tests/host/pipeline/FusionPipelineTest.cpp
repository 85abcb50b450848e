// SPDX-License-Identifier: Apache-2.0
#include <veskar-host/FrameRecorder.h>
#include <veskar-host/FusionPipeline.h>

#include "host/TestInstallation.h"
#include "support/CommaLocale.h"
#include "support/SyslogCapture.h"
#include "support/TemporaryDirectory.h"

#include <fstream>
#include <limits>
#include <set>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using Veskar::Host::FusedFrame;
using Veskar::Host::FusionPipeline;
using Veskar::Host::SensorFrame;

namespace {

Veskar::Host::RadarReport radarTrack(int id) {
    Veskar::Host::RadarReport report;
    report.id = id;
    report.range = 20.0 + 3.0 * id;
    report.azimuth = 0.0;
    report.radialSpeed = 1.0;
    return report;
}

/// The tests do not ask the machine that they run on where it stands.
FusionPipeline::Options withoutBus() {
    FusionPipeline::Options options;
    options.asksForPosition = false;
    return options;
}

struct Collected {
    std::vector<FusedFrame> frames;
    FusionPipeline::Counts counts;
};

Collected fuse(const std::vector<SensorFrame>& frames) {
    Collected collected;
    FusionPipeline::Options options = withoutBus();
    options.uptime = 100.0;
    FusionPipeline pipeline(
        VeskarTest::testInstallation(), VeskarTest::configuration(),
        [&](const FusedFrame& frame) { collected.frames.push_back(frame); }, {}, options);
    for (const SensorFrame& frame : frames) {
        pipeline.push(frame);
    }
    collected.counts = pipeline.counts();
    return collected;
}

}  // namespace

TEST(FusionPipeline, WritesOneFrameForEachThatWasFused) {
    // The first radar frame is held back and fused right after the video frame that it waited for.
    const auto collected = fuse({{Veskar::VideoObject, 1.0, 1.0, {}},
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

TEST(FusionPipeline, ItsOwnEmptyVideoFrameReleasesAWaitingRadarFrame) {
    // Video falls silent at 1.0; the radar frame of 1.15 is held back until 1.2.
    const auto collected = fuse({{Veskar::VideoObject, 1.0, 1.0, {}},
                                 {Veskar::Radar, 1.15, 1.15, {radarTrack(1)}},
                                 {Veskar::Radar, 1.21, 1.21, {radarTrack(1)}}});
    EXPECT_EQ(collected.counts.addedFrames, 1u);
    ASSERT_EQ(collected.frames.size(), 4u);
    EXPECT_EQ(collected.frames[1].source, Veskar::VideoObject);
    EXPECT_EQ(collected.frames[2].source, Veskar::Radar);
    EXPECT_NEAR(collected.frames[2].time, 1.15, 1e-9);
    EXPECT_NEAR(collected.frames[2].received, 1.2, 1e-9);
}

TEST(FusionPipeline, ARadarFrameFarAheadWaitsForMoreThanOneVideoFrame) {
    const auto collected = fuse({{Veskar::VideoObject, 1.0, 1.0, {}},
                                 {Veskar::Radar, 1.3, 1.05, {radarTrack(1)}},
                                 {Veskar::VideoObject, 1.1, 1.1, {}},
                                 {Veskar::VideoObject, 1.25, 1.2, {}}});
    ASSERT_EQ(collected.frames.size(), 4u);
    EXPECT_EQ(collected.frames[2].source, Veskar::VideoObject);
    EXPECT_EQ(collected.frames[3].source, Veskar::Radar);
    EXPECT_EQ(collected.frames[3].received, 1.2);
}

TEST(FusionPipeline, StatesTimesAsTheSensorsDid) {
    // 100.0 + 0.7 - 100.0 is not 0.7.
    const auto collected = fuse({{Veskar::VideoObject, 0.7, 0.7, {}},
                                 {Veskar::Radar, 0.71, 0.72, {radarTrack(1)}},
                                 {Veskar::VideoObject, 0.8, 0.8, {}}});
    ASSERT_EQ(collected.frames.size(), 3u);
    EXPECT_EQ(collected.frames[0].time, 0.7);
    EXPECT_EQ(collected.frames[1].time, 0.71);
    EXPECT_EQ(collected.frames[1].tracks.size(), 1u);
    EXPECT_EQ(collected.frames[2].time, 0.8);
}

TEST(FusionPipeline, RadarFramesDoNotWaitForAVideoThatIsSilent) {
    std::vector<SensorFrame> frames;
    frames.reserve(40);
    for (int i = 0; i < 40; ++i) {
        frames.push_back({Veskar::Radar, 5.0 + 0.1 * i, 5.02 + 0.1 * i, {radarTrack(1)}});
    }
    const auto collected = fuse(frames);
    EXPECT_GT(collected.counts.addedFrames, 35u);
    for (const FusedFrame& frame : collected.frames) {
        // They are held back until video counts as silent.
        if (frame.source == Veskar::Radar && frame.received > 5.3) {
            EXPECT_NEAR(frame.received - frame.time, 0.02, 1e-9);
        }
    }
    EXPECT_EQ(collected.frames.back().source, Veskar::Radar);
    EXPECT_TRUE(collected.frames.back().tracks.at(0).confirmed);
}

TEST(FusionPipeline, ASlowRadarKeepsItsTracksAlive) {
    std::vector<SensorFrame> frames;
    double nextRadar = 1.0;
    for (int i = 0; i < 110; ++i) {
        const double time = 1.0 + 0.1 * i;
        frames.push_back({Veskar::VideoObject, time, time, {}});
        if (time >= nextRadar) {
            frames.push_back({Veskar::Radar, time, time + 0.01, {radarTrack(1)}});
            nextRadar += 1.6;
        }
    }
    const auto collected = fuse(frames);
    // Started anew at the second scan, when the radar is recognised as slow, then the same track to
    // the end.
    std::set<int> ids;
    for (const FusedFrame& frame : collected.frames) {
        if (frame.time > 3.0) {
            ASSERT_EQ(frame.tracks.size(), 1u) << frame.time;
            ids.insert(frame.tracks[0].id);
        }
    }
    EXPECT_EQ(ids.size(), 1u);
}

TEST(FusionPipeline, MoreTracksThanAnAssignmentHoldsAreReportedAndSurvived) {
    std::vector<SensorFrame> frames;
    for (int i = 0; i < 10; ++i) {
        SensorFrame frame{Veskar::VideoObject, 1.0 + 0.1 * i, 1.0 + 0.1 * i, {}};
        for (int id = 0; id < (i < 5 ? 600 : 3); ++id) {
            Veskar::Host::VideoReport report;
            report.id = id;
            report.box = {-0.9 + 0.003 * id, -0.5, -0.899 + 0.003 * id, -0.3};
            report.velocity = Eigen::Vector2d::Zero();
            report.labels.objectClass = {"human", 0.9};
            frame.tracks.emplace_back(report);
        }
        frames.push_back(std::move(frame));
    }
    const auto collected = fuse(frames);
    EXPECT_GT(collected.counts.failedFrames, 0u);
    EXPECT_EQ(collected.counts.firstFailure,
              "video frame at 1.1 s: One of the JVA costMatrix dimensions was too big (>512)");
    EXPECT_EQ(collected.frames.size(), 10u);
}

TEST(FusionPipeline, SaysNothingOfAFrameThatTheFusionHoldsBack) {
    const VeskarTest::SyslogCapture log;
    // One stamp more than an hour ahead, then the old time base again: the frame is dropped.
    const auto collected = fuse({{Veskar::VideoObject, 1.0, 1.0, {}},
                                 {Veskar::VideoObject, 9000.0, 1.05, {}},
                                 {Veskar::VideoObject, 1.1, 1.1, {}}});
    ASSERT_EQ(collected.frames.size(), 2u);
    EXPECT_EQ(collected.frames[0].time, 1.0);
    EXPECT_NEAR(collected.frames[1].time, 1.1, 1e-9);
    EXPECT_EQ(collected.counts.videoFrames, 3u);
}

TEST(FusionPipeline, GoesOnWithANewTimeBase) {
    const VeskarTest::SyslogCapture log;
    // Both frames of the new time base are fused by the call with the second one, and passed on as
    // one.
    const auto collected = fuse({{Veskar::VideoObject, 1.0, 1.0, {}},
                                 {Veskar::VideoObject, 9000.0, 1.1, {}},
                                 {Veskar::VideoObject, 9000.1, 1.2, {}},
                                 {Veskar::Radar, 9000.15, 1.25, {radarTrack(1)}}});
    ASSERT_EQ(collected.frames.size(), 3u);
    EXPECT_NEAR(collected.frames[1].time, 9000.1, 1e-9);
    EXPECT_EQ(collected.frames[2].source, Veskar::Radar);
    EXPECT_EQ(collected.frames[2].tracks.size(), 1u);
}

TEST(FusionPipeline, TellsAnObserverEveryDecision) {
    class Watcher : public Veskar::FusionObserver {
    public:
        void onFrame(const Frame& frame) override { times.push_back(frame.timestamp); }
        void onStart(const Link& link) override { starts.push_back(link.sensorTrackId); }
        void onContinuation(const Continuation& /*continuation*/) override { ++continuations; }
        void onConfirmation(int /*id*/, double /*probability*/, double /*limit*/) override {
            ++confirmations;
        }
        void onPruning(const Pruning& /*pruning*/) override { ++prunings; }
        void onDeletion(int /*id*/, DeletionReason /*reason*/) override { ++deletions; }

        std::vector<double> times;
        std::vector<int> starts;
        int continuations = 0;
        int confirmations = 0;
        int prunings = 0;
        int deletions = 0;
    };
    Watcher watcher;
    FusionPipeline pipeline(
        VeskarTest::testInstallation(), VeskarTest::configuration(), [](const FusedFrame&) {}, {},
        withoutBus());
    pipeline.setObserver(&watcher);
    for (int i = 0; i < 20; ++i) {
        pipeline.push({Veskar::Radar, 500.0 + 0.1 * i, 500.0 + 0.1 * i, {radarTrack(7)}});
    }
    EXPECT_EQ(watcher.starts, std::vector<int>{7});
    EXPECT_GT(watcher.continuations, 10);
    EXPECT_EQ(watcher.confirmations, 1);
    EXPECT_EQ(watcher.prunings, 0);
    pipeline.advance(505.0);
    EXPECT_EQ(watcher.prunings, 1);
    EXPECT_EQ(watcher.deletions, 1);
    const std::size_t told = watcher.times.size();
    EXPECT_GT(told, 20u);
    pipeline.setObserver(nullptr);
    pipeline.push({Veskar::Radar, 505.1, 505.1, {radarTrack(7)}});
    EXPECT_EQ(watcher.times.size(), told);
}

TEST(FusionPipeline, UsesTheConstantsItIsGiven) {
    Veskar::Host::HostParameters parameters;
    parameters.radarGain = 1.01;
    bool isConfirmed = false;
    FusionPipeline pipeline(
        VeskarTest::testInstallation(), VeskarTest::configuration(),
        [&](const FusedFrame& frame) {
            isConfirmed |= !frame.tracks.empty() && frame.tracks[0].confirmed;
        },
        parameters, withoutBus());
    for (int i = 0; i < 20; ++i) {
        pipeline.push({Veskar::Radar, 500.0 + 0.1 * i, 500.0 + 0.1 * i, {radarTrack(7)}});
    }
    EXPECT_FALSE(isConfirmed);
}

TEST(FusionPipeline, IsUsableAfterItsSinkHasThrown) {
    int calls = 0;
    FusionPipeline pipeline(
        VeskarTest::testInstallation(), VeskarTest::configuration(),
        [&](const FusedFrame&) {
            if (++calls == 1) {
                throw std::runtime_error("full");
            }
        },
        {}, withoutBus());
    EXPECT_THROW(pipeline.push({Veskar::VideoObject, 500.0, 500.0, {}}), std::runtime_error);
    pipeline.push({Veskar::VideoObject, 500.1, 500.1, {}});
    EXPECT_EQ(calls, 2);
}

TEST(FusionPipeline, FusesTheFrameThatIsPushedAlthoughItsSinkThrows) {
    int calls = 0;
    FusionPipeline pipeline(
        VeskarTest::testInstallation(), VeskarTest::configuration(),
        [&](const FusedFrame&) {
            ++calls;
            throw std::runtime_error("full " + std::to_string(calls));
        },
        {}, withoutBus());
    pipeline.advance(1.0);  // nothing to tell of
    EXPECT_THROW(pipeline.push({Veskar::VideoObject, 500.0, 500.0, {}}), std::runtime_error);
    // An empty video frame is due before the radar frame.
    try {
        pipeline.push({Veskar::Radar, 500.25, 500.25, {radarTrack(1)}});
        FAIL() << "nothing was thrown";
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "full 2");
    }
    EXPECT_EQ(calls, 3);
    EXPECT_EQ(pipeline.fusion().systemTracks.size(), 1U);
    EXPECT_THROW(pipeline.advance(500.5), std::runtime_error);
    EXPECT_EQ(calls, 4);
}

TEST(FusionPipeline, WorksWithoutASink) {
    FusionPipeline pipeline(VeskarTest::testInstallation(), VeskarTest::configuration(), nullptr,
                            {}, withoutBus());
    pipeline.push({Veskar::VideoObject, 500.0, 500.0, {}});
    pipeline.push({Veskar::Radar, 500.0, 500.0, {radarTrack(1)}});
    EXPECT_EQ(pipeline.fusion().systemTracks.size(), 1U);
}

TEST(FusionPipeline, IgnoresWhatIsNoFrameOfItsSensors) {
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    constexpr double infinity = std::numeric_limits<double>::infinity();
    const VeskarTest::SyslogCapture log;
    const auto collected = fuse({{Veskar::VideoObject, 1.0, 1.0, {}},
                                 {Veskar::VideoObject, nan, 1.1, {}},
                                 {Veskar::VideoObject, 1.1, nan, {}},
                                 {Veskar::Radar, 1.1, infinity, {}},
                                 {Veskar::Radar, -infinity, 1.1, {}},
                                 {Veskar::VideoVura, 1.1, 1.1, {}},
                                 {Veskar::VideoObject, 1.1, 1.1, {}}});
    EXPECT_EQ(collected.counts.ignoredFrames, 5U);
    EXPECT_EQ(collected.counts.videoFrames, 2U);
    EXPECT_EQ(collected.counts.radarFrames, 0U);
    EXPECT_EQ(collected.counts.addedFrames, 0U);
    EXPECT_EQ(collected.frames.size(), 2U);
    EXPECT_THAT(log.lines(), testing::IsEmpty());
}

TEST(FusionPipeline, GivesAWrongRadarStampNoCompany) {
    const VeskarTest::SyslogCapture log;
    std::vector<SensorFrame> frames;
    for (int i = 0; i < 40; ++i) {
        const double time = 5.0 + 0.1 * i;
        const double stamp = i == 30 ? time + 4000.0 : time;
        frames.push_back({Veskar::Radar, stamp, time + 0.02, {radarTrack(1)}});
    }
    // Video is silent: the radar frames need not wait for it.
    const auto collected = fuse(frames);
    EXPECT_THAT(log.errors(), testing::ElementsAre(testing::HasSubstr("Held back a frame")));
    std::set<int> ids;
    for (const FusedFrame& frame : collected.frames) {
        EXPECT_LT(frame.time, 10.0);
        if (!frame.tracks.empty()) {
            ids.insert(frame.tracks[0].id);
        }
    }
    EXPECT_EQ(ids.size(), 1U);
    EXPECT_TRUE(collected.frames.back().tracks.at(0).confirmed);
}

TEST(FusionPipeline, PredictsNothingFromAWrongStamp) {
    const VeskarTest::SyslogCapture log;
    // A slow radar and no video: the frames that are added come next.
    std::vector<SensorFrame> frames;
    for (int i = 0; i < 10; ++i) {
        const double time = 5.0 + 1.0 * i;
        frames.push_back({Veskar::Radar, i == 7 ? time + 4000.0 : time, time, {radarTrack(1)}});
    }
    const auto collected = fuse(frames);
    EXPECT_THAT(log.errors(), testing::ElementsAre(testing::HasSubstr("Held back a frame")));
    for (const FusedFrame& frame : collected.frames) {
        EXPECT_LT(frame.time, 20.0);
    }
}

TEST(FusionPipeline, ForgetsTheVideoOfAnOldTimeBase) {
    const VeskarTest::SyslogCapture log;
    const auto collected = fuse({{Veskar::VideoObject, 5000.0, 10.0, {}},
                                 {Veskar::VideoObject, 5000.2, 10.2, {}},
                                 {Veskar::Radar, 10.21, 10.21, {radarTrack(1)}},
                                 {Veskar::Radar, 10.25, 10.25, {radarTrack(1)}},
                                 {Veskar::Radar, 10.35, 10.35, {radarTrack(1)}},
                                 {Veskar::VideoObject, 10.36, 10.37, {}}});
    // The radar frames have waited for video, and are fused as soon as it has come.
    EXPECT_EQ(collected.frames.back().source, Veskar::Radar);
    EXPECT_NEAR(collected.frames.back().time, 10.35, 1e-9);
    EXPECT_EQ(collected.frames.back().received, 10.37);
}

TEST(FusionPipeline, AddsTheTagsThatAreAskedFor) {
    for (const bool isAsked : {false, true}) {
        std::vector<FusedFrame> fused;
        const VeskarTest::SyslogCapture log;  // of the bus that is not there
        FusionPipeline::Options options = withoutBus();
        options.withTags = isAsked;
        FusionPipeline pipeline(
            VeskarTest::testInstallation(), VeskarTest::configuration(),
            [&](const FusedFrame& frame) { fused.push_back(frame); }, {}, options);
        for (int i = 0; i < 20; ++i) {
            const double time = 500.0 + 0.1 * i;
            pipeline.push({Veskar::VideoObject, time, time, {}});
            pipeline.push({Veskar::Radar, time, time, {radarTrack(7)}});
        }
        ASSERT_FALSE(fused.back().tracks.empty());
        const auto& tags = fused.back().tracks[0].tags;
        ASSERT_EQ(tags.has_value(), isAsked);
        if (isAsked) {
            EXPECT_FALSE(tags->empty());
        }
    }
}

TEST(FusionPipeline, FusesARecordingAsItFusedTheFrames) {
    const VeskarTest::TemporaryDirectory directory;
    const std::string path = directory.file("recording.jsonl");
    const VeskarTest::CommaLocale comma;
    std::vector<SensorFrame> frames;
    for (int i = 0; i < 60; ++i) {
        const double time = 1.0 + 0.1 * i;
        if (i < 30) {
            Veskar::Host::VideoReport seen;
            seen.id = 3;
            seen.box = {-0.05, -0.3, 0.05, -0.1};
            seen.velocity = Eigen::Vector2d(0.001, 0.002);
            frames.push_back({Veskar::VideoObject, time, time + 0.05, {seen}});
        }
        frames.push_back({Veskar::Radar, time + 0.01, time + 0.06, {radarTrack(1), radarTrack(2)}});
    }
    // As far as the digits of a recording go.
    for (SensorFrame& frame : frames) {
        frame = Veskar::Host::parseSensorFrame(toJsonLine(frame));
    }
    {
        Veskar::Host::FrameRecorder recorder(path, VeskarTest::testInstallation());
        for (const SensorFrame& frame : frames) {
            recorder.write(frame);
        }
    }
    std::vector<SensorFrame> recorded;
    std::ifstream file(path);
    std::string line;
    std::getline(file, line);
    while (std::getline(file, line)) {
        recorded.push_back(Veskar::Host::parseSensorFrame(line));
    }
    ASSERT_EQ(recorded.size(), frames.size());
    const auto live = fuse(frames);
    const auto replayed = fuse(recorded);
    ASSERT_EQ(live.frames.size(), replayed.frames.size());
    EXPECT_GT(live.frames.size(), frames.size());
    for (std::size_t i = 0; i < live.frames.size(); ++i) {
        EXPECT_EQ(toJsonLine(replayed.frames[i]), toJsonLine(live.frames[i]));
    }
}
