// SPDX-License-Identifier: Apache-2.0
// How the sensor tracks of a frame update the system tracks: continuation, merging, association,
// and the probability step of tracks without update.
#include "fusion/FusionFixture.h"
#include "support/EigenMatchers.h"
#include "support/TrackFactory.h"

#include <cmath>

namespace VeskarTest {
namespace {

using testing::DoubleNear;
using testing::ElementsAre;
using testing::IsEmpty;
using Veskar::Radar;
using Veskar::VideoObject;

/// One probability step, from the mean of the five previous posteriors.
double posterior(double mean, double gain) {
    return gain * mean / (1.0 - mean + gain * mean);
}

class FusionUpdate : public FusionTest {
protected:
    const std::vector<double>& history(std::size_t index) {
        return systemTrack(index).trackProbabilityHistory;
    }
};

// --- Continuation

TEST_F(FusionUpdate, FollowsAJumpWhileOnlyOneSensorSeesTheObject) {
    for (const auto& [source, make] : {std::pair{VideoObject, &video}, std::pair{Radar, &radar}}) {
        module().clear();
        module().cycleFrame(source, 10.0, {make(1, 10.0, {})});
        const auto jumped = make(1, 10.1, {10.0 * far});
        module().cycleFrame(source, 10.1, {jumped});
        ASSERT_EQ(module().systemTracks.size(), 1U);
        EXPECT_THAT(heldIds(0, source), ElementsAre(1));
        EXPECT_THAT(systemTrack(0).state, IsApprox(jumped->state, 1e-9));
        EXPECT_THAT(systemTrack(0).covariance, IsApprox(jumped->covariance, 1e-9));
    }
}

TEST_F(FusionUpdate, ReplacesWhatASensorTrackHasContributed) {
    makeFusedTrack();
    showVideo(10.0, {video(1, 10.0, {0.1})});
    EXPECT_NEAR(systemTrack(0).state[0], 0.05, 1e-12) << "mean of video at 0.1 and radar at 0";
    EXPECT_NEAR(systemTrack(0).covariance(0, 0), usualVariance / 2.0, 1e-12);
}

/// Estimates are computed two by two.
TEST_F(FusionUpdate, UpdatesEveryTrackAsIfItWereAlone) {
    constexpr int objects = 3;
    RandomEstimates random(601);
    const auto reportOf = [&random](int id, double time) {
        Report report;
        report.id = id;
        report.time = time;
        report.state = random.state();
        report.state[0] += 100.0 * id;
        report.covariance = random.covariance();
        report.className = "human";
        auto track = makeTrack(report);
        track->probability = 2.0;
        return track;
    };
    std::vector<Tracks> frames;
    for (const double time : {10.0, 10.1, 10.2}) {
        frames.emplace_back();
        for (int id = 1; id <= objects; ++id) {
            frames.back().push_back(reportOf(id, time));
        }
    }
    const auto showFrames = [&](std::size_t first, std::size_t count) {
        restart();
        for (const Tracks& frame : frames) {
            Tracks shown;
            for (std::size_t k = first; k < first + count; ++k) {
                shown.push_back(std::make_shared<Veskar::Track>(*frame[k]));
            }
            showVideo(shown.front()->time, shown);
        }
    };
    showFrames(0, objects);
    const auto together = module().systemTracks;
    ASSERT_EQ(together.size(), std::size_t{objects});
    for (std::size_t k = 0; k < objects; ++k) {
        showFrames(k, 1);
        EXPECT_EQ(systemTrack(0).state, together[k]->state);
        EXPECT_EQ(systemTrack(0).covariance, together[k]->covariance);
    }
}

TEST_F(FusionUpdate, UpdatesATrackWithTwoSensorTracksOfOneSource) {
    showVideo(10.0, {video(1, 10.0, {0.0})});
    systemTrack(0).updateState(video(2, 10.0, {0.2}));
    showVideo(10.0, {video(1, 10.0, {0.1}), video(2, 10.0, {0.3})});
    EXPECT_THAT(heldIds(0, VideoObject), ElementsAre(1, 2));
    EXPECT_NEAR(systemTrack(0).state[0], 0.2, 1e-12) << "mean of 0.1 and 0.3";
    EXPECT_NEAR(systemTrack(0).covariance(0, 0), usualVariance / 2.0, 1e-12);
}

TEST_F(FusionUpdate, KeepsTheAgeOfASensorTrackThatReportsAgain) {
    showVideo(10.0, {video(1, 10.0)});
    showVideo(10.2, {video(1, 10.2)});
    EXPECT_EQ(systemTrack(0).getSensorTracks(VideoObject).at(1)->startTime, 10.0);
}

TEST_F(FusionUpdate, CutsTheSensorTrackThatFailsTheGateOfAFusedTrack) {
    makeFusedTrack();
    fuseRadar(10.1, {radar(1, 10.1, {far})});
    EXPECT_THAT(heldIds(0, VideoObject), ElementsAre(1));
    EXPECT_THAT(heldIds(0, Radar), IsEmpty());
    EXPECT_NEAR(systemTrack(0).state[0], 0.0, 1e-9) << "its contribution is gone";
}

/// A radar track with so small a covariance that losing video hardly widens the gate.
class FusionGate : public FusionUpdate {
protected:
    void showAt(double gates) {
        constexpr double sure = 0.0001;
        showVideo(10.0, {video(1, 10.0)});
        fuseRadar(10.0, {radar(1, 10.0, {0.0, 0.0, 2.0, "human", sure})});
        const double fused = 1.0 / (1.0 / usualVariance + 1.0 / sure);
        const double width = config.module.gatingDistance * std::sqrt(fused + usualVariance);
        showVideo(10.0, {video(1, 10.0, {gates * width})});
    }
};

TEST_F(FusionGate, KeepsAReportJustInside) {
    showAt(0.999);
    EXPECT_THAT(heldIds(0, VideoObject), ElementsAre(1));
    EXPECT_THAT(systemIds(), ElementsAre(1));
}

TEST_F(FusionGate, CutsAReportJustOutside) {
    showAt(1.001);
    EXPECT_THAT(heldIds(0, VideoObject), IsEmpty());
    EXPECT_THAT(systemIds(), ElementsAre(1, 2));
}

TEST_F(FusionUpdate, MayTakeARefusedReportBackInTheSameFrame) {
    makeFusedTrack();
    // Outside the gate of the fused estimate, inside that of radar alone.
    const double before = systemTrack(0).getTrackProbability();
    const auto seen = video(1, 10.0, {0.95 * gateWidth, 0.0, 5.0});
    showVideo(10.0, {seen});
    ASSERT_THAT(systemIds(), ElementsAre(1));
    EXPECT_EQ(systemTrack(0).getSensorTracks(VideoObject).at(1), seen);
    EXPECT_NEAR(history(0)[1], posterior(before, 5.0), 1e-12) << "refused, yet counted";
    EXPECT_NE(history(0)[1], history(0)[2]);
    EXPECT_GT(history(0)[0], history(0)[1]) << "and counted once more";
}

TEST_F(FusionUpdate, StillCountsARefusedReport) {
    makeFusedTrack();
    const double before = systemTrack(0).getTrackProbability();
    const auto refused = video(1, 10.0, {far, 0.0, 5.0, "car"});
    refused->colorName = "red";
    showVideo(10.0, {refused});
    ASSERT_THAT(heldIds(0, VideoObject), IsEmpty());
    EXPECT_NEAR(history(0)[1], posterior(before, 5.0), 1e-12);
    EXPECT_EQ(systemTrack(0).getClassName(), "car");
    EXPECT_EQ(systemTrack(0).getColorName(), "red");
    EXPECT_EQ(refused->startTime, 10.0) << "it took the place of the report before";
}

TEST_F(FusionUpdate, GivesTheBoxBackToRadarWhenVideoIsCut) {
    makeFusedTrack();
    const auto jumped = video(1, 10.0, {far});
    showVideo(10.0, {jumped});
    EXPECT_THAT(systemTrack(0).boundingBox,
                IsApprox(systemTrack(0).getSensorTracks(Radar).at(1)->boundingBox, 0.0));
}

TEST_F(FusionUpdate, MayStartANewSystemTrackFromARefusedReport) {
    makeFusedTrack();
    fuseRadar(10.0, {radar(1, 10.0, {far})});
    ASSERT_THAT(systemIds(), ElementsAre(1, 2));
    EXPECT_THAT(heldIds(1, Radar), ElementsAre(1));
}

TEST_F(FusionUpdate, CountsTheLaterOfTwoReportsWithOneId) {
    showVideo(10.0, {video(1, 10.0)});
    const auto later = video(1, 10.1, {0.2});
    showVideo(10.1, {video(1, 10.1, {0.1}), later});
    ASSERT_THAT(systemIds(), ElementsAre(1));
    EXPECT_EQ(systemTrack(0).getSensorTracks(VideoObject).at(1), later);
    EXPECT_NEAR(systemTrack(0).state[0], 0.2, 1e-12);
}

TEST_F(FusionUpdate, FindsEveryReportWhateverTheOrderOfTheFrame) {
    Tracks first;
    Tracks second;
    for (int id = 20; id > 0; --id) {
        first.push_back(video(id, 10.0, {1.0 * id}));
        second.insert(second.begin() + (id % 3 == 0 ? 0 : static_cast<int>(second.size())),
                      video(id, 10.1, {1.0 * id + 0.5}));
    }
    showVideo(10.0, first);
    showVideo(10.1, second);
    ASSERT_EQ(module().systemTracks.size(), 20U);
    for (std::size_t i = 0; i < 20; ++i) {
        const int id = 20 - static_cast<int>(i);
        EXPECT_THAT(heldIds(i, VideoObject), ElementsAre(id));
        EXPECT_NEAR(systemTrack(i).state[0], id + 0.5, 1e-9);
    }
}

// --- Classes

/// The video track of a fused human changes its class to car, and another human is beside it.
class FusionMismatch : public FusionUpdate {
protected:
    void mistake() {
        makeFusedTrack();
        showVideo(10.0, {video(1, 10.0, {0.0, 0.0, 2.0, "car"}), video(2, 10.0, {0.1})});
    }
};

TEST_F(FusionMismatch, PartsNoSensorsByDefault) {
    mistake();
    ASSERT_THAT(systemIds(), ElementsAre(1, 2));
    EXPECT_THAT(heldIds(0, VideoObject), ElementsAre(1));
}

TEST_F(FusionMismatch, CutsTheSensorTrackWhenToldTo) {
    config.module.removeClassMismatches = true;
    mistake();
    ASSERT_THAT(systemIds(), ElementsAre(1));
    EXPECT_THAT(heldIds(0, VideoObject), ElementsAre(2)) << "the human fits better";
    EXPECT_THAT(heldIds(0, Radar), ElementsAre(1));
}

TEST_F(FusionMismatch, StillCountsTheReport) {
    config.module.removeClassMismatches = true;
    makeFusedTrack();
    const double before = systemTrack(0).getTrackProbability();
    showVideo(10.0, {video(1, 10.0, {0.0, 0.0, 5.0, "car"})});
    EXPECT_EQ(systemTrack(0).getClassName(), "car");
    EXPECT_NEAR(history(0)[1], posterior(before, 5.0), 1e-12);
    EXPECT_THAT(heldIds(0, VideoObject), ElementsAre(1)) << "nothing fits better";
}

TEST_F(FusionUpdate, LetsAClassChangeWhileOnlyOneSensorSeesTheObject) {
    config.module.removeClassMismatches = true;
    showVideo(10.0, {video(1, 10.0)});
    showVideo(10.1, {video(1, 10.1, {0.0, 0.0, 2.0, "car"})});
    EXPECT_THAT(heldIds(0, VideoObject), ElementsAre(1));
}

// --- Merging

/// A fused track loses its radar track while another radar track is at the video track's position.
/// Whether both merge in this frame shows whether the first one was excluded.
class FusionRefusal : public FusionUpdate {
protected:
    void refuseNextToRadarTrack(const Seen& refused) {
        makeFusedTrack();
        showVideo(10.1, {video(1, 10.1)});
        fuseRadar(10.1, {radar(1, 10.1), radar(2, 10.1, {0.1})});
        ASSERT_THAT(systemIds(), ElementsAre(1, 2));
        fuseRadar(10.2, {radar(1, 10.2, refused), radar(2, 10.2, {0.1})});
    }
};

TEST_F(FusionRefusal, LeavesAFailedGateOutOfTheSameFramesMerging) {
    for (const bool useJVA : {true, false}) {
        SCOPED_TRACE(useJVA);
        restart();
        config.module.useJVA = useJVA;
        refuseNextToRadarTrack({far + 1.0});
        ASSERT_THAT(systemIds(), ElementsAre(1, 2, 3)) << "3 for the refused report";
        EXPECT_THAT(heldIds(0, Radar), IsEmpty());
        EXPECT_THAT(heldIds(1, Radar), ElementsAre(2));
        fuseRadar(10.3, {radar(1, 10.3, {far + 1.0}), radar(2, 10.3, {0.1})});
        EXPECT_EQ(module().systemTracks.size(), 2U) << "the next frame merges";
    }
}

TEST_F(FusionRefusal, MergesAfterAClassMismatchInTheSameFrame) {
    config.module.removeClassMismatches = true;
    refuseNextToRadarTrack({0.0, 0.0, 2.0, "car"});
    EXPECT_THAT(heldIds(0, VideoObject), ElementsAre(1));
    EXPECT_THAT(heldIds(0, Radar), ElementsAre(2));
}

class FusionMerging : public FusionUpdate {
protected:
    /// Two single-sensor system tracks apart from each other: 1 from video at u = 0 and the younger
    /// 2 from radar.
    void startVideoThenRadar() {
        showVideo(10.0, {video(1, 10.0)});
        fuseRadar(10.1, {radar(1, 10.1, {far})});
        ASSERT_THAT(systemIds(), ElementsAre(1, 2));
    }
    /// The same with radar first, at u = 0.
    void startRadarThenVideo() {
        fuseRadar(10.0, {radar(1, 10.0)});
        showVideo(10.1, {video(1, 10.1, {far})});
        ASSERT_THAT(systemIds(), ElementsAre(1, 2));
    }
};

TEST_F(FusionMerging, KeepsTheOlderTrackOfAnOptimalPair) {
    startVideoThenRadar();
    fuseRadar(10.2, {radar(1, 10.2, {0.1})});
    ASSERT_THAT(systemIds(), ElementsAre(1));
    EXPECT_THAT(heldIds(0, VideoObject), ElementsAre(1));
    EXPECT_THAT(heldIds(0, Radar), ElementsAre(1));

    restart();
    startRadarThenVideo();
    showVideo(10.2, {video(1, 10.2, {0.1})});
    fuseRadar(10.2, {radar(1, 10.2)});
    ASSERT_THAT(systemIds(), ElementsAre(1));
    EXPECT_THAT(heldIds(0, VideoObject), ElementsAre(1));
    EXPECT_THAT(heldIds(0, Radar), ElementsAre(1));
}

TEST_F(FusionMerging, MergesAGreedyPairOnceAndKeepsItsRadarTrack) {
    config.module.useJVA = false;
    startVideoThenRadar();
    fuseRadar(10.2, {radar(1, 10.2, {0.1})});
    ASSERT_THAT(systemIds(), ElementsAre(2)) << "the first of the first pair survives";
    EXPECT_THAT(heldIds(0, VideoObject), ElementsAre(1));
    EXPECT_THAT(heldIds(0, Radar), ElementsAre(1));
    EXPECT_NEAR(systemTrack(0).covariance(0, 0), usualVariance / 2.0, 1e-4) << "each once";
}

TEST_F(FusionMerging, DoesNotMergeGreedilyWhenRadarWasFirst) {
    config.module.useJVA = false;
    startRadarThenVideo();
    showVideo(10.2, {video(1, 10.2, {0.1})});
    fuseRadar(10.2, {radar(1, 10.2)});
    EXPECT_THAT(systemIds(), ElementsAre(1, 2));
}

TEST_F(FusionMerging, HappensInEmptyRadarFramesToo) {
    startVideoThenRadar();
    showVideo(10.2, {video(1, 10.2, {far})});
    ASSERT_THAT(systemIds(), ElementsAre(1, 2)) << "but not in a video frame";
    fuseRadar(10.2, {});
    EXPECT_THAT(systemIds(), ElementsAre(1));
}

TEST_F(FusionMerging, CountsTheFoldedReport) {
    startVideoThenRadar();
    const double before = systemTrack(0).getTrackProbability();
    fuseRadar(10.2, {radar(1, 10.2, {0.1, 0.0, 5.0})});
    EXPECT_NEAR(history(0)[1], posterior(before, 5.0), 1e-12);
    EXPECT_NEAR(systemTrack(0).state[0], 0.05, 1e-3);
}

TEST_F(FusionMerging, MarksNothing) {
    startVideoThenRadar();
    fuseRadar(10.2, {radar(1, 10.2, {0.1})});
    const double mean = (history(0)[1] + history(0)[2] + history(0)[3] + history(0)[4] + 0.5) / 5.0;
    EXPECT_NEAR(history(0)[0], mean, 1e-12) << "a step of gain 1 follows the folded report";
}

TEST_F(FusionMerging, LowersTheProbabilityWhenTheFoldedRadarTrackCoasts) {
    startVideoThenRadar();
    showVideo(10.2, {video(1, 10.2, {far})});
    fuseRadar(10.2, {});
    ASSERT_THAT(systemIds(), ElementsAre(1));
    const double mean = (history(0)[1] + history(0)[2] + history(0)[3] + history(0)[4] + 0.5) / 5.0;
    EXPECT_NEAR(history(0)[0], posterior(mean, config.module.gainNegative.radar), 1e-12);
}

TEST_F(FusionMerging, TakesNoStepBesideAMarkedSurvivor) {
    startRadarThenVideo();
    showVideo(10.2, {video(1, 10.2, {0.0, 0.0, 4.0})});
    const double before = systemTrack(0).getTrackProbability();
    fuseRadar(10.2, {});
    ASSERT_THAT(systemIds(), ElementsAre(1));
    EXPECT_NEAR(history(0)[0], posterior(before, 4.0), 1e-12) << "the folded video track alone";
}

TEST_F(FusionMerging, KeepsTheOrderOfTheOthers) {
    showVideo(10.0, {video(1, 10.0, {-3.0 * far}), video(2, 10.0), video(3, 10.0, {-6.0 * far})});
    fuseRadar(10.1, {radar(1, 10.1, {3.0 * far}), radar(2, 10.1, {6.0 * far})});
    ASSERT_THAT(systemIds(), ElementsAre(1, 2, 3, 4, 5));
    fuseRadar(10.2, {radar(1, 10.2, {0.1}), radar(2, 10.2, {6.0 * far})});
    EXPECT_THAT(systemIds(), ElementsAre(1, 2, 3, 5));
}

TEST_F(FusionMerging, HappensBeforeNewSensorTracksAreAssociated) {
    startVideoThenRadar();
    showVideo(10.2, {video(1, 10.2), video(9, 10.2, {-3.0 * far})});
    ASSERT_THAT(systemIds(), ElementsAre(1, 2, 3));
    fuseRadar(10.2, {radar(1, 10.2, {0.1}), radar(9, 10.2, {-3.0 * far})});
    ASSERT_THAT(systemIds(), ElementsAre(1, 3));
    EXPECT_THAT(heldIds(0, Radar), ElementsAre(1));
    EXPECT_THAT(heldIds(1, Radar), ElementsAre(9)) << "found by its place in the shortened list";
}

TEST_F(FusionMerging, FoldsOnlyTheFirstVideoTrack) {
    const auto other = std::make_shared<Veskar::SystemTrack>(video(7, 10.0, {0.3}), 50);
    other->updateState(video(8, 10.0, {0.3}));
    other->updateState(radar(2, 10.0, {0.3}));
    Veskar::SystemTrack target(radar(1, 10.0), 51);
    module().merge(target, *other);
    EXPECT_EQ(target.getSensorTracks(VideoObject).size(), 1U);
    EXPECT_EQ(target.getSensorTracks(VideoObject).count(7), 1U);
    EXPECT_EQ(target.getSensorTracks(Radar).size(), 1U);
    EXPECT_EQ(target.getClassName(), "human");
    EXPECT_NEAR(target.trackProbabilityHistory[0], posterior(0.5, 2.0), 1e-12);
    EXPECT_EQ(other->getSensorTracks(VideoObject).size(), 2U) << "the other one stays as it is";
}

TEST_F(FusionMerging, FoldsTheFirstRadarTrackWhenThereIsNoVideo) {
    const auto other = std::make_shared<Veskar::SystemTrack>(radar(7, 10.0, {0.3}), 50);
    other->updateState(radar(3, 10.0, {0.3}));
    Veskar::SystemTrack target(video(1, 10.0), 51);
    module().merge(target, *other);
    EXPECT_EQ(target.getSensorTracks(Radar).size(), 1U);
    EXPECT_EQ(target.getSensorTracks(Radar).count(3), 1U);
}

// --- Association

TEST_F(FusionUpdate, AssociatesTheOtherSensorsTrack) {
    for (const bool useJVA : {true, false}) {
        restart();
        config.module.useJVA = useJVA;
        showVideo(10.0, {video(1, 10.0)});
        const auto seen = radar(4, 10.0, {0.1, 0.0, 3.0});
        fuseRadar(10.0, {seen});
        ASSERT_THAT(systemIds(), ElementsAre(1));
        EXPECT_EQ(systemTrack(0).getSensorTracks(Radar).at(4), seen);
        EXPECT_NEAR(systemTrack(0).state[0], 0.05, 1e-12);
        EXPECT_THAT(history(0),
                    ElementsAre(DoubleNear(posterior(0.5, 3.0), 1e-12), 0.5, 0.5, 0.5, 0.5))
            << "one step, with the report's gain";
    }
}

TEST_F(FusionUpdate, SkipsAPairWhoseSystemTrackHoldsTheSensorTracksOwnSource) {
    showVideo(10.0, {video(1, 10.0)});
    // A video track in a radar frame: judged by the frame's source, the system track is free.
    fuseRadar(10.0, {video(2, 10.0, {0.1})});
    ASSERT_THAT(systemIds(), ElementsAre(1, 2));
    EXPECT_THAT(heldIds(0, VideoObject), ElementsAre(1));
    EXPECT_THAT(heldIds(1, VideoObject), ElementsAre(2));
    EXPECT_EQ(systemTrack(0).state[0], 0.0);
}

TEST_F(FusionUpdate, SharesARadarTrackWhenToldTo) {
    for (const bool useJVA : {true, false}) {
        restart();
        config.module.useJVA = useJVA;
        config.module.allowRadarToMultiple = true;
        showVideo(10.0, {video(1, 10.0), video(2, 10.0, {0.2})});
        const auto seen = radar(1, 10.0, {0.1});
        fuseRadar(10.0, {seen});
        ASSERT_THAT(systemIds(), ElementsAre(1, 2));
        EXPECT_EQ(systemTrack(0).getSensorTracks(Radar).at(1), seen);
        EXPECT_EQ(systemTrack(1).getSensorTracks(Radar).at(1), seen);
    }
}

// --- What nothing has touched

TEST_F(FusionUpdate, LetsTheProbabilityBeWhenASensorOnlyMissesAReport) {
    showVideo(10.0, {video(1, 10.0, {0.0, 0.0, 5.0})});
    showVideo(10.1, {video(1, 10.1, {0.0, 0.0, 5.0})});
    const std::vector<double> before = history(0);
    showVideo(10.2, {});
    EXPECT_EQ(history(0), before) << "its holder is marked even without a report";
}

TEST_F(FusionUpdate, TakesOneStepOfGainOneInFramesOfAnotherSensor) {
    showVideo(10.0, {video(1, 10.0)});
    showVideo(10.1, {video(1, 10.1, {0.0, 0.0, 5.0})});
    const double first = history(0)[0];
    const double mean = systemTrack(0).getTrackProbability();
    fuseRadar(10.1, {});
    EXPECT_THAT(history(0), ElementsAre(DoubleNear(mean, 1e-12), first, 0.5, 0.5, 0.5));
}

TEST_F(FusionUpdate, TakesTheStepOfGainOneAfterAnUnmarkedTrackWasCut) {
    makeFusedTrack();
    const double before = systemTrack(0).getTrackProbability();
    const double oldest = history(0)[4];
    showVideo(10.0, {video(1, 10.0, {far, 0.0, 5.0})});
    const double refused = posterior(before, 5.0);
    const double mean = before + (refused - oldest) / 5.0;
    EXPECT_NEAR(history(0)[1], refused, 1e-12);
    EXPECT_NEAR(history(0)[0], mean, 1e-12) << "it holds no video any more";
}

// --- Labels

TEST_F(FusionUpdate, TakesTheColoursTogetherWithTheClass) {
    const auto labelled = [](int id, double time, const std::string& color) {
        auto track = video(id, time);
        track->colorName = color;
        track->colorProbability = 0.6;
        track->upperClothingColorName = color + "1";
        track->upperClothingColorProbability = 0.7;
        track->lowerClothingColorName = color + "2";
        track->lowerClothingColorProbability = 0.8;
        return track;
    };
    const auto expectColor = [this](const std::string& color) {
        ASSERT_EQ(module().systemTracks.size(), 1U);
        EXPECT_EQ(systemTrack(0).getColorName(), color);
        EXPECT_EQ(systemTrack(0).getColorProbability(), 0.6);
        EXPECT_EQ(systemTrack(0).getUpperClothingColorName(), color + "1");
        EXPECT_EQ(systemTrack(0).getUpperClothingColorProbability(), 0.7);
        EXPECT_EQ(systemTrack(0).getLowerClothingColorName(), color + "2");
        EXPECT_EQ(systemTrack(0).getLowerClothingColorProbability(), 0.8);
    };
    showVideo(10.0, {labelled(1, 10.0, "red")});
    expectColor("red");  // a new system track
    showVideo(10.1, {labelled(1, 10.1, "green")});
    expectColor("green");  // continuation

    restart();
    fuseRadar(10.0, {radar(1, 10.0)});
    showVideo(10.0, {labelled(1, 10.0, "blue")});
    expectColor("blue");  // association

    restart();
    fuseRadar(10.2, {radar(1, 10.2, {far})});
    showVideo(10.3, {labelled(1, 10.3, "grey")});
    fuseRadar(10.3, {radar(1, 10.3)});
    expectColor("grey");  // merging
}

}  // namespace
}  // namespace VeskarTest
