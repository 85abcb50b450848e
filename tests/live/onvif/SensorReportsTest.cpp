// SPDX-License-Identifier: Apache-2.0
// From objects to reports: one test for each row of the table in docs/live.md.
#include <veskar-host/GeographicPosition.h>
#include <veskar-host/HostAdapter.h>

#include "host/TestInstallation.h"
#include "live/onvif/SensorReports.h"

#include <cmath>
#include <limits>
#include <utility>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace Veskar::Live {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using VeskarTest::testInstallation;

class SensorReportsTest : public testing::Test {
protected:
    static SceneObject boxed(const Host::ImageBox& box) {
        SceneObject object;
        object.name.id = "1";
        object.shape = Shape{box, std::nullopt, {}};
        return object;
    }
    static SceneObject seen(double distance, double azimuth) {
        SceneObject object;
        object.name.id = "1";
        object.spherical = SphericalPlace{distance, std::nullopt, azimuth};
        return object;
    }
    std::optional<Host::VideoReport> video(const SceneObject& object,
                                           const Transformation& frame = {}) {
        return SensorReports(installation).video(object, frame, leftOut);
    }
    std::optional<Host::RadarReport> radar(const SceneObject& object) {
        return SensorReports(installation).radar(object, leftOut);
    }

    Host::Installation installation = testInstallation();
    LeftOut leftOut;
};

using SceneOfCamera = SensorReportsTest;
using SceneOfRadar = SensorReportsTest;

TEST_F(SceneOfCamera, TakesBoundingBoxes) {
    const auto report = video(boxed({-0.2, -0.5, 0.1, 0.25}));
    ASSERT_TRUE(report);
    EXPECT_EQ(report->box.left, -0.2);
    EXPECT_EQ(report->box.bottom, -0.5);
    EXPECT_EQ(report->box.right, 0.1);
    EXPECT_EQ(report->box.top, 0.25);
    EXPECT_EQ(report->velocity, std::nullopt);
    EXPECT_EQ(report->coasting, 0.0);
    EXPECT_TRUE(report->confirmed);
    EXPECT_THAT(leftOut.counts(), IsEmpty());
}

TEST_F(SceneOfCamera, AppliesTheTransformationsOfFrameAndObject) {
    // An image of 2000 x 1000 pixels with rows counted downward; the object begins at (500, 250).
    const Transformation pixels{{-1.0, 1.0}, {0.001, -0.002}};
    SceneObject object = boxed({0.0, 350.0, 200.0, 100.0});
    object.transformation.translate = {500.0, 250.0};
    const auto report = video(object, pixels);
    ASSERT_TRUE(report);
    EXPECT_NEAR(report->box.left, -0.5, 1e-12);
    EXPECT_NEAR(report->box.right, -0.3, 1e-12);
    EXPECT_NEAR(report->box.top, 0.3, 1e-12);
    EXPECT_NEAR(report->box.bottom, -0.2, 1e-12);
}

TEST_F(SceneOfCamera, TakesOutlinesWithoutABox) {
    SceneObject object = boxed({});
    object.shape = Shape{std::nullopt,
                         std::nullopt,
                         {{{0.1, -0.2}, {0.3, -0.1}, {0.2, 0.2}}, {{0.0, 0.0}, {0.1, 0.4}}}};
    const auto report = video(object);
    ASSERT_TRUE(report);
    EXPECT_EQ(report->box.left, 0.0);
    EXPECT_EQ(report->box.right, 0.3);
    EXPECT_EQ(report->box.bottom, -0.2);
    EXPECT_EQ(report->box.top, 0.4);
    EXPECT_THAT(leftOut.counts(), IsEmpty());

    object.shape->box = Host::ImageBox{-0.1, -0.1, 0.1, 0.1};
    object.shape->centre = Eigen::Vector2d(0.0, 0.0);
    EXPECT_EQ(video(object)->box.right, 0.1);
    EXPECT_THAT(leftOut.counts(), ElementsAre(Pair("Shape.CenterOfGravity", 1),
                                              Pair("Shape.Polygon beside BoundingBox", 1)));
}

TEST_F(SceneOfCamera, LeavesOutWhatIsNotInTheImage) {
    EXPECT_FALSE(video(boxed({20.0, 30.0, 100.0, 80.0})));  // pixels without a transformation
    EXPECT_FALSE(video(boxed({-1.5, 0.0, -1.01, 0.5})));
    const double huge = std::numeric_limits<double>::max();
    EXPECT_FALSE(video(boxed({-huge, 0.0, huge, 0.5}), {{0.0, 0.0}, {2.0, 1.0}}));
    EXPECT_THAT(leftOut.counts(), ElementsAre(Pair("Shape outside the image", 3)));
    EXPECT_TRUE(video(boxed({-1.5, -1.2, -0.9, 0.5})));  // partly

    SceneObject object;
    EXPECT_FALSE(video(object));
    object.shape = Shape{std::nullopt, Eigen::Vector2d(0.0, 0.0), {}};
    EXPECT_FALSE(video(object));
    object.shape->polygons = {{}};
    EXPECT_FALSE(video(object));
    EXPECT_EQ(leftOut.counts().at("Shape without BoundingBox and Polygon"), 2);
}

TEST_F(SceneOfCamera, TakesClassAndColours) {
    SceneObject object = boxed({-0.2, -0.5, 0.1, 0.25});
    object.classes = {{"Vehicle", 0.9}};
    object.vehicleTypes = {{"Bus", 0.8}};
    object.vehicleColors = {{ColorSpace::Rgb, {255.0, 255.0, 0.0}, {}, 0.6}};
    object.tops = {{ColorSpace::Rgb, {200.0, 20.0, 25.0}, {}, 0.75}};
    object.bottoms = {{ColorSpace::Rgb, {20.0, 22.0, 25.0}, {}, 0.5}};
    Host::Labels labels = video(object)->labels;
    EXPECT_EQ(labels.objectClass.name, "bus");
    EXPECT_EQ(labels.objectClass.probability, 0.8);
    EXPECT_EQ(labels.color.name, "yellow");
    EXPECT_EQ(labels.color.probability, 0.6);
    EXPECT_EQ(labels.upperClothingColor.name, "red");
    EXPECT_EQ(labels.upperClothingColor.probability, 0.75);
    EXPECT_EQ(labels.lowerClothingColor.name, "black");
    EXPECT_EQ(labels.lowerClothingColor.probability, 0.5);
    // The object's own colour comes first.
    object.colors = {{ColorSpace::YCbCr, {76.0, 85.0, 255.0}, 0.7, {}}};
    labels = video(object)->labels;
    EXPECT_EQ(labels.color.name, "red");
    EXPECT_EQ(labels.color.probability, 0.7);
    // A dress covers both halves.
    object.isDressed = true;
    EXPECT_EQ(video(object)->labels.lowerClothingColor.name, "black");
    object.bottoms.clear();
    EXPECT_EQ(video(object)->labels.lowerClothingColor.name, "red");
    EXPECT_THAT(leftOut.counts(), IsEmpty());
}

/// The box of an object on the ground at a place of the device frame.
Host::ImageBox boxAt(const Host::Projection& camera, const Eigen::Vector2d& ground) {
    const Eigen::Vector2d foot = camera.position({ground[0], ground[1], 0.0});
    return {foot[0] - 0.02, foot[1], foot[0] + 0.02, foot[1] + 0.1};
}

TEST_F(SceneOfCamera, ProjectsSpeedAndDirection) {
    installation.camera.mounting.yaw = 30.0;
    const Host::Projection camera(installation.camera.build());
    // ONVIF's axes are the camera's: 90 degrees lead away from it, 0 to its right.
    const double yaw = 30.0 * 3.14159265358979323846 / 180.0;
    const Eigen::Vector2d ahead(std::cos(yaw), std::sin(yaw));
    const Eigen::Vector2d right(std::sin(yaw), -std::cos(yaw));
    const Eigen::Vector2d place = 20.0 * ahead + 3.0 * right;
    const std::pair<double, Eigen::Vector2d> motions[] = {
        {90.0, ahead}, {0.0, right}, {-90.0, -ahead}, {180.0, -right}, {270.0, -ahead}};
    for (const auto& [direction, way] : motions) {
        SceneObject object = boxed(boxAt(camera, place));
        object.speed = 2.0;
        object.direction = MotionDirection{direction, 0.0};
        const auto report = video(object);
        ASSERT_TRUE(report && report->velocity);
        constexpr double step = 1e-4;  // s
        const Eigen::Vector2d next = place + 2.0 * step * way;
        const Eigen::Vector2d rate = (camera.position({next[0], next[1], 0.0}) -
                                      camera.position({place[0], place[1], 0.0})) /
                                     step;
        EXPECT_LT((*report->velocity - rate).norm(), 1e-4) << direction;
    }
    // Upward motion is none over ground.
    SceneObject object = boxed(boxAt(camera, place));
    object.speed = 2.0;
    object.direction = MotionDirection{90.0, 60.0};
    const Eigen::Vector2d slow = *video(object)->velocity;
    object.direction->pitch = 0.0;
    EXPECT_LT((2.0 * slow - *video(object)->velocity).norm(), 1e-9);
    EXPECT_THAT(leftOut.counts(), IsEmpty());
}

TEST_F(SceneOfCamera, LeavesOutSpeedsThatLeadNowhere) {
    SceneObject object = boxed({-0.1, -0.3, 0.1, 0.0});
    object.speed = 2.0;
    EXPECT_EQ(video(object)->velocity, std::nullopt);
    object.speed.reset();
    object.direction = MotionDirection{90.0, 0.0};
    EXPECT_EQ(video(object)->velocity, std::nullopt);
    object = boxed({-0.1, 0.95, 0.1, 1.0});  // above the horizon
    object.speed = 2.0;
    object.direction = MotionDirection{90.0, 0.0};
    EXPECT_EQ(video(object)->velocity, std::nullopt);
    EXPECT_THAT(leftOut.counts(),
                ElementsAre(Pair("Direction without Speed", 1),
                            Pair("Speed of an object that does not stand on the ground", 1),
                            Pair("Speed without Direction", 1)));
    // Standing still needs no direction.
    object.speed = 0.0;
    object.direction.reset();
    EXPECT_EQ(video(object)->velocity, Eigen::Vector2d(0.0, 0.0));
}

TEST_F(SceneOfCamera, LeavesOutPlacesInSpace) {
    SceneObject object = boxed({-0.1, -0.3, 0.1, 0.0});
    object.spherical = SphericalPlace{20.0, -5.0, 90.0};
    object.geo = GeoPlace{55.7, 13.2};
    EXPECT_TRUE(video(object));
    EXPECT_THAT(leftOut.counts(), ElementsAre(Pair("GeoLocation of a camera", 1),
                                              Pair("SphericalCoordinate of a camera", 1)));
}

TEST_F(SceneOfRadar, TakesSphericalCoordinates) {
    const std::pair<double, double> azimuths[] = {{90.0, 0.0},      {0.0, 90.0},  {180.0, -90.0},
                                                  {-180.0, -90.0},  {95.0, -5.0}, {-80.0, 170.0},
                                                  {-100.0, -170.0}, {30.0, 60.0}};
    for (const auto& [onvif, clockwise] : azimuths) {
        const auto report = radar(seen(21.5, onvif));
        ASSERT_TRUE(report);
        EXPECT_EQ(report->range, 21.5);
        EXPECT_NEAR(report->azimuth, clockwise, 1e-12) << onvif;
        EXPECT_FALSE(report->speed || report->direction || report->radialSpeed);
    }
    EXPECT_THAT(leftOut.counts(), IsEmpty());
}

TEST_F(SceneOfRadar, TakesSpeedAndDirection) {
    SceneObject object = seen(20.0, 90.0);
    object.speed = 3.0;
    for (const auto& [yaw, clockwise] : {std::pair(90.0, 0.0), std::pair(0.0, 90.0),
                                         std::pair(-90.0, 180.0), std::pair(135.0, -45.0)}) {
        object.direction = MotionDirection{yaw, 0.0};
        const auto report = radar(object);
        EXPECT_EQ(report->speed, 3.0);
        EXPECT_NEAR(std::remainder(*report->direction - clockwise, 360.0), 0.0, 1e-12) << yaw;
        EXPECT_LE(std::abs(*report->direction), 180.0);
    }
    object.direction = MotionDirection{90.0, 60.0};
    EXPECT_NEAR(*radar(object)->speed, 1.5, 1e-12);
    object.direction.reset();
    EXPECT_EQ(radar(object)->speed, std::nullopt);
    EXPECT_THAT(leftOut.counts(), ElementsAre(Pair("Speed without Direction", 1)));
    object.speed = 0.0;
    EXPECT_EQ(radar(object)->speed, 0.0);
    EXPECT_EQ(radar(object)->direction, 0.0);
}

TEST_F(SceneOfRadar, TakesTheClass) {
    SceneObject object = seen(20.0, 90.0);
    object.classes = {{"Human", 0.7}};
    object.colors = {{ColorSpace::Rgb, {200.0, 20.0, 25.0}, {}, 0.75}};
    const auto report = radar(object);
    EXPECT_EQ(report->objectClass.name, "human");
    EXPECT_EQ(report->objectClass.probability, 0.7);
    EXPECT_THAT(leftOut.counts(), ElementsAre(Pair("Color of a radar", 1)));
}

TEST_F(SceneOfRadar, LeavesOutElevationAndShape) {
    SceneObject object = seen(20.0, 90.0);
    object.spherical->elevation = -10.0;
    object.shape = Shape{Host::ImageBox{}, std::nullopt, {}};
    object.geo = GeoPlace{55.7, 13.2};
    EXPECT_TRUE(radar(object));
    EXPECT_THAT(leftOut.counts(), ElementsAre(Pair("GeoLocation beside SphericalCoordinate", 1),
                                              Pair("Shape of a radar", 1),
                                              Pair("SphericalCoordinate.ElevationAngle", 1)));
}

TEST_F(SceneOfRadar, FindsPlacesOnEarth) {
    installation.site = Host::Site{55.7, 13.2, 140.0};
    installation.radar.mounting.yaw = -20.0;
    installation.radar.mounting.pitch = 8.0;
    const Eigen::Vector2d ground(31.0, -4.0);
    const auto position = Host::geographicPosition(*installation.site, ground);
    SceneObject object;
    object.geo = GeoPlace{position.latitude, position.longitude};
    const auto report = radar(object);
    ASSERT_TRUE(report);
    // The adapter's own model leads back.
    const Host::RadarModel model(installation.radar, {});
    EXPECT_LT((model.groundPoint(report->range, report->azimuth).position - ground).norm(), 1e-4);
    EXPECT_THAT(leftOut.counts(), IsEmpty());

    object.spherical = SphericalPlace{std::nullopt, std::nullopt, 90.0};
    EXPECT_TRUE(radar(object));
    EXPECT_EQ(leftOut.counts().at("SphericalCoordinate without Distance and AzimuthAngle"), 1);
    object.geo = GeoPlace{-55.7, 13.2};
    EXPECT_FALSE(radar(object));
    EXPECT_EQ(leftOut.counts().at("GeoLocation far from the site"), 1);
    installation.site.reset();
    EXPECT_FALSE(radar(object));
    EXPECT_EQ(leftOut.counts().at("GeoLocation while the installation has no site"), 1);
    object.geo.reset();
    EXPECT_FALSE(radar(object));
    EXPECT_FALSE(radar(SceneObject()));
}

}  // namespace
}  // namespace Veskar::Live
