// SPDX-License-Identifier: Apache-2.0
// From reports to fused tracks, with a shipped rule and without it. Rules that need a scene of many
// objects are tested in tests/workbench/cli/RulesProgramTest.cpp.
#include <veskar-host/FusionPipeline.h>
#include <veskar-host/Projection.h>

#include "host/TestInstallation.h"

#include <cmath>
#include <set>
#include <vector>

#include <gtest/gtest.h>

namespace {

using Veskar::Config;
using Veskar::Host::FusedFrame;
using Veskar::Host::FusedTrack;
using Veskar::Host::FusionPipeline;
using Veskar::Host::HostParameters;
using Veskar::Host::SensorFrame;

const Veskar::Host::Installation testSite = VeskarTest::testInstallation();

Veskar::Host::VideoReport seen(const Eigen::Vector2d& place) {
    const Veskar::Host::Projection projection(testSite.camera.build());
    const Eigen::Vector2d foot = projection.position({place.x(), place.y(), 0.0});
    Veskar::Host::VideoReport report;
    report.id = 7;
    report.box = {foot.x() - 0.01, foot.y(), foot.x() + 0.01, foot.y() + 0.1};
    report.velocity = Eigen::Vector2d::Zero();
    report.labels.objectClass = {"human", 0.9};
    return report;
}

Veskar::Host::RadarReport heard(const Eigen::Vector2d& place) {
    const Eigen::Vector3d arm =
        Eigen::Vector3d(place.x(), place.y(), 0.0) - testSite.radar.mounting.position;
    Veskar::Host::RadarReport report;
    report.id = 3;
    report.range = arm.norm();
    report.azimuth = -Veskar::Host::degrees(std::atan2(arm.y(), arm.x()));
    report.speed = 0.0;
    report.direction = 0.0;
    return report;
}

SensorFrame frameOf(Veskar::Source source, double time) {
    SensorFrame frame;
    frame.source = source;
    frame.time = frame.received = time;
    return frame;
}
SensorFrame videoFrame(double time, const std::vector<Veskar::Host::VideoReport>& reports) {
    SensorFrame frame = frameOf(Veskar::VideoObject, time);
    frame.tracks.assign(reports.begin(), reports.end());
    return frame;
}
SensorFrame radarFrame(double time, const std::vector<Veskar::Host::RadarReport>& reports) {
    SensorFrame frame = frameOf(Veskar::Radar, time);
    frame.tracks.assign(reports.begin(), reports.end());
    return frame;
}

class ShippedRules : public testing::Test {
protected:
    std::vector<FusedFrame> fuse(const std::vector<SensorFrame>& frames) const {
        std::vector<FusedFrame> fused;
        FusionPipeline::Options options;
        options.asksForPosition = false;
        options.uptime = 100.0;
        FusionPipeline pipeline(
            testSite, config, [&](const FusedFrame& frame) { fused.push_back(frame); }, parameters,
            options);
        for (const SensorFrame& frame : frames) {
            pipeline.push(frame);
        }
        return fused;
    }
    std::vector<FusedTrack> lastOf(const std::vector<SensorFrame>& frames) const {
        return fuse(frames).back().tracks;
    }

    Config config = Config::defaults();
    HostParameters parameters = HostParameters::fromConfig(Config::defaultsText());
};

/// Both sensors begin with one object in the same instant, and the radar finds its place only then.
TEST_F(ShippedRules, MergeTracksThatStartedTogether) {
    std::vector<SensorFrame> frames;
    for (int i = 0; i < 30; ++i) {
        const double time = 0.1 * i;
        frames.push_back(videoFrame(time, {seen({20.0, 0.0})}));
        frames.push_back(radarFrame(time, {heard({20.0, i < 5 ? 9.0 : 0.0})}));
    }
    EXPECT_EQ(lastOf(frames).size(), 1U);
    config.rules.orderedMerging = false;
    EXPECT_EQ(lastOf(frames).size(), 2U);
}

class FarInVideo : public ShippedRules {
protected:
    /// Video sees an object at 60 m, and radar sees nothing, until it dies.
    bool isConfirmed(double radarEnd) const {
        std::vector<SensorFrame> frames;
        for (int i = 0; i < 40; ++i) {
            const double time = 0.1 * i;
            frames.push_back(videoFrame(time, {seen({60.0, 0.0})}));
            if (time < radarEnd) {
                frames.push_back(radarFrame(time + 0.01, {}));
            }
        }
        return lastOf(frames).at(0).confirmed;
    }
};

TEST_F(FarInVideo, WaitsForRadar) {
    EXPECT_FALSE(isConfirmed(4.0));
    config.rules.videoRangeStd = 0.0;
    EXPECT_TRUE(isConfirmed(4.0));
}

TEST_F(FarInVideo, DoesNotWaitForARadarThatIsDead) {
    EXPECT_TRUE(isConfirmed(2.0));
    config.rules.radarSilence = 60.0;
    EXPECT_FALSE(isConfirmed(2.0));
}

/// A car that the image border cuts: the middle of what is left of its box is not its place.
TEST_F(ShippedRules, LetRadarPlaceWhatTheImageBorderCuts) {
    const Eigen::Vector2d place(8.0, 6.6);
    const auto error = [&] {
        std::vector<SensorFrame> frames;
        for (int i = 0; i < 10; ++i) {
            const double time = 0.1 * i;
            Veskar::Host::VideoReport report = seen({8.0, 7.4});
            const double middle = 0.5 * (report.box.left + report.box.right);
            report.box.left = -1.0;
            report.box.right = report.box.left + 2.0 * (middle - report.box.left);
            frames.push_back(videoFrame(time, {report}));
            frames.push_back(radarFrame(time + 0.01, {heard(place)}));
        }
        const std::vector<FusedTrack> tracks = lastOf(frames);
        EXPECT_EQ(tracks.size(), 1U);
        EXPECT_EQ(tracks.at(0).sensors.size(), 2U);
        return (tracks.at(0).ground->position - place).norm();
    };
    const double withRule = error();
    parameters.cutBoxStd = 0.0;
    EXPECT_LT(withRule, 0.5 * error());
}

/// A radar that turns once in two and a half seconds misses its object in one rotation.
TEST_F(ShippedRules, KeepWhatASlowRadarMissesOnce) {
    std::vector<SensorFrame> frames;
    for (int i = 0; i < 8; ++i) {
        Veskar::Host::RadarReport report = heard({30.0, 0.0});
        report.coasting = i == 5 ? 2.5 : 0.0;
        frames.push_back(radarFrame(2.5 * i, {report}));
    }
    const auto countIds = [&] {
        std::set<std::int32_t> ids;
        for (const FusedFrame& frame : fuse(frames)) {
            if (frame.time < 6.0) {
                continue;  // it takes two rotations to know that the radar is slow
            }
            for (const FusedTrack& track : frame.tracks) {
                ids.insert(track.id);
            }
        }
        return ids.size();
    };
    EXPECT_EQ(countIds(), 1U);
    parameters.nominalInterval = 0.0;
    EXPECT_EQ(countIds(), 2U);
}

}  // namespace
