// SPDX-License-Identifier: Apache-2.0
// From fused frames to scene descriptions.
#include <veskar-host/GeographicPosition.h>

#include "host/TestInstallation.h"
#include "live/onvif/ClassWords.h"
#include "live/onvif/FusedScene.h"
#include "live/onvif/SceneCodec.h"

#include <cmath>
#include <limits>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace Veskar::Live {
namespace {

using testing::IsEmpty;
using testing::SizeIs;

const UtcTime noon = std::chrono::seconds(1'777'636'800);

Host::FusedTrack trackOf(std::int32_t id) {
    Host::FusedTrack track;
    track.id = id;
    track.box = {-0.2, -0.5, 0.1, 0.25};
    track.labels.objectClass = {"car", 0.8};
    track.labels.color = {"blue", 0.6};
    // Ahead and to the left.
    track.ground = Host::GroundPosition{
        {30.0, 40.0}, Eigen::Matrix2d::Identity(), {1.0, -2.0}, Eigen::Matrix2d::Identity()};
    track.speed = 2.5;
    track.direction = 128.5;
    track.geo = Dbus::GeoLocation::Position{13.2, 55.7, 0.0, true};
    return track;
}

TEST(FusedScene, StatesWhatATrackKnows) {
    FusedScene fused(VeskarTest::testInstallation(), "fusion");
    const SceneFrame frame = fused.describe({0.0, 0.0, VideoObject, {trackOf(7)}}, noon);
    EXPECT_EQ(frame.time, noon);
    EXPECT_EQ(frame.source, "fusion");
    EXPECT_TRUE(frame.transformation.isIdentity());
    ASSERT_THAT(frame.objects, SizeIs(1));
    const SceneObject& object = frame.objects[0];
    EXPECT_EQ(object.name.id, "7");
    ASSERT_TRUE(object.shape && object.shape->box);
    EXPECT_EQ(object.shape->box->left, -0.2);
    EXPECT_EQ(object.shape->box->top, 0.25);
    EXPECT_TRUE(object.shape->centre->isApprox(Eigen::Vector2d(-0.05, -0.125)));
    ASSERT_THAT(object.classes, SizeIs(2));
    EXPECT_EQ(object.classes[1].word, "Car");
    EXPECT_EQ(object.classes[1].likelihood, 0.8);
    ASSERT_THAT(object.colors, SizeIs(1));
    EXPECT_EQ(object.colors[0].likelihood, 0.6);
    EXPECT_EQ(object.speed, 2.5);
    ASSERT_TRUE(object.direction);
    EXPECT_NEAR(object.direction->yaw, -38.5, 1e-12);  // to the right and towards the device
    ASSERT_TRUE(object.spherical);
    // Of a camera 5 m above the ground.
    EXPECT_NEAR(*object.spherical->distance, std::sqrt(50.0 * 50.0 + 5.0 * 5.0), 1e-12);
    EXPECT_NEAR(*object.spherical->azimuth, 143.13010235415598, 1e-9);
    EXPECT_NEAR(*object.spherical->elevation, -5.710593137499643, 1e-9);
    ASSERT_TRUE(object.geo);
    EXPECT_EQ(object.geo->latitude, 55.7);
    EXPECT_EQ(object.geo->longitude, 13.2);
    EXPECT_THAT(frame.deletes, IsEmpty());
}

TEST(FusedScene, StatesNothingThatATrackDoesNotKnow) {
    Host::FusedTrack track;
    track.id = 1;
    track.box.left = std::numeric_limits<double>::quiet_NaN();
    track.speed = std::numeric_limits<double>::infinity();
    track.geo = Dbus::GeoLocation::Position{};
    FusedScene fused(VeskarTest::testInstallation());
    const SceneFrame frame = fused.describe({0.0, 0.0, VideoObject, {track}}, noon);
    EXPECT_EQ(toJson({frame}),
              "{\"Frame\":[{\"@UtcTime\":\"2026-05-01T12:00:00.000000Z\",\"@Source\":\"veskar\","
              "\"Object\":[{\"@ObjectId\":1}]}]}");
}

TEST(FusedScene, DeletesTracksThatAreGone) {
    FusedScene fused(VeskarTest::testInstallation());
    const auto describe = [&](std::vector<Host::FusedTrack> tracks) {
        std::vector<std::string> gone;
        const Host::FusedFrame frame{0.0, 0.0, VideoObject, std::move(tracks)};
        for (const ObjectName& name : fused.describe(frame, noon).deletes) {
            gone.push_back(name.id);
        }
        return gone;
    };
    EXPECT_THAT(describe({trackOf(1), trackOf(2), trackOf(3)}), IsEmpty());
    EXPECT_THAT(describe({trackOf(2), trackOf(4)}), testing::ElementsAre("1", "3"));
    EXPECT_THAT(describe({trackOf(2), trackOf(4)}), IsEmpty());
    EXPECT_THAT(describe({}), testing::ElementsAre("2", "4"));
    EXPECT_THAT(describe({}), IsEmpty());
}

TEST(FusedScene, LeadsBackThroughBothForms) {
    FusedScene fused(VeskarTest::testInstallation());
    const Scene scene{fused.describe({0.0, 0.0, VideoObject, {trackOf(7), trackOf(8)}}, noon),
                      fused.describe({0.0, 0.0, Veskar::Radar, {trackOf(8)}}, noon)};
    LeftOut leftOut;
    SceneReader reader;
    EXPECT_EQ(toJson(reader.readXml(toXml(scene), leftOut)), toJson(scene));
    EXPECT_EQ(toXml(reader.readJson(toJson(scene), leftOut)), toXml(scene));
    EXPECT_THAT(leftOut.counts(), IsEmpty());
    const SceneObject back = reader.readJson(toJson(scene), leftOut).at(0).objects.at(0);
    EXPECT_EQ(bestClass(back.classes, leftOut).name, "car");
    EXPECT_NEAR(*back.spherical->azimuth, 143.1301, 1e-9);
}

}  // namespace
}  // namespace Veskar::Live
