// SPDX-License-Identifier: Apache-2.0
// From the frames of a sensor to scene descriptions, and back.
#include "host/TestInstallation.h"
#include "live/onvif/LeftOut.h"
#include "live/onvif/SceneCodec.h"
#include "live/onvif/SceneMapper.h"
#include "live/onvif/SensorScene.h"

#include <chrono>
#include <cmath>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace Veskar::Live {
namespace {

using Host::RadarReport;
using Host::VideoReport;
using testing::IsEmpty;
using testing::SizeIs;

const UtcTime measured = std::chrono::seconds(1'777'636'800);

/// Poses with every angle, so that each one matters.
Host::Installation turned() {
    Host::Installation installation = VeskarTest::testInstallation();
    installation.camera.mounting.position = {0.3, -0.2, 5.0};
    installation.camera.mounting.yaw = 12.0;
    installation.camera.mounting.pitch = 18.0;
    installation.camera.mounting.roll = 3.0;
    installation.radar.mounting.position = {0.1, 0.4, 4.0};
    installation.radar.mounting.yaw = -7.0;
    return installation;
}

VideoReport person() {
    VideoReport report;
    report.id = 5;
    report.box = {-0.25, -0.4, -0.15, 0.1};
    report.velocity = Eigen::Vector2d(0.07, -0.03);
    report.labels.objectClass = {"human", 0.8};
    report.labels.upperClothingColor = {"red", 0.7};
    report.labels.lowerClothingColor = {"blue", 0.6};
    return report;
}

RadarReport car() {
    RadarReport report;
    report.id = 9;
    report.range = 42.5;
    report.azimuth = -33.25;
    report.speed = 8.125;
    report.direction = 170.5;
    report.objectClass = {"car", 0.9};
    return report;
}

/// Describes frames as text, and reads them as a host does.
class SensorSceneTest : public testing::Test {
protected:
    Host::SensorFrame roundTrip(const Host::SensorFrame& frame, UtcTime time = measured) {
        const std::string text = toJson(Scene{scene_.describe(frame, time)});
        std::vector<StampedFrame> read = mapper_.map(reader_.readJson(text, mapper_.leftOut()), "");
        EXPECT_THAT(read, SizeIs(1));
        return read.empty() ? Host::SensorFrame() : std::move(read.front().frame);
    }

    Host::Installation installation_ = turned();
    SensorScene scene_{installation_, "sensor"};
    SceneReader reader_;
    SceneMapper mapper_{installation_};
};

TEST_F(SensorSceneTest, CameraIsReadBackAsItWas) {
    const Host::SensorFrame frame = roundTrip({VideoObject, 0.0, 0.0, {person()}});
    ASSERT_THAT(frame.tracks, SizeIs(1));
    const auto& read = std::get<VideoReport>(frame.tracks[0]);
    const VideoReport sent = person();
    EXPECT_NEAR(read.box.left, sent.box.left, 1e-6);
    EXPECT_NEAR(read.box.bottom, sent.box.bottom, 1e-6);
    EXPECT_NEAR(read.box.right, sent.box.right, 1e-6);
    EXPECT_NEAR(read.box.top, sent.box.top, 1e-6);
    ASSERT_TRUE(read.velocity);
    // Speeds are rounded to mm/s.
    EXPECT_NEAR((*read.velocity)[0], 0.07, 1e-3);
    EXPECT_NEAR((*read.velocity)[1], -0.03, 1e-3);
    EXPECT_EQ(read.labels.objectClass.name, "human");
    EXPECT_EQ(read.labels.objectClass.probability, 0.8);
    EXPECT_EQ(read.labels.upperClothingColor.name, "red");
    EXPECT_EQ(read.labels.upperClothingColor.probability, 0.7);
    EXPECT_EQ(read.labels.lowerClothingColor.name, "blue");
    EXPECT_EQ(read.labels.color.name, "unknown");
}

TEST_F(SensorSceneTest, RadarIsReadBackAsItWas) {
    const Host::SensorFrame frame = roundTrip({Radar, 0.0, 0.0, {car()}});
    EXPECT_EQ(frame.source, Radar);
    ASSERT_THAT(frame.tracks, SizeIs(1));
    const auto& read = std::get<RadarReport>(frame.tracks[0]);
    EXPECT_NEAR(read.range, 42.5, 1e-9);
    EXPECT_NEAR(read.azimuth, -33.25, 1e-9);
    ASSERT_TRUE(read.speed && read.direction);
    EXPECT_NEAR(*read.speed, 8.125, 1e-9);
    EXPECT_NEAR(*read.direction, 170.5, 1e-9);
    EXPECT_EQ(read.objectClass.name, "car");
    EXPECT_EQ(read.objectClass.probability, 0.9);
}

TEST_F(SensorSceneTest, RadarIsAboveWhatItSees) {
    const SceneFrame scene = scene_.describe({Radar, 0.0, 0.0, {car()}}, measured);
    ASSERT_TRUE(scene.objects.at(0).spherical);
    EXPECT_NEAR(42.5 * std::sin(Host::radians(*scene.objects[0].spherical->elevation)), -4.0, 1e-9);
}

TEST_F(SensorSceneTest, DoesNotMakeMotionUp) {
    VideoReport above = person();
    above.box = {-0.25, 0.9, -0.15, 1.0};  // its foot is in the sky
    VideoReport still = person();
    still.velocity.reset();
    RadarReport approaching = car();
    approaching.speed.reset();
    approaching.radialSpeed = -2.0;
    EXPECT_FALSE(scene_.describe({VideoObject, 0.0, 0.0, {above}}, measured).objects.at(0).speed);
    EXPECT_FALSE(scene_.describe({VideoObject, 0.0, 0.0, {still}}, measured).objects.at(0).speed);
    EXPECT_FALSE(scene_.describe({Radar, 0.0, 0.0, {approaching}}, measured).objects.at(0).speed);
}

TEST_F(SensorSceneTest, CoastingReportIsAnObjectWithoutAPlace) {
    roundTrip({VideoObject, 0.0, 0.0, {person()}});
    VideoReport hidden = person();
    hidden.coasting = 0.5;
    hidden.box = {0.0, 0.0, 0.1, 0.1};
    const Host::SensorFrame frame =
        roundTrip({VideoObject, 0.0, 0.0, {hidden}}, measured + std::chrono::milliseconds(500));
    ASSERT_THAT(frame.tracks, SizeIs(1));
    const auto& read = std::get<VideoReport>(frame.tracks[0]);
    EXPECT_EQ(read.coasting, 0.5);
    EXPECT_NEAR(read.box.left, -0.25, 1e-6);
}

TEST_F(SensorSceneTest, LeavesOutWhatIsNotConfirmedAndDeletesWhatIsGone) {
    EXPECT_THAT(scene_.describe({Radar, 0.0, 0.0, {car()}}, measured).deletes, IsEmpty());
    RadarReport doubtful = car();
    doubtful.confirmed = false;
    const SceneFrame scene = scene_.describe({Radar, 0.1, 0.1, {doubtful}}, measured);
    EXPECT_THAT(scene.objects, IsEmpty());
    ASSERT_THAT(scene.deletes, SizeIs(1));
    EXPECT_EQ(scene.deletes[0].id, "9");
    EXPECT_EQ(scene.source, "sensor");
}

}  // namespace
}  // namespace Veskar::Live
