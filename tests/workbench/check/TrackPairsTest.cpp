// SPDX-License-Identifier: Apache-2.0
// Which radar and video tracks are paired when an installation is judged.
#include "Process.h"
#include "check/TrackPairs.h"
#include "simulate/Simulation.h"
#include "simulate/scenario/Scenario.h"

#include <cmath>
#include <functional>

#include <Eigen/Geometry>
#include <gtest/gtest.h>

namespace Workbench {
namespace {

/// Position of an object over time, m.
using Way = std::function<Eigen::Vector2d(double)>;

/// The camera 5 m above the origin, the radar at 4.6 m, both turned to the left by @p yaw degrees.
RecordingHeader installation(double yaw = 0.0) {
    const Scenario scenario = readScenario(VeskarTest::dataFile("tiny.scenario.json"));
    RecordingHeader header = Simulation(scenario, 1).header();
    header.camera.mounting.yaw = yaw;
    header.radar.mounting.yaw = yaw;
    return header;
}

class TrackPairsTest : public testing::Test {
protected:
    void begin(double yaw = 0.0) {
        const RecordingHeader header = installation(yaw);
        projection.emplace(header.camera.build());
        radarYaw = yaw;
        pairs.emplace(header);
    }

    RadarReport heard(int id, const Eigen::Vector2d& place) const {
        RadarReport report;
        report.id = id;
        report.range = std::hypot(place.norm(), 4.6);
        report.azimuth =
            std::remainder(radarYaw - degrees(std::atan2(place.y(), place.x())), 360.0);
        report.radialSpeed = 0.0;
        return report;
    }

    VideoReport seen(int id, const Eigen::Vector2d& place) const {
        const Eigen::Vector2d foot = projection->position({place.x(), place.y(), 0.0});
        VideoReport report;
        report.id = id;
        report.box = {foot.x() - 0.01, foot.y(), foot.x() + 0.01, foot.y() + 0.1};
        return report;
    }

    /// Three seconds of ten frames a second from each sensor.
    void watch(const std::vector<Way>& ways) {
        for (int i = 0; i < 30; ++i) {
            const double time = 0.1 * i;
            SensorFrame video{Veskar::VideoObject, time, time, {}};
            SensorFrame radar{Veskar::Radar, time + 0.05, time + 0.05, {}};
            int id = 0;
            for (const Way& way : ways) {
                ++id;
                VideoReport byVideo = seen(id, way(video.time));
                byVideo.coasting = videoCoasting;
                video.tracks.push_back(byVideo);
                RadarReport byRadar = heard(id, way(radar.time));
                byRadar.confirmed = radarConfirmed;
                radar.tracks.push_back(byRadar);
            }
            pairs->add(video);
            pairs->add(radar);
        }
    }

    double videoCoasting = 0.0;
    bool radarConfirmed = true;
    double radarYaw = 0.0;
    std::optional<Projection> projection;
    std::optional<TrackPairs> pairs;
};

/// Crosses the view at 20 m, 2 m/s to the left.
Eigen::Vector2d crossing(double time) {
    return {20.0, -3.0 + 2.0 * time};
}

TEST_F(TrackPairsTest, PairsAnObjectThatIsAlone) {
    begin();
    watch({crossing});
    // Every 0.2 s, from half a second after the start to half a second before the end.
    ASSERT_GE(pairs->samples().size(), 8U);
    double time = 0.0;
    for (const PairSample& sample : pairs->samples()) {
        EXPECT_GT(sample.time, time);
        time = sample.time;
        EXPECT_NEAR(sample.bearingError, 0.0, 1e-3);
        EXPECT_NEAR(sample.depressionError, 0.0, 1e-3);
        EXPECT_NEAR(sample.groundDistance, crossing(sample.time).norm(), 0.05);
        EXPECT_NEAR(sample.bearingRate, 0.1, 0.005);
    }
}

TEST_F(TrackPairsTest, WorksWhereverTheCameraLooks) {
    // Behind the device the bearing from the x axis jumps from pi to -pi.
    for (const double yaw : {180.0, -170.0, 90.0}) {
        begin(yaw);
        const Eigen::Rotation2Dd turn(radians(yaw));
        watch({[&](double time) -> Eigen::Vector2d { return turn * crossing(time); }});
        ASSERT_GE(pairs->samples().size(), 8U) << yaw;
        for (const PairSample& sample : pairs->samples()) {
            EXPECT_NEAR(sample.bearingError, 0.0, 1e-3) << yaw;
            EXPECT_NEAR(sample.bearingRate, 0.1, 0.005) << yaw;
        }
    }
}

TEST_F(TrackPairsTest, LeavesOutObjectsThatAreNearOneAnother) {
    begin();
    watch({crossing, [](double time) -> Eigen::Vector2d {
               return crossing(time) + Eigen::Vector2d(0.5, 1.0);
           }});
    EXPECT_TRUE(pairs->samples().empty());
}

TEST_F(TrackPairsTest, LeavesOutWhatIsNotSeen) {
    begin();
    videoCoasting = 0.1;
    watch({crossing});
    EXPECT_TRUE(pairs->samples().empty());
}

TEST_F(TrackPairsTest, LeavesOutTentativeTracks) {
    begin();
    radarConfirmed = false;
    watch({crossing});
    EXPECT_TRUE(pairs->samples().empty());
}

TEST_F(TrackPairsTest, LeavesOutTheMomentsOfATurn) {
    begin();
    // Turns round at 1.5 s: trackers follow a turn with different delays.
    watch({[](double time) -> Eigen::Vector2d {
        return {20.0, -3.0 + 4.0 * std::min(time, 3.0 - time)};
    }});
    EXPECT_FALSE(pairs->samples().empty());
    for (const PairSample& sample : pairs->samples()) {
        EXPECT_GT(std::abs(sample.time - 1.5), 0.25);
    }
}

}  // namespace
}  // namespace Workbench
