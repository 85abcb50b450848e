// SPDX-License-Identifier: Apache-2.0
#include <veskar-host/FusedFrame.h>
#include <veskar-host/RadarModel.h>

#include "host/TestInstallation.h"
#include "host/fused/SystemTrackReading.h"

#include <cmath>
#include <limits>

#include <Eigen/LU>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

using Veskar::Host::FusedTrack;
using Veskar::Host::HostAdapter;
using Veskar::Host::SensorFrame;

namespace {

class FusedTrackTest : public testing::Test {
protected:
    FusedTrackTest() { installation.site = Veskar::Host::Site{55.0, 13.0, 90.0}; }

    Veskar::Host::RadarReport radarReport() const {
        Veskar::Host::RadarReport report;
        report.id = 4;
        report.range = 30.0;
        report.azimuth = 10.0;
        report.speed = 2.0;
        report.direction = 180.0;  // towards the device
        return report;
    }
    Veskar::SystemTrack radarTrack() const {
        const HostAdapter adapter(installation, VeskarTest::configuration());
        return {adapter.convert(SensorFrame{Veskar::Radar, 5.0, 5.0, {radarReport()}}).at(0), 17};
    }
    FusedTrack read(const Veskar::SystemTrack& track) const {
        return Veskar::Host::Internal::readTrack(
            track, HostAdapter(installation, VeskarTest::configuration()));
    }
    // The ground position of the radar's report.
    Eigen::Vector2d radarPlace() const {
        return Veskar::Host::RadarModel(installation.radar, {}).groundPoint(30.0, 10.0).position;
    }

    Veskar::Host::Installation installation = VeskarTest::testInstallation();
};

}  // namespace

TEST_F(FusedTrackTest, ColumnAndRangeGiveThePlaceAndTheVelocity) {
    const FusedTrack fused = read(radarTrack());
    ASSERT_TRUE(fused.ground);
    EXPECT_LT((fused.ground->position - radarPlace()).norm(), 1e-6);
    EXPECT_LT((fused.ground->velocity - Eigen::Vector2d(-2.0, 0.0)).norm(), 1e-6);
    EXPECT_NEAR(*fused.speed, 2.0, 1e-9);
    EXPECT_NEAR(std::abs(*fused.direction), 180.0, 1e-6);
    EXPECT_GT(fused.ground->covariance.determinant(), 0.0);
    EXPECT_EQ(fused.id, 17);
    EXPECT_FALSE(fused.confirmed);
    EXPECT_EQ(fused.probability, 0.5);
}

TEST_F(FusedTrackTest, CovariancePropagatesThroughTheGroundPosition) {
    const Veskar::SystemTrack track = radarTrack();
    const FusedTrack fused = read(track);
    const Veskar::Host::Projection camera(installation.camera.build());
    constexpr double h = 1e-4;
    Eigen::Matrix2d J;
    for (Eigen::Index i = 0; i < 2; ++i) {
        const Eigen::Vector2d step = h * Eigen::Vector2d::Unit(i);
        const auto after =
            camera.groundPoint(fused.image[0] + step[0], fused.image[1], fused.range + step[1]);
        const auto before =
            camera.groundPoint(fused.image[0] - step[0], fused.image[1], fused.range - step[1]);
        J.col(i) = (after->position - before->position) / (2.0 * h);
    }
    Eigen::Matrix2d P;
    P << track.covariance(0, 0), track.covariance(0, 4), track.covariance(4, 0),
        track.covariance(4, 4);
    EXPECT_LT((fused.ground->covariance - J * P * J.transpose()).norm(), 1e-5);
}

TEST_F(FusedTrackTest, RangeMovesWithTheAgeOfTheRadarsReport) {
    Veskar::SystemTrack track = radarTrack();
    const FusedTrack now = read(track);
    track.predict(5.3);
    const FusedTrack later = read(track);
    EXPECT_NEAR(later.range, now.range + 0.3 * now.rangeRate, 1e-12);
    EXPECT_NEAR(later.age, 0.3, 1e-12);
    ASSERT_EQ(later.sensors.size(), 1u);
    EXPECT_NEAR(later.sensors[0].coasting, 0.3, 1e-12);
}

TEST_F(FusedTrackTest, RadarsClassProbabilityIsNoPercentage) {
    const FusedTrack fused = read(radarTrack());
    EXPECT_EQ(fused.labels.objectClass.name, "human");
    EXPECT_NEAR(fused.labels.objectClass.probability, 0.5, 1e-12);
}

TEST_F(FusedTrackTest, GeographicPositionFollowsTheSite) {
    const FusedTrack fused = read(radarTrack());
    const Eigen::Vector2d place = radarPlace();
    // Forward is east: x metres east, y metres north.
    EXPECT_NEAR(fused.geo->latitude, 55.0 + place[1] / 111324.0, 1e-7);
    EXPECT_NEAR(fused.geo->longitude, 13.0 + place[0] / 63994.0, 1e-7);
    installation.site.reset();
    EXPECT_FALSE(read(radarTrack()).geo);
}

TEST_F(FusedTrackTest, JsonLineHoldsWhatIsKnown) {
    Veskar::Host::FusedFrame frame{5.0, 5.1, Veskar::Radar, {read(radarTrack())}};
    frame.tracks[0].tags = std::set<std::string>{"0", "maximizeDetections"};
    const nlohmann::json json = nlohmann::json::parse(toJsonLine(frame));
    EXPECT_EQ(json["source"], "radar");
    EXPECT_EQ(json["received"], 5.1);
    const nlohmann::json& track = json["tracks"][0];
    EXPECT_EQ(track["id"], 17);
    EXPECT_EQ(track["confirmed"], false);
    EXPECT_NEAR(track["position"][0].get<double>(), radarPlace()[0], 1e-3);
    EXPECT_EQ(track["class"], "human");
    EXPECT_EQ(track["sensors"][0]["source"], "radar");
    EXPECT_EQ(track["sensors"][0]["id"], 4);
    EXPECT_EQ(track["tags"][1], "maximizeDetections");
    EXPECT_FALSE(track.contains("color"));
}

TEST_F(FusedTrackTest, WhatIsNotFiniteIsNull) {
    Veskar::Host::FusedFrame frame{5.0, 5.1, Veskar::Radar, {read(radarTrack())}};
    frame.tracks[0].probability = std::numeric_limits<double>::quiet_NaN();
    const nlohmann::json json = nlohmann::json::parse(toJsonLine(frame));
    EXPECT_TRUE(json["tracks"][0]["probability"].is_null());
}
