// SPDX-License-Identifier: Apache-2.0
// Creation, confirmation and deletion of system tracks.
#include "fusion/FusionFixture.h"

#include <cmath>
#include <cstdint>
#include <limits>

namespace VeskarTest {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Veskar::ObjectIdGenerator;
using Veskar::Radar;
using Veskar::VideoObject;
using Veskar::VideoVura;

class TrackManagement : public FusionTest {};

// --- Birth

TEST_F(TrackManagement, StartsASystemTrackForEverySensorTrackThatNoneHolds) {
    showVideo(10.0, {video(5, 10.0), video(3, 10.0, {0.1})});
    ASSERT_THAT(systemIds(), ElementsAre(1, 2)) << "in the order of the frame";
    EXPECT_THAT(heldIds(0, VideoObject), ElementsAre(5));
    EXPECT_THAT(heldIds(1, VideoObject), ElementsAre(3));
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(&systemTrack(0)) % 16U, 0U);
    showVideo(10.1, {video(5, 10.1), video(3, 10.1, {0.1})});
    EXPECT_THAT(systemIds(), ElementsAre(1, 2));
}

TEST_F(TrackManagement, TellsRadarAndVideoTracksOfOneIdApart) {
    showVideo(10.0, {video(5, 10.0)});
    fuseRadar(10.0, {radar(5, 10.0, {2.0})});
    EXPECT_THAT(systemIds(), ElementsAre(1, 2));
}

TEST_F(TrackManagement, StartsOneSystemTrackForTwoReportsWithOneId) {
    const auto first = video(5, 10.0);
    showVideo(10.0, {first, video(5, 10.0, {2.0})});
    ASSERT_THAT(systemIds(), ElementsAre(1));
    EXPECT_EQ(systemTrack(0).getSensorTracks(VideoObject).at(5), first);
}

TEST_F(TrackManagement, TellsEqualIdsOfTwoSensorsInOneFrameApart) {
    module().cycleFrame(VideoObject, 10.0, {video(5, 10.0), radar(5, 10.0, {2.0})});
    ASSERT_THAT(systemIds(), ElementsAre(1, 2));
    EXPECT_THAT(heldIds(1, Radar), ElementsAre(5));
}

TEST_F(TrackManagement, NumbersSystemTracksByThePublishedGenerator) {
    module();
    ObjectIdGenerator published;
    ObjectIdGenerator* const own = ObjectIdGenerator::instance;
    ObjectIdGenerator::instance = &published;
    published.lastId = 41;
    module().initialize(video(1, 10.0));
    EXPECT_THAT(systemIds(), ElementsAre(42));
    EXPECT_EQ(own->lastId, 0);
    ObjectIdGenerator::instance = own;
}

TEST_F(TrackManagement, NumbersGoOnWithZeroAfterTheLargest) {
    module();
    ObjectIdGenerator::instance->lastId = std::numeric_limits<std::int32_t>::max() - 1;
    showVideo(10.0, {video(1, 10.0), video(2, 10.0, {2.0}), video(3, 10.0, {4.0})});
    EXPECT_THAT(systemIds(), ElementsAre(std::numeric_limits<std::int32_t>::max(), 0, 1));
}

TEST_F(TrackManagement, DoesNotInitializeATrackThatIsHeld) {
    const auto held = video(1, 10.0);
    module().initialize(held);
    module().initialize(held);
    module().initialize(video(1, 10.0, {2.0}));
    EXPECT_THAT(systemIds(), ElementsAre(1));
}

using TrackManagementDeathTest = TrackManagement;

TEST_F(TrackManagementDeathTest, StopsAtANullTrack) {
    EXPECT_DEATH(module().initialize(nullptr), "get\\(\\) != nullptr");
}

TEST_F(TrackManagementDeathTest, StopsAtANullSystemTrack) {
    module().systemTracks.push_back(nullptr);
    const char* const assertion = "get\\(\\) != nullptr";
    EXPECT_DEATH(module().initialize(video(1, 10.0)), assertion);
    EXPECT_DEATH(module().update(VideoObject, {video(1, 10.0)}), assertion);
    EXPECT_DEATH(module().update(Radar, {}), assertion);
    EXPECT_DEATH(module().predictTracks(1.0), assertion);
    EXPECT_DEATH(module().management(), assertion);
    EXPECT_DEATH(showVideo(10.0, {}), assertion);
}

/// A human tracked by radar, and in one video frame a matching human with a car beside it.
class FusionExclusion : public TrackManagement {
protected:
    FusionExclusion() { config.module.removeClassMismatches = true; }

    static std::shared_ptr<Veskar::Track> car(double time) {
        return video(8, time, {0.2, 0.0, 2.0, "car"});
    }
};

TEST_F(FusionExclusion, StartsNoSystemTrackFromAClassMismatch) {
    fuseRadar(10.0, {radar(1, 10.0)});
    showVideo(10.0, {video(1, 10.0), car(10.0)});
    EXPECT_THAT(systemIds(), ElementsAre(1));
}

TEST_F(FusionExclusion, StartsItWhenClassesDoNotPart) {
    config.module.removeClassMismatches = false;
    fuseRadar(10.0, {radar(1, 10.0)});
    showVideo(10.0, {video(1, 10.0), car(10.0)});
    EXPECT_THAT(systemIds(), ElementsAre(1, 2));
}

TEST_F(FusionExclusion, LastsForOneFrame) {
    fuseRadar(10.0, {radar(1, 10.0)});
    showVideo(10.0, {video(1, 10.0), car(10.0)});
    showVideo(10.1, {car(10.1)});
    EXPECT_THAT(systemIds(), ElementsAre(1, 2));
}

// --- Confirmation

TEST_F(TrackManagement, ConfirmsOneSensorAboveTheUpperLimitOnly) {
    config.module.systemTrackConfirmationLimitUpper = 0.5;
    showVideo(10.0, {video(1, 10.0)});
    EXPECT_FALSE(systemTrack(0).isConfirmed) << "0.5 is not above 0.5";
    restart();
    config.module.systemTrackConfirmationLimitUpper = std::nextafter(0.5, 0.0);
    showVideo(10.0, {video(1, 10.0)});
    EXPECT_TRUE(systemTrack(0).isConfirmed);
}

TEST_F(TrackManagement, ConfirmsTwoSensorsAboveTheLowerLimit) {
    config.module.systemTrackConfirmationLimitLower = 0.5;
    makeFusedTrack({0.0, 0.0, 1.0});
    ASSERT_EQ(systemTrack(0).getTrackProbability(), 0.5);
    EXPECT_FALSE(systemTrack(0).isConfirmed) << "0.5 is not above 0.5";
    restart();
    config.module.systemTrackConfirmationLimitLower = std::nextafter(0.5, 0.0);
    makeFusedTrack({0.0, 0.0, 1.0});
    EXPECT_TRUE(systemTrack(0).isConfirmed);
}

TEST_F(TrackManagement, DoesNotConfirmOneSensorAboveTheLowerLimit) {
    config.module.systemTrackConfirmationLimitLower = 0.1;
    showVideo(10.0, {video(1, 10.0)});
    fuseRadar(10.0, {radar(1, 10.0, {2.0})});
    EXPECT_FALSE(systemTrack(0).isConfirmed);
    EXPECT_FALSE(systemTrack(1).isConfirmed);
}

TEST_F(TrackManagement, NeverTakesAConfirmationBack) {
    config.module.systemTrackConfirmationLimitUpper = 0.49;
    showVideo(10.0, {video(1, 10.0)});
    ASSERT_TRUE(systemTrack(0).isConfirmed);
    for (int i = 1; i < 10; ++i) {
        showVideo(10.0 + 0.1 * i, {video(1, 10.0 + 0.1 * i, {0.0, 0.0, 0.1})});
    }
    EXPECT_LT(systemTrack(0).getTrackProbability(), 0.1);
    EXPECT_TRUE(systemTrack(0).isConfirmed);
}

TEST_F(TrackManagement, ConfirmsBySupportsHeldBeforePruning) {
    config.module.systemTrackConfirmationLimitLower = 0.4;
    showVideo(10.0, {video(1, 10.0)});
    const auto coasting = radar(1, 10.0);
    coasting->coastingTime = 0.7;
    fuseRadar(10.0, {coasting});
    EXPECT_THAT(heldIds(0, Radar), IsEmpty());
    EXPECT_TRUE(systemTrack(0).isConfirmed);
}

TEST_F(TrackManagement, JudgesConfidenceAfterPruning) {
    const auto doubtful = video(1, 10.0);
    doubtful->isConfident = false;
    showVideo(10.0, {doubtful});
    EXPECT_FALSE(systemTrack(0).isConfident);
    const auto coasting = radar(1, 10.0);
    coasting->coastingTime = 0.7;
    fuseRadar(10.0, {coasting});
    EXPECT_FALSE(systemTrack(0).isConfident) << "radar is gone already";
    fuseRadar(10.0, {radar(2, 10.0)});
    EXPECT_TRUE(systemTrack(0).isConfident);
}

// --- Death

TEST_F(TrackManagement, DropsASensorThatFallsSilentAndKeepsTheOther) {
    makeFusedTrack();
    showVideo(10.4, {video(1, 10.4, {0.1})});
    EXPECT_THAT(heldIds(0, Radar), ElementsAre(1));
    showVideo(10.5, {video(1, 10.5, {0.1})});
    EXPECT_THAT(heldIds(0, Radar), IsEmpty());
    EXPECT_NEAR(systemTrack(0).state[0], 0.1, 1e-9);
}

TEST_F(TrackManagement, DeletesWhatHasLostItsLastTrackAndKeepsTheOrder) {
    showVideo(10.0, {video(1, 10.0), video(2, 10.0, {2.0}), video(3, 10.0, {4.0})});
    showVideo(10.3, {video(1, 10.3), video(3, 10.3, {4.0})});
    showVideo(10.5, {video(1, 10.5), video(3, 10.5, {4.0})});
    EXPECT_THAT(systemIds(), ElementsAre(1, 3));
}

TEST_F(TrackManagement, LeavesADeletedTrackToWhoeverStillHoldsIt) {
    showVideo(10.0, {video(1, 10.0)});
    const std::shared_ptr<Veskar::SystemTrack> kept = module().systemTracks[0];
    showVideo(11.0, {});
    EXPECT_THAT(systemIds(), IsEmpty());
    EXPECT_EQ(kept.use_count(), 1);
    showVideo(12.0, {video(1, 12.0)});
    EXPECT_EQ(kept->time, 11.0);
}

TEST_F(TrackManagement, DeletesWhatOnlyTheMotionTrackerSupports) {
    const auto track = video(1, 10.0);
    track->source = VideoVura;
    module().cycleFrame(VideoVura, 10.0, {track});
    EXPECT_THAT(systemIds(), IsEmpty());
}

/// System tracks made by the test: a fused one with radar track 1, and others.
class FusionCopies : public TrackManagement {
protected:
    FusionCopies() { config.module.allowRadarToMultiple = true; }

    void add(const Tracks& supports) {
        auto track = std::make_shared<Veskar::SystemTrack>(supports.front(), nextId++);
        for (std::size_t i = 1; i < supports.size(); ++i) {
            track->updateState(supports[i]);
        }
        module().systemTracks.push_back(track);
    }

    int nextId = 1;
};

TEST_F(FusionCopies, OfASharedRadarTrackAreDeletedOnlyWhereSharingIsAllowed) {
    add({radar(1, 10.0)});
    add({video(1, 10.0), radar(1, 10.0)});
    add({radar(2, 10.0)});
    module().management();
    EXPECT_THAT(systemIds(), ElementsAre(2, 3));

    restart();
    config.module.allowRadarToMultiple = false;
    add({radar(1, 10.0)});
    add({video(1, 10.0), radar(1, 10.0)});
    module().management();
    EXPECT_THAT(systemIds(), ElementsAre(4, 5));
}

TEST_F(FusionCopies, WithTwoRadarTracksAreNone) {
    add({radar(1, 10.0), radar(2, 10.0)});
    add({video(1, 10.0), radar(1, 10.0)});
    module().management();
    EXPECT_THAT(systemIds(), ElementsAre(1, 2));
}

TEST_F(FusionCopies, AreFoundBehindTheSecondRadarTrackOfTheFusedOne) {
    add({video(1, 10.0), radar(1, 10.0), radar(2, 10.0)});
    add({radar(2, 10.0)});
    module().management();
    EXPECT_THAT(systemIds(), ElementsAre(1));
}

TEST_F(FusionCopies, AreNeverFusedNorAreRadarOnlyTracksCopiesOfEachOther) {
    add({video(1, 10.0), radar(1, 10.0)});
    add({video(2, 10.0), radar(1, 10.0)});
    add({radar(3, 10.0)});
    add({radar(3, 10.0)});
    module().management();
    EXPECT_THAT(systemIds(), ElementsAre(1, 2, 3, 4));
}

TEST_F(FusionCopies, AreDeletedById) {
    add({radar(1, 10.0)});
    nextId = 1;
    add({video(5, 10.0)});
    add({video(1, 10.0), radar(1, 10.0)});
    module().management();
    EXPECT_THAT(systemIds(), ElementsAre(2)) << "both that carry the copy's id go";
}

// --- Clear

TEST_F(TrackManagement, ClearForgetsTracksOnly) {
    const auto loose = video(1, 4.0);
    showVideo(4.0, {video(1, 4.0), loose});
    showRadar(4.5, {radar(7, 4.5, {2.0})});
    module().trackedOdHasMotion(3, 0.0, 0.0);
    module().clear();
    EXPECT_THAT(systemIds(), IsEmpty());
    EXPECT_EQ(loose.use_count(), 1) << "the last sensor tracks are gone";
    EXPECT_TRUE(module().trackedOdHasMotion(3, 0.5, 0.0)) << "motion histories stay";

    showRadar(4.05, {});
    EXPECT_THAT(systemIds(), IsEmpty()) << "the waiting frame still waits at the front";
    showVideo(4.45, {});
    showRadar(9.0, {});
    EXPECT_THAT(systemIds(), ElementsAre(2)) << "it is fused, and ids go on";
}

TEST_F(TrackManagement, ClearKeepsVideoTime) {
    showVideo(4.0, {});
    module().clear();
    showRadar(4.05, {radar(1, 4.05)});
    EXPECT_THAT(systemIds(), ElementsAre(1));
}

}  // namespace
}  // namespace VeskarTest
