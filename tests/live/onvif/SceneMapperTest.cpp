// SPDX-License-Identifier: Apache-2.0
// Sensor frames from scene descriptions, and objects from frame to frame.
#include <veskar-host/InputError.h>

#include "host/TestInstallation.h"
#include "host/recording/FrameChecks.h"
#include "live/onvif/Samples.h"
#include "live/onvif/SceneCodec.h"
#include "live/onvif/SceneMapper.h"

#include <set>
#include <string>
#include <utility>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace Veskar::Live {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using testing::SizeIs;
using VeskarTest::testInstallation;
using Milliseconds = std::chrono::milliseconds;
using Seconds = std::chrono::seconds;

const UtcTime start = Seconds(1'777'636'800);

SceneObject boxed(const std::string& id, double left = 0.0) {
    SceneObject object;
    object.name.id = id;
    object.shape = Shape{Host::ImageBox{left, -0.5, left + 0.1, -0.2}, std::nullopt, {}};
    return object;
}

SceneObject bare(const std::string& id) {
    SceneObject object;
    object.name.id = id;
    return object;
}

SceneObject seen(const std::string& id, double distance) {
    SceneObject object;
    object.name.id = id;
    object.spherical = SphericalPlace{distance, std::nullopt, 90.0};
    return object;
}

SceneFrame frameAt(UtcTime time, std::vector<SceneObject> objects, const std::string& source = "") {
    SceneFrame frame;
    frame.time = time;
    frame.source = source;
    frame.objects = std::move(objects);
    return frame;
}

const Host::VideoReport& videoIn(const StampedFrame& frame, std::size_t index) {
    return std::get<Host::VideoReport>(frame.frame.tracks.at(index));
}

const Host::RadarReport& radarIn(const StampedFrame& frame, std::size_t index) {
    return std::get<Host::RadarReport>(frame.frame.tracks.at(index));
}

class SceneMapperTest : public testing::Test {
protected:
    /// The one frame that a frame becomes.
    StampedFrame map(const SceneFrame& frame, const std::string& publisher = "") {
        std::vector<StampedFrame> frames = mapper.map({frame}, publisher);
        EXPECT_EQ(frames.size(), 1);
        if (frames.empty()) {
            return {};
        }
        checkRules(frames[0].frame);
        return frames[0];
    }
    /// What every frame has to keep: the fusion and the recorder rely on it.
    static void checkRules(const Host::SensorFrame& frame) {
        std::set<std::int32_t> ids;
        for (const Host::Report& report : frame.tracks) {
            EXPECT_TRUE(ids.insert(baseOf(report).id).second);
            EXPECT_GE(baseOf(report).coasting, 0.0);
        }
        EXPECT_NO_THROW(Host::Internal::refuseBoxesUpsideDown(frame));
        EXPECT_NO_THROW(Host::parseSensorFrame(toJsonLine(frame)));
    }

    SceneMapper mapper{testInstallation()};
};

TEST_F(SceneMapperTest, StampsFramesWithTheTimeOfTheSensor) {
    const StampedFrame frame = map(frameAt(start + Milliseconds(250), {boxed("1")}));
    EXPECT_EQ(frame.time, start + Milliseconds(250));
    EXPECT_EQ(frame.frame.time, 0.0);
    EXPECT_EQ(frame.frame.received, 0.0);
}

TEST_F(SceneMapperTest, TellsCameraFromRadarByTheContents) {
    EXPECT_EQ(map(frameAt(start, {boxed("1")}, "A")).frame.source, VideoObject);
    EXPECT_EQ(map(frameAt(start, {seen("1", 20.0)}, "B")).frame.source, Veskar::Radar);
    // Once decided, also for frames without objects, or with odd ones.
    EXPECT_EQ(map(frameAt(start + Seconds(1), {}, "A")).frame.source, VideoObject);
    EXPECT_EQ(map(frameAt(start + Seconds(1), {}, "B")).frame.source, Veskar::Radar);
    EXPECT_EQ(map(frameAt(start + Seconds(2), {boxed("2")}, "B")).frame.source, Veskar::Radar);
    // A frame without objects tells nothing.
    EXPECT_THAT(mapper.map({frameAt(start, {}, "C"), frameAt(start, {bare("1")}, "C")}, ""),
                IsEmpty());
    EXPECT_EQ(mapper.counts().undecided, 2);
    EXPECT_EQ(mapper.counts().mapped, 5);
}

TEST_F(SceneMapperTest, UsesModulesAsTold) {
    SceneMapper::Options options;
    options.modules = {{"Scan", ModuleUse::Radar}, {"Debug", ModuleUse::Ignored}};
    options.otherModules = ModuleUse::Video;
    SceneMapper told(testInstallation(), options);
    SceneObject both = boxed("1");
    both.spherical = SphericalPlace{20.0, std::nullopt, 90.0};
    EXPECT_EQ(told.map({frameAt(start, {both}, "Scan")}, "").at(0).frame.source, Veskar::Radar);
    EXPECT_EQ(told.map({frameAt(start, {}, "Any")}, "").at(0).frame.source, VideoObject);
    EXPECT_THAT(told.map({frameAt(start, {both}, "Debug")}, ""), IsEmpty());
    EXPECT_EQ(told.counts().ignored, 1);
}

TEST_F(SceneMapperTest, MapsEveryFrameOfAMessage) {
    LeftOut leftOut;
    const Scene scene = SceneReader().readXml(VeskarTest::sample("car-park.xml"), leftOut);
    const std::vector<StampedFrame> frames = mapper.map(scene, "gate/topic");
    ASSERT_EQ(frames.size(), 2);
    ASSERT_THAT(frames[0].frame.tracks, SizeIs(2));
    const Host::VideoReport& truck = videoIn(frames[0], 0);
    EXPECT_NEAR(truck.box.left, -0.5, 1e-12);
    EXPECT_NEAR(truck.box.bottom, -0.2, 1e-12);
    EXPECT_EQ(truck.labels.objectClass.name, "truck");
    EXPECT_EQ(truck.labels.color.name, "blue");
    EXPECT_TRUE(truck.velocity);
    const Host::VideoReport& person = videoIn(frames[0], 1);
    EXPECT_EQ(person.labels.objectClass.name, "human");
    EXPECT_EQ(person.labels.objectClass.probability, 0.65);
    EXPECT_EQ(person.labels.upperClothingColor.name, "red");
    EXPECT_EQ(person.labels.lowerClothingColor.name, "black");
    // The other module has nothing but a marker of a removed thing; the first one's are carried.
    EXPECT_THAT(frames[1].frame.tracks, SizeIs(2));
    EXPECT_EQ(mapper.leftOut().counts().at("Behaviour.Removed"), 1);
}

TEST_F(SceneMapperTest, KnowsTheAgeOfATrack) {
    EXPECT_EQ(videoIn(map(frameAt(start, {boxed("1")})), 0).age, 0.0);
    const StampedFrame later = map(frameAt(start + Milliseconds(1500), {boxed("1"), boxed("2")}));
    EXPECT_NEAR(videoIn(later, 0).age, 1.5, 1e-9);
    EXPECT_EQ(videoIn(later, 1).age, 0.0);
}

TEST_F(SceneMapperTest, KeepsPublishersApart) {
    const auto one = videoIn(map(frameAt(start, {boxed("1")}), "a/topic"), 0).id;
    const StampedFrame both = map(frameAt(start + Milliseconds(1), {boxed("1", 0.5)}), "b/topic");
    ASSERT_THAT(both.frame.tracks, SizeIs(2));
    EXPECT_EQ(videoIn(both, 0).id, one);
    EXPECT_EQ(videoIn(both, 0).box.left, 0.0);
    EXPECT_EQ(videoIn(both, 1).box.left, 0.5);
}

TEST_F(SceneMapperTest, ForgetsAPublisherThatHasGone) {
    const auto gone = videoIn(map(frameAt(start, {boxed("1")}, "A"), "camera#1"), 0).id;
    map(frameAt(start + Milliseconds(1), {boxed("1")}, "B"), "camera#1");
    map(frameAt(start + Milliseconds(2), {boxed("1")}), "camera#10");
    EXPECT_THAT(map(frameAt(start + Milliseconds(3), {boxed("1", 0.5)}), "camera#2").frame.tracks,
                SizeIs(4));
    mapper.forget("camera#1");
    mapper.forget("camera");
    // It connects again: not the same objects twice.
    const StampedFrame frame = map(frameAt(start + Milliseconds(4), {boxed("1")}, "A"), "camera#3");
    ASSERT_THAT(frame.frame.tracks, SizeIs(3));
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_NE(videoIn(frame, i).id, gone);
    }
}

TEST_F(SceneMapperTest, CarriesTheReportsOfOtherModules) {
    map(frameAt(start, {boxed("1")}, "A"));
    map(frameAt(start + Milliseconds(10), {boxed("1", 0.5)}, "B"));
    StampedFrame frame = map(frameAt(start + Milliseconds(100), {boxed("1", 0.1)}, "A"));
    ASSERT_THAT(frame.frame.tracks, SizeIs(2));
    EXPECT_EQ(videoIn(frame, 0).box.left, 0.1);
    EXPECT_EQ(videoIn(frame, 1).box.left, 0.5);
    // A frame of the same image adds to what comes with the next one.
    EXPECT_THAT(mapper.map({frameAt(start + Milliseconds(100), {boxed("1", 0.6)}, "B")}, ""),
                IsEmpty());
    EXPECT_EQ(mapper.counts().joined, 1);
    frame = map(frameAt(start + Milliseconds(200), {}, "A"));
    ASSERT_THAT(frame.frame.tracks, SizeIs(1));
    EXPECT_EQ(videoIn(frame, 0).box.left, 0.6);
    // A module that is silent is carried for half a second.
    EXPECT_THAT(map(frameAt(start + Milliseconds(600), {}, "A")).frame.tracks, SizeIs(1));
    EXPECT_THAT(map(frameAt(start + Milliseconds(601), {}, "A")).frame.tracks, IsEmpty());
    // Radar and video have nothing to do with each other.
    EXPECT_THAT(map(frameAt(start + Milliseconds(602), {seen("1", 20.0)}, "C")).frame.tracks,
                SizeIs(1));
}

TEST_F(SceneMapperTest, ReportsAnObjectOfSeveralModulesOnce) {
    SceneObject tracked = boxed("1");
    tracked.name.uuid = "X";
    SceneObject classified = boxed("77", 0.01);
    classified.name.uuid = "X";
    classified.classes = {{"Human", 0.8}};
    const auto id = videoIn(map(frameAt(start, {tracked}, "A")), 0).id;
    StampedFrame frame = map(frameAt(start + Milliseconds(50), {classified}, "B"));
    ASSERT_THAT(frame.frame.tracks, SizeIs(1));
    EXPECT_EQ(videoIn(frame, 0).id, id);
    // The tracker's place, the classifier's word.
    frame = map(frameAt(start + Milliseconds(100), {tracked}, "A"));
    ASSERT_THAT(frame.frame.tracks, SizeIs(1));
    EXPECT_EQ(videoIn(frame, 0).box.left, 0.0);
    EXPECT_EQ(videoIn(frame, 0).labels.objectClass.name, "human");
}

TEST_F(SceneMapperTest, LendsTheWordsOfAModuleThatOnlyClassifies) {
    SceneMapper::Options options;
    options.otherModules = ModuleUse::Video;
    SceneMapper told(testInstallation(), options);
    SceneObject tracked = boxed("1");
    tracked.name.uuid = "X";
    SceneObject classified = bare("5");
    classified.name.uuid = "X";
    classified.classes = {{"Car", 0.8}};
    told.map({frameAt(start, {tracked}, "A")}, "");
    const auto frames = told.map({frameAt(start + Milliseconds(50), {classified}, "B")}, "");
    ASSERT_THAT(frames.at(0).frame.tracks, SizeIs(1));
    EXPECT_EQ(videoIn(frames[0], 0).labels.objectClass.name, "car");
    EXPECT_THAT(told.leftOut().counts(), IsEmpty());
    told.map({frameAt(start + Milliseconds(60), {bare("6")}, "B")}, "");
    EXPECT_THAT(told.leftOut().counts(), ElementsAre(Pair("Object without a place", 1)));
}

TEST_F(SceneMapperTest, HoldsHiddenObjectsWhereTheyWere) {
    map(frameAt(start, {boxed("1", 0.3)}));
    SceneObject hidden = bare("1");
    hidden.classes = {{"Human", 0.6}};
    StampedFrame frame = map(frameAt(start + Milliseconds(400), {hidden}));
    ASSERT_THAT(frame.frame.tracks, SizeIs(1));
    EXPECT_EQ(videoIn(frame, 0).box.left, 0.3);
    EXPECT_NEAR(videoIn(frame, 0).coasting, 0.4, 1e-9);
    EXPECT_EQ(videoIn(frame, 0).labels.objectClass.name, "human");
    frame = map(frameAt(start + Milliseconds(500), {boxed("1", 0.4)}));
    EXPECT_EQ(videoIn(frame, 0).coasting, 0.0);
    // What is not listed is gone, and what is unknown is not seen.
    EXPECT_THAT(map(frameAt(start + Milliseconds(600), {})).frame.tracks, IsEmpty());
    EXPECT_THAT(map(frameAt(start + Milliseconds(700), {bare("1"), bare("2")})).frame.tracks,
                IsEmpty());
    EXPECT_EQ(mapper.leftOut().counts().at("Object without a place"), 2);
}

TEST_F(SceneMapperTest, HoldsIdleObjectsThatAreNoLongerListed) {
    SceneObject idle = boxed("1", 0.3);
    idle.isIdle = true;
    idle.speed = 0.0;
    const auto id = videoIn(map(frameAt(start, {idle})), 0).id;
    for (const int second : {1, 30, 60}) {
        const StampedFrame frame = map(frameAt(start + Seconds(second), {boxed("2", -0.5)}));
        ASSERT_THAT(frame.frame.tracks, SizeIs(2));
        EXPECT_EQ(videoIn(frame, 0).id, id);
        EXPECT_EQ(videoIn(frame, 0).coasting, 0.0);
        EXPECT_EQ(videoIn(frame, 0).velocity, Eigen::Vector2d(0.0, 0.0));
        EXPECT_EQ(videoIn(frame, 0).box.left, 0.3);
    }
    EXPECT_THAT(map(frameAt(start + Seconds(61), {boxed("2", -0.5)})).frame.tracks, SizeIs(1));
    // One that moves again is idle no more, and one that is deleted is gone.
    map(frameAt(start + Seconds(62), {idle}));
    map(frameAt(start + Seconds(63), {boxed("1", 0.4)}));
    EXPECT_THAT(map(frameAt(start + Seconds(64), {})).frame.tracks, IsEmpty());
    map(frameAt(start + Seconds(65), {idle}));
    SceneFrame deletion = frameAt(start + Seconds(66), {});
    deletion.deletes = {{"1", ""}};
    map(deletion);
    EXPECT_THAT(map(frameAt(start + Seconds(67), {})).frame.tracks, IsEmpty());
}

TEST_F(SceneMapperTest, LeavesOutMarkersOfRemovedThings) {
    SceneObject marker = boxed("1");
    marker.isRemoved = true;
    EXPECT_THAT(map(frameAt(start, {marker})).frame.tracks, IsEmpty());
    EXPECT_THAT(mapper.leftOut().counts(), ElementsAre(Pair("Behaviour.Removed", 1)));
}

TEST_F(SceneMapperTest, KeepsTheIdOfARenamedObject) {
    const StampedFrame before = map(frameAt(start, {boxed("1"), boxed("2", 0.5)}));
    SceneFrame renaming = frameAt(start + Seconds(1), {boxed("30"), boxed("2", 0.5)});
    renaming.renames = {{{"1", ""}, {"30", ""}}};
    StampedFrame after = map(renaming);
    ASSERT_THAT(after.frame.tracks, SizeIs(2));
    EXPECT_EQ(videoIn(after, 0).id, videoIn(before, 0).id);
    EXPECT_NEAR(videoIn(after, 0).age, 1.0, 1e-9);
    EXPECT_EQ(videoIn(after, 1).id, videoIn(before, 1).id);
    // Into one that is known: both are one now.
    renaming = frameAt(start + Seconds(2), {boxed("2", 0.5)});
    renaming.renames = {{{"30", ""}, {"2", ""}}};
    after = map(renaming);
    ASSERT_THAT(after.frame.tracks, SizeIs(1));
    EXPECT_EQ(videoIn(after, 0).id, videoIn(before, 0).id);
}

TEST_F(SceneMapperTest, ForgetsDeletedObjects) {
    const auto id = videoIn(map(frameAt(start, {boxed("1")})), 0).id;
    SceneFrame deletion = frameAt(start + Milliseconds(100), {boxed("1")});
    deletion.deletes = {{"1", ""}, {"99", ""}};
    // It is in this image still.
    EXPECT_EQ(videoIn(map(deletion), 0).id, id);
    const StampedFrame later = map(frameAt(start + Milliseconds(200), {boxed("1")}));
    EXPECT_NE(videoIn(later, 0).id, id);
    EXPECT_EQ(videoIn(later, 0).age, 0.0);
}

TEST_F(SceneMapperTest, ForgetsObjectsThatAreNotReported) {
    const auto id = videoIn(map(frameAt(start, {boxed("1")})), 0).id;
    map(frameAt(start + Seconds(30), {}));
    EXPECT_EQ(videoIn(map(frameAt(start + Seconds(59), {boxed("1")})), 0).id, id);
    map(frameAt(start + Seconds(100), {}));
    EXPECT_NE(videoIn(map(frameAt(start + Seconds(120), {boxed("1")})), 0).id, id);
}

TEST_F(SceneMapperTest, LetsAMergedObjectGoOn) {
    const StampedFrame before = map(frameAt(start, {boxed("12"), boxed("17", 0.2)}));
    // 12 covers 17 and is tracked further on.
    SceneFrame merge = frameAt(start + Milliseconds(100), {boxed("12")});
    merge.merges = {{{{"12", ""}, {"17", ""}}, {{"12", ""}}}};
    StampedFrame frame = map(merge);
    ASSERT_THAT(frame.frame.tracks, SizeIs(1));
    EXPECT_EQ(videoIn(frame, 0).id, videoIn(before, 0).id);
    // Both appear again, as who they were.
    SceneFrame split = frameAt(start + Milliseconds(200), {boxed("12"), boxed("17", 0.2)});
    split.splits = {{{{"12", ""}}, {{"17", ""}, {"12", ""}}}};
    frame = map(split);
    ASSERT_THAT(frame.frame.tracks, SizeIs(2));
    EXPECT_EQ(videoIn(frame, 0).id, videoIn(before, 0).id);
    EXPECT_EQ(videoIn(frame, 1).id, videoIn(before, 1).id);
}

TEST_F(SceneMapperTest, LetsAMergedObjectOfANewNameGoOn) {
    SceneObject idle = boxed("17", 0.2);
    idle.isIdle = true;
    const StampedFrame before = map(frameAt(start, {boxed("12"), idle}));
    SceneFrame merge = frameAt(start + Milliseconds(100), {boxed("20")});
    merge.merges = {{{{"12", ""}, {"17", ""}}, {{"20", ""}}}};
    StampedFrame frame = map(merge);
    // The idle one is seen no longer, because it is a part of number 20.
    ASSERT_THAT(frame.frame.tracks, SizeIs(1));
    EXPECT_EQ(videoIn(frame, 0).id, videoIn(before, 0).id);
    SceneFrame split = frameAt(start + Milliseconds(200), {boxed("21"), boxed("17", 0.2)});
    split.splits = {{{{"20", ""}}, {{"21", ""}, {"17", ""}}}};
    frame = map(split);
    ASSERT_THAT(frame.frame.tracks, SizeIs(2));
    std::set<std::int32_t> ids{videoIn(frame, 0).id, videoIn(frame, 1).id};
    EXPECT_THAT(ids, ElementsAre(videoIn(before, 0).id, videoIn(before, 1).id));
}

TEST_F(SceneMapperTest, EndsAnObjectThatSplitsIntoKnownOnes) {
    SceneObject idle = boxed("20");
    idle.isIdle = true;
    map(frameAt(start, {idle, boxed("1", 0.2), boxed("2", 0.4)}));
    SceneFrame split = frameAt(start + Milliseconds(100), {boxed("1", 0.2), boxed("2", 0.4)});
    split.splits = {{{{"20", ""}}, {{"1", ""}, {"2", ""}}}};
    EXPECT_THAT(map(split).frame.tracks, SizeIs(2));
}

TEST_F(SceneMapperTest, ReportsAnObjectThatIsListedTwiceOnce) {
    EXPECT_THAT(map(frameAt(start, {boxed("1"), boxed("1", 0.5)})).frame.tracks, SizeIs(1));
    EXPECT_THAT(mapper.leftOut().counts(), ElementsAre(Pair("Object listed twice", 1)));
}

TEST_F(SceneMapperTest, LetsLateFramesChangeNothing) {
    map(frameAt(start, {boxed("1", 0.1)}));
    map(frameAt(start + Milliseconds(200), {boxed("1", 0.3)}));
    // Overtaken and repeated frames come out as they are; what is known stays.
    for (const int time : {100, 200}) {
        const StampedFrame late =
            map(frameAt(start + Milliseconds(time), {boxed("1", 0.2), boxed("2", 0.6)}));
        EXPECT_EQ(late.time, start + Milliseconds(time));
        EXPECT_EQ(videoIn(late, 0).box.left, 0.2);
    }
    SceneFrame deletion = frameAt(start + Milliseconds(150), {});
    deletion.deletes = {{"1", ""}};
    map(deletion);
    EXPECT_EQ(mapper.leftOut().counts().at("ObjectTree of a late frame"), 1);
    const StampedFrame next = map(frameAt(start + Milliseconds(300), {bare("1")}));
    ASSERT_THAT(next.frame.tracks, SizeIs(1));
    EXPECT_EQ(videoIn(next, 0).box.left, 0.3);
    EXPECT_NEAR(videoIn(next, 0).coasting, 0.1, 1e-9);
}

TEST_F(SceneMapperTest, GoesOnWhenAClockIsSetBack) {
    map(frameAt(start, {boxed("1", 0.1)}, "A"));
    map(frameAt(start + Milliseconds(1), {boxed("1", 0.5)}, "B"));
    const UtcTime back = start - Seconds(3600);
    for (int i = 0; i < 5; ++i) {
        const StampedFrame frame =
            map(frameAt(back + Milliseconds(100 * i), {boxed("1", 0.2)}, "A"));
        ASSERT_THAT(frame.frame.tracks, SizeIs(1));
        EXPECT_NEAR(videoIn(frame, 0).age, 0.1 * i, 1e-9);
    }
}

TEST_F(SceneMapperTest, GivesRadarTracksARadialSpeed) {
    StampedFrame frame;
    for (int i = 0; i <= 40; ++i) {
        frame = map(frameAt(start + Milliseconds(100 * i), {seen("1", 40.0 - 0.2 * i)}));
        EXPECT_EQ(radarIn(frame, 0).speed, std::nullopt);
    }
    ASSERT_TRUE(radarIn(frame, 0).radialSpeed);
    EXPECT_NEAR(*radarIn(frame, 0).radialSpeed, -2.0, 0.02);
    SceneObject moving = seen("1", 32.0);
    moving.speed = 2.0;
    moving.direction = MotionDirection{-90.0, 0.0};
    frame = map(frameAt(start + Milliseconds(4100), {moving}));
    EXPECT_EQ(radarIn(frame, 0).speed, 2.0);
    EXPECT_EQ(radarIn(frame, 0).radialSpeed, std::nullopt);
    // An idle one stands still.
    moving.isIdle = true;
    map(frameAt(start + Milliseconds(4200), {moving}));
    frame = map(frameAt(start + Milliseconds(4300), {}));
    EXPECT_EQ(radarIn(frame, 0).speed, 0.0);
}

TEST_F(SceneMapperTest, FollowsTheFeetOfBoxesThatStateNoMotion) {
    SceneObject walker = boxed("walker");
    StampedFrame frame = map(frameAt(start, {walker}));
    EXPECT_FALSE(videoIn(frame, 0).velocity);
    for (int i = 1; i <= 100; ++i) {
        Host::ImageBox& box = *walker.shape->box;
        box.left += 0.001;
        box.right += 0.001;
        box.bottom -= 0.0005;
        frame = map(frameAt(start + Milliseconds(50 * i), {walker}));
    }
    ASSERT_TRUE(videoIn(frame, 0).velocity);
    EXPECT_NEAR((*videoIn(frame, 0).velocity)[0], 0.02, 1e-4);
    EXPECT_NEAR((*videoIn(frame, 0).velocity)[1], -0.01, 1e-4);
    // What the camera states goes before.
    walker.speed = 0.0;
    frame = map(frameAt(start + Milliseconds(5050), {walker}));
    EXPECT_EQ(videoIn(frame, 0).velocity, Eigen::Vector2d(0.0, 0.0));
    // Nothing is known after a gap.
    walker.speed.reset();
    frame = map(frameAt(start + Milliseconds(9000), {walker}));
    EXPECT_FALSE(videoIn(frame, 0).velocity);
}

TEST_F(SceneMapperTest, SurvivesCrowds) {
    std::vector<SceneObject> crowd;
    crowd.reserve(6000);
    for (int i = 0; i < 6000; ++i) {
        crowd.push_back(boxed(std::to_string(i)));
    }
    EXPECT_THAT(map(frameAt(start, crowd)).frame.tracks, SizeIs(4096));
    EXPECT_EQ(mapper.leftOut().counts().at("Object beyond the limit of a frame"), 6000 - 4096);
    // All of them anew.
    for (SceneObject& object : crowd) {
        object.name.id += "x";
    }
    EXPECT_THAT(map(frameAt(start + Seconds(1), crowd)).frame.tracks, SizeIs(4096));
}

TEST_F(SceneMapperTest, SurvivesManyModules) {
    const auto id = videoIn(map(frameAt(start, {boxed("1")}, "camera")), 0).id;
    for (int i = 0; i < 1000; ++i) {
        mapper.map({frameAt(start, {}, std::to_string(i))}, "");
        if (i % 50 == 0) {
            const UtcTime time = start + Milliseconds(1 + i);
            EXPECT_EQ(videoIn(map(frameAt(time, {boxed("1")}, "camera")), 0).id, id);
        }
    }
}

}  // namespace
}  // namespace Veskar::Live
