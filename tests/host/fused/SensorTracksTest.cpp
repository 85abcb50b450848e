// SPDX-License-Identifier: Apache-2.0
// What a sensor sees, as tracks.
#include <veskar-host/RadarModel.h>

#include "host/TestInstallation.h"
#include "host/fused/SensorTrackReading.h"

#include <cmath>

#include <gtest/gtest.h>

using Veskar::Host::FusedFrame;
using Veskar::Host::SensorFrame;

namespace {

FusedFrame read(const SensorFrame& frame) {
    return Veskar::Host::Internal::readTracks(
        frame,
        Veskar::Host::HostAdapter(VeskarTest::testInstallation(), VeskarTest::configuration()));
}

}  // namespace

TEST(SensorTracks, OfARadarStandWhereItReportsThem) {
    Veskar::Host::RadarReport report;
    report.id = 4;
    report.range = 30.0;
    report.azimuth = 10.0;
    report.coasting = 0.5;
    report.confirmed = false;
    const FusedFrame frame = read({Veskar::Radar, 5.0, 5.1, {report}});
    EXPECT_EQ(frame.source, Veskar::Radar);
    EXPECT_EQ(frame.time, 5.0);
    EXPECT_EQ(frame.received, 5.1);
    ASSERT_EQ(frame.tracks.size(), 1U);
    const Veskar::Host::FusedTrack& track = frame.tracks[0];
    EXPECT_EQ(track.id, 4);
    EXPECT_FALSE(track.confirmed);
    ASSERT_TRUE(track.ground);
    const Eigen::Vector2d place = Veskar::Host::RadarModel(VeskarTest::testInstallation().radar, {})
                                      .groundPoint(30.0, 10.0)
                                      .position;
    EXPECT_LT((track.ground->position - place).norm(), 1e-6);
    EXPECT_TRUE(std::isnan(track.box.left));
    ASSERT_EQ(track.sensors.size(), 1U);
    EXPECT_EQ(track.sensors[0].source, Veskar::Radar);
    EXPECT_EQ(track.sensors[0].id, 4);
    EXPECT_EQ(track.sensors[0].coasting, 0.5);
}

TEST(SensorTracks, OfACameraHaveTheBoxThatItReports) {
    Veskar::Host::VideoReport report;
    report.id = 9;
    report.box = {-0.1, -0.4, 0.1, 0.0};
    report.labels.objectClass = {"human", 0.9};
    const FusedFrame frame = read({Veskar::VideoObject, 5.0, 5.0, {report}});
    ASSERT_EQ(frame.tracks.size(), 1U);
    const Veskar::Host::FusedTrack& track = frame.tracks[0];
    EXPECT_TRUE(track.confirmed);
    EXPECT_EQ(track.box.bottom, -0.4);
    EXPECT_EQ(track.box.top, 0.0);
    EXPECT_EQ(track.labels.objectClass.name, "human");
    EXPECT_NEAR(track.image[0], 0.0, 1e-9);
    EXPECT_NEAR(track.image[1], -0.4, 1e-9);
}
