// SPDX-License-Identifier: Apache-2.0
#include <veskar-host/HostAdapter.h>
#include <veskar/TrackAssociator.h>

#include "host/TestInstallation.h"

#include <cmath>

#include <Eigen/LU>
#include <gtest/gtest.h>

using Veskar::Host::HostAdapter;
using Veskar::Host::SensorFrame;

namespace {

class HostAdapterTest : public testing::Test {
protected:
    Veskar::Host::Installation installation = VeskarTest::testInstallation();
    Veskar::Config config = VeskarTest::configuration();
    Veskar::Host::HostParameters parameters;

    HostAdapter adapter() const { return {installation, config, parameters}; }
    std::shared_ptr<Veskar::Track> convert(Veskar::Source source,
                                           const Veskar::Host::Report& report,
                                           double ahead = 0.0) const {
        return adapter().convert(SensorFrame{source, 5.0, 5.1, {report}}, 0.0, ahead).at(0);
    }
    // The radar's report of a ground point.
    Veskar::Host::RadarReport radarReport(const Eigen::Vector2d& ground,
                                          const Eigen::Vector2d& velocity) const {
        const Eigen::Vector3d offset =
            Eigen::Vector3d(ground[0], ground[1], 0.0) - installation.radar.mounting.position;
        Veskar::Host::RadarReport report;
        report.id = 11;
        report.range = offset.norm();
        report.azimuth = -std::atan2(offset[1], offset[0]) * 180.0 / M_PI;
        report.speed = velocity.norm();
        report.direction = -std::atan2(velocity[1], velocity[0]) * 180.0 / M_PI;
        return report;
    }
    // The camera's report of a person walking there.
    Veskar::Host::VideoReport videoReport(const Eigen::Vector2d& ground,
                                          const Eigen::Vector2d& velocity) const {
        const Veskar::Host::Projection camera(installation.camera.build());
        const auto foot =
            camera.project({ground[0], ground[1], 0.0}, {velocity[0], velocity[1], 0.0});
        const double top = camera.position({ground[0], ground[1], 1.75})[1];
        Veskar::Host::VideoReport report;
        report.id = 21;
        report.box = {foot.uv[0] - 0.02, foot.uv[1], foot.uv[0] + 0.02, top};
        report.velocity = foot.rate;
        report.labels.objectClass = {"human", 0.9};
        return report;
    }
};

const Eigen::Vector2d footPoint(18.0, -5.0);
const Eigen::Vector2d walk(-0.8, 1.1);

}  // namespace

TEST_F(HostAdapterTest, BothSensorsPutAGroundPointAtTheSameState) {
    const auto radar = convert(Veskar::Radar, radarReport(footPoint, walk));
    const auto video = convert(Veskar::VideoObject, videoReport(footPoint, walk));
    const Veskar::StateVector difference = radar->state - video->state;
    EXPECT_LT(std::abs(difference[0]), 1e-9);
    EXPECT_LT(std::abs(difference[1]), 1e-9);
    EXPECT_LT(std::abs(difference[2]), 1e-9);
    EXPECT_LT(std::abs(difference[3]), 1e-9);
    EXPECT_LT(std::abs(difference[4]), 1e-9);
    EXPECT_LT(std::abs(difference[5]), 1e-3);
    EXPECT_LT(radar->statisticalDistance(*video), 0.01);
}

TEST_F(HostAdapterTest, ASmallCalibrationErrorStaysInsideTheGate) {
    const auto video = convert(Veskar::VideoObject, videoReport(footPoint, walk));
    installation.camera.mounting.pitch += 0.5;
    auto report = radarReport(footPoint, walk);
    report.azimuth += 1.0;
    const auto radar = convert(Veskar::Radar, report);
    Veskar::TrackAssociator associator(config);
    EXPECT_TRUE(associator.checkGating(*video, *radar).passed);
}

TEST_F(HostAdapterTest, RadarCovarianceHasFullRankByItsFloors) {
    const auto track = convert(Veskar::Radar, radarReport(footPoint, walk));
    const Veskar::Host::Projection camera(installation.camera.build());
    const Veskar::Host::RadarModel model(installation.radar, parameters);
    const auto bare = toFusion(camera, model.estimate(radarReport(footPoint, walk)));
    EXPECT_LT(std::abs(bare.covariance.determinant()), 1e-25);
    const double lag = parameters.rangeStdPerRate * track->state[5];
    Veskar::StateVector added = parameters.radarFloorStd.cwiseAbs2();
    added[4] += lag * lag;
    EXPECT_LT(
        (track->covariance - bare.covariance - Eigen::Matrix<double, 6, 6>(added.asDiagonal()))
            .norm(),
        1e-12);
}

TEST_F(HostAdapterTest, FloorsFollowTheLensesAngles) {
    const auto usual = convert(Veskar::Radar, radarReport(footPoint, walk));
    // The same lens over half the angle: an image unit corresponds to half the angle.
    parameters.radarFloorStd.setZero();
    const auto bare = convert(Veskar::Radar, radarReport(footPoint, walk));
    const Veskar::StateMatrix floors = usual->covariance - bare->covariance;
    installation.camera.imageToRadians[1] /= 2.0;
    installation.camera.radiansToImage[1] *= 2.0;
    const auto narrowBare = convert(Veskar::Radar, radarReport(footPoint, walk));
    parameters = {};
    const auto narrow = convert(Veskar::Radar, radarReport(footPoint, walk));
    const Veskar::StateMatrix narrowFloors = narrow->covariance - narrowBare->covariance;
    EXPECT_NEAR(narrowFloors(0, 0), 4.0 * floors(0, 0), 1e-9);
    EXPECT_NEAR(narrowFloors(3, 3), 4.0 * floors(3, 3), 1e-9);
    EXPECT_NEAR(narrowFloors(4, 4), floors(4, 4), 1e-9);
}

TEST_F(HostAdapterTest, FloorsFollowTheShapeOfTheImage) {
    // 90 degrees wide, so that the columns are the usual ones; three quarters of the usual aspect.
    installation.camera.resolution = {1440, 1080};
    const auto floored = convert(Veskar::Radar, radarReport(footPoint, walk));
    const Veskar::StateVector usual = parameters.radarFloorStd;
    parameters.radarFloorStd.setZero();
    const auto bare = convert(Veskar::Radar, radarReport(footPoint, walk));
    const Veskar::StateMatrix floors = floored->covariance - bare->covariance;
    EXPECT_NEAR(floors(0, 0), usual[0] * usual[0], 1e-9);
    EXPECT_NEAR(floors(2, 2), std::pow(0.75 * usual[2], 2), 1e-9);
    EXPECT_NEAR(floors(3, 3), std::pow(0.75 * usual[3], 2), 1e-9);
}

TEST_F(HostAdapterTest, GainsTellTheStateOfTheReport) {
    auto radar = radarReport(footPoint, walk);
    auto video = videoReport(footPoint, walk);
    EXPECT_EQ(convert(Veskar::Radar, radar)->probability, 3.0);
    EXPECT_EQ(convert(Veskar::VideoObject, video)->probability, 2.0);
    radar.confirmed = false;
    EXPECT_EQ(convert(Veskar::Radar, radar)->probability, 1.2);
    EXPECT_FALSE(convert(Veskar::Radar, radar)->isConfident);
    video.coasting = 0.1;
    EXPECT_EQ(convert(Veskar::VideoObject, video)->probability, 0.3);
    EXPECT_EQ(convert(Veskar::VideoObject, video)->coastingTime, 0.1);
    EXPECT_TRUE(convert(Veskar::VideoObject, video)->isConfident);
}

TEST_F(HostAdapterTest, TrackCarriesIdentityTimesAndLabels) {
    auto video = videoReport(footPoint, walk);
    video.age = 7.0;
    video.labels.color = {"red", 0.6};
    const auto track = convert(Veskar::VideoObject, video);
    EXPECT_EQ(track->id, 21);
    EXPECT_EQ(track->source, Veskar::VideoObject);
    EXPECT_EQ(track->coordinateSystem, Veskar::ImagePlaneRange);
    EXPECT_EQ(track->time, 5.0);
    // The start time is left to the library: a track that returns must be younger than its partner.
    EXPECT_EQ(track->startTime, 5.0);
    EXPECT_EQ(track->className, "human");
    EXPECT_EQ(track->colorName, "red");
    EXPECT_EQ(track->colorProbability, 0.6);
    EXPECT_NEAR(track->boundingBox[0], video.box.left, 1e-15);
    EXPECT_NEAR(track->boundingBox[1], 0.04, 1e-12);
    EXPECT_NEAR(track->boundingBox[2], video.box.bottom, 1e-15);
    EXPECT_NEAR(track->boundingBox[3], video.box.top - video.box.bottom, 1e-15);
}

TEST_F(HostAdapterTest, RadarTrackCarriesSpeedDirectionAndPlace) {
    installation.site = Veskar::Host::Site{55.0, 13.0, 0.0};
    const auto track = convert(Veskar::Radar, radarReport(footPoint, walk));
    EXPECT_NEAR(*track->speed, walk.norm(), 1e-9);
    EXPECT_LT((*track->direction - walk.normalized()).norm(), 1e-9);
    EXPECT_NEAR(track->location->range, footPoint.norm(), 1e-9);
    // Counter-clockwise from the right-hand side; the footPoint is to the right of straight ahead.
    EXPECT_NEAR(track->location->azimuth, 90.0 - std::atan2(5.0, 18.0) * 180.0 / M_PI, 1e-9);
    // 18 m north and 5 m east; a degree of latitude is 111 km.
    EXPECT_TRUE(track->geoLocation->valid);
    EXPECT_NEAR(track->geoLocation->latitude, 55.0 + 18.0 / 111324.0, 1e-7);
    EXPECT_NEAR(track->geoLocation->longitude, 13.0 + 5.0 / 63994.0, 1e-7);
}

TEST_F(HostAdapterTest, RadarClassComesFromTheSpeedUnlessTheRadarNamesOne) {
    auto report = radarReport(footPoint, walk);
    report.speed = 2.999;
    EXPECT_EQ(convert(Veskar::Radar, report)->className, "human");
    report.speed = 3.001;
    EXPECT_EQ(convert(Veskar::Radar, report)->className, "vehicle");
    EXPECT_EQ(convert(Veskar::Radar, report)->classProbability, 0.5);
    report.objectClass = {"animal", 0.8};
    EXPECT_EQ(convert(Veskar::Radar, report)->className, "animal");
    EXPECT_EQ(convert(Veskar::Radar, report)->classProbability, 0.8);
}

TEST_F(HostAdapterTest, AtTheLimitOfHumanSpeedIsAVehicle) {
    Veskar::Host::RadarReport report;
    report.range = 20.0;
    report.speed = parameters.humanSpeedLimit;
    report.direction = 0.0;
    EXPECT_EQ(convert(Veskar::Radar, report)->className, "vehicle");
}

TEST_F(HostAdapterTest, RadarTrackGetsABoxOfItsClassesSize) {
    const auto radar = convert(Veskar::Radar, radarReport(footPoint, walk));
    const auto video = convert(Veskar::VideoObject, videoReport(footPoint, walk));
    EXPECT_NEAR(radar->boundingBox[2], video->boundingBox[2], 1e-9);
    EXPECT_NEAR(radar->boundingBox[3], video->boundingBox[3], 1e-9);
    EXPECT_GT(radar->boundingBox[1], 0.01);
    EXPECT_LT(radar->boundingBox[1], 0.1);
}

TEST_F(HostAdapterTest, RadarTracksBoxIsAsWideAsItsClassAcrossTheLineOfSight) {
    auto report = radarReport(footPoint, walk);
    report.objectClass = {"car", 0.8};
    const auto track = convert(Veskar::Radar, report);
    // The side of a car 1.8 m wide, seen from the device's origin.
    const double bearing =
        std::atan2(footPoint[1], footPoint[0]) - std::atan(0.9 / footPoint.norm());
    const double distance = std::hypot(footPoint.norm(), 0.9);
    const Veskar::Host::Projection camera(installation.camera.build());
    const double side =
        camera.position({distance * std::cos(bearing), distance * std::sin(bearing), 0.0})[0];
    EXPECT_NEAR(track->boundingBox[1], 2.0 * std::abs(side - track->state[0]), 1e-9);
    EXPECT_NEAR(track->boundingBox[2] + track->boundingBox[3],
                camera.position({footPoint[0], footPoint[1], 1.5})[1], 1e-9);
}

TEST_F(HostAdapterTest, PredictedRadarReportHasMovedAndIsNotCoasting) {
    auto report = radarReport(footPoint, walk);
    report.coasting = 0.3;
    const auto now = convert(Veskar::Radar, report);
    const auto later = convert(Veskar::Radar, report, 0.8);
    const auto there = convert(Veskar::Radar, radarReport(footPoint + 0.8 * walk, walk));
    EXPECT_EQ(later->time, 5.8);
    EXPECT_EQ(later->coastingTime, 0.0);
    EXPECT_EQ(later->probability, parameters.predictedGain);
    EXPECT_LT((later->state - there->state).norm(), 1e-6);
    EXPECT_GT(later->covariance(4, 4), now->covariance(4, 4));
}

TEST_F(HostAdapterTest, PredictedVideoReportMovesItsBox) {
    const auto report = videoReport(footPoint, walk);
    const auto later = convert(Veskar::VideoObject, report, 0.5);
    EXPECT_NEAR(later->state[0],
                0.5 * (report.box.left + report.box.right) + 0.5 * (*report.velocity)[0], 1e-12);
    EXPECT_NEAR(later->boundingBox[2], report.box.bottom + 0.5 * (*report.velocity)[1], 1e-12);
    EXPECT_NEAR(later->boundingBox[1], report.box.right - report.box.left, 1e-12);
    EXPECT_NEAR(later->boundingBox[3], report.box.top - report.box.bottom, 1e-12);
}

TEST_F(HostAdapterTest, ReadyEstimateIsTakenAsItIs) {
    Veskar::Host::ReadyEstimate report;
    report.id = 3;
    report.state << 0.1, 0.01, -0.2, 0.0, 20.0, -1.0;
    report.covariance = 0.5 * Veskar::StateMatrix::Identity();
    const auto track = convert(Veskar::Radar, report);
    EXPECT_EQ(track->state, report.state);
    EXPECT_EQ(track->covariance, report.covariance);
    const auto later = convert(Veskar::Radar, report, 2.0);
    EXPECT_NEAR(later->state[0], 0.12, 1e-12);
    EXPECT_NEAR(later->state[4], 18.0, 1e-12);
}

TEST_F(HostAdapterTest, CoastingTimesOfASlowSensorAreScaled) {
    Veskar::Host::RadarReport report = radarReport(footPoint, walk);
    report.coasting = 2.5;
    const SensorFrame frame{Veskar::Radar, 5.0, 5.1, {report}};
    const auto coasting = [&](double ahead, double slowInterval) {
        return adapter().convert(frame, 0.0, ahead, slowInterval).at(0)->coastingTime;
    };
    EXPECT_EQ(coasting(0.0, 2.5), 2.5) << "only with a nominal interval";
    EXPECT_EQ(coasting(0.2, 2.5), 0.0);
    parameters.nominalInterval = 0.1;
    EXPECT_NEAR(coasting(0.0, 2.5), 0.1, 1e-15);
    EXPECT_NEAR(coasting(0.2, 2.5), 0.1, 1e-15);
    EXPECT_EQ(coasting(0.0, 0.0), 2.5) << "only of a slow sensor";
    EXPECT_EQ(coasting(0.2, 0.0), 0.0);
}
