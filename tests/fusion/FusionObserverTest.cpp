// SPDX-License-Identifier: Apache-2.0
// The events that an observer receives, and that observing changes nothing.
#include <veskar/FusionObserver.h>

#include "fusion/FusionFixture.h"

#include <cmath>

namespace VeskarTest {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using Veskar::FusionObserver;
using Veskar::Radar;
using Veskar::VideoObject;
using ClassVerdict = FusionObserver::ClassVerdict;
using DeletionReason = FusionObserver::DeletionReason;
using GateVerdict = FusionObserver::GateVerdict;

/// Stores all events of the last frame, and their order.
class Recorder : public FusionObserver {
public:
    void onFrame(const Frame& frame) override {
        *this = Recorder();
        frames.push_back(frame);
    }
    void onContinuation(const Continuation& continuation) override {
        continuations.push_back(continuation);
        order += 'c';
    }
    void onCandidate(const Candidate& candidate) override {
        candidates.push_back(candidate);
        order += '?';
    }
    void onMergeCandidate(const MergeCandidate& candidate) override {
        mergeCandidates.push_back(candidate);
    }
    void onAssignment(const Link& link) override {
        assignments.push_back(link);
        order += 'a';
    }
    void onMerge(int survivorId, int otherId) override { merges.emplace_back(survivorId, otherId); }
    void onStart(const Link& link) override {
        starts.push_back(link);
        order += 's';
    }
    void onConfirmation(int systemTrackId, double probability, double limit) override {
        confirmations.push_back({systemTrackId, probability, limit});
    }
    void onPruning(const Pruning& pruning) override {
        prunings.push_back(pruning);
        order += 'p';
    }
    void onDeletion(int systemTrackId, DeletionReason reason) override {
        deletions.emplace_back(systemTrackId, reason);
        order += 'd';
    }

    struct Confirmation {
        int id;
        double probability;
        double limit;
    };
    std::vector<Frame> frames;
    std::vector<Continuation> continuations;
    std::vector<Candidate> candidates;
    std::vector<MergeCandidate> mergeCandidates;
    std::vector<Link> assignments;
    std::vector<std::pair<int, int>> merges;
    std::vector<Link> starts;
    std::vector<Confirmation> confirmations;
    std::vector<Pruning> prunings;
    std::vector<std::pair<int, DeletionReason>> deletions;
    std::string order;
};

/// Counts frames; whatever else it is told fails the test.
class FrameCounter : public Recorder {
public:
    void onFrame(const Frame& frame) override {
        EXPECT_THAT(order, IsEmpty());
        EXPECT_THAT(mergeCandidates, IsEmpty());
        EXPECT_THAT(merges, IsEmpty());
        EXPECT_THAT(confirmations, IsEmpty());
        times.push_back(frame.timestamp);
    }
    bool wantsDecisions() const override { return isCurious; }

    bool isCurious = false;
    std::vector<double> times;
};

class FusionObserverTest : public FusionTest {
protected:
    /// Starts observing; the first observed frame is the next one.
    void watch() { module().setObserver(&heard); }

    Recorder heard;
};

TEST_F(FusionObserverTest, HearsOfAFrameAndOfTheTrackItStarts) {
    watch();
    showVideo(10.0, {video(7, 10.0)});
    ASSERT_THAT(heard.frames, SizeIs(1));
    EXPECT_EQ(heard.frames[0].source, VideoObject);
    EXPECT_EQ(heard.frames[0].timestamp, 10.0);
    EXPECT_EQ(heard.frames[0].sensorTracks, 1U);
    EXPECT_EQ(heard.frames[0].systemTracks, 0U);
    ASSERT_THAT(heard.starts, SizeIs(1));
    EXPECT_EQ(heard.starts[0].systemTrackId, systemTrack(0).id);
    EXPECT_EQ(heard.starts[0].source, VideoObject);
    EXPECT_EQ(heard.starts[0].sensorTrackId, 7);
    EXPECT_THAT(heard.candidates, IsEmpty());
}

TEST_F(FusionObserverTest, HearsOfFramesOnlyWhenItWantsNoMore) {
    FrameCounter counter;
    module().setObserver(&counter);
    showVideo(10.0, {video(7, 10.0)});
    fuseRadar(10.0, {radar(9, 10.0, {0.1}), radar(10, 10.0, {far})});
    for (const double time : {10.1, 10.2, 10.3, 10.4, 10.5, 10.6, 10.7, 11.5}) {
        showVideo(time, {video(7, time)});
    }
    EXPECT_THAT(counter.times, SizeIs(10));
    EXPECT_THAT(counter.order, IsEmpty());
    // It is asked again before every frame.
    counter.isCurious = true;
    showVideo(11.6, {video(8, 11.6, {far})});
    EXPECT_THAT(counter.starts, SizeIs(1));
}

TEST_F(FusionObserverTest, HearsOfACandidateBeforeItsAssignment) {
    showVideo(10.0, {video(7, 10.0)});
    watch();
    fuseRadar(10.0, {radar(9, 10.0, {0.1})});
    ASSERT_THAT(heard.candidates, SizeIs(1));
    const FusionObserver::Candidate& candidate = heard.candidates[0];
    EXPECT_EQ(candidate.systemTrackId, systemTrack(0).id);
    EXPECT_EQ(candidate.source, Radar);
    EXPECT_EQ(candidate.sensorTrackId, 9);
    // 0.1 apart with twice the usual variance.
    EXPECT_NEAR(candidate.gate.distance, 0.1 / std::sqrt(2.0 * usualVariance), 1e-9);
    EXPECT_EQ(candidate.gate.limit, config.module.gatingDistance);
    EXPECT_EQ(candidate.gate.verdict, GateVerdict::Passed);
    EXPECT_FALSE(candidate.gate.velocitySimilarity.has_value());
    EXPECT_EQ(candidate.classVerdict, ClassVerdict::Match);
    EXPECT_TRUE(candidate.allowed);
    ASSERT_THAT(heard.assignments, SizeIs(1));
    EXPECT_EQ(heard.assignments[0].systemTrackId, systemTrack(0).id);
    EXPECT_EQ(heard.assignments[0].sensorTrackId, 9);
    EXPECT_EQ(heard.order, "?a");
}

TEST_F(FusionObserverTest, HearsWhyACandidateWasNotTaken) {
    showVideo(10.0, {video(1, 10.0)});
    watch();
    fuseRadar(10.0, {radar(1, 10.0, {far}), radar(2, 10.0, {0.0, 0.0, 2.0, "no such class"}),
                     radar(3, 10.0, {0.2, 0.0, 2.0, "car"}), radar(4, 10.0, {0.1})});
    ASSERT_THAT(heard.candidates, SizeIs(4));
    EXPECT_EQ(heard.candidates[0].gate.verdict, GateVerdict::TooFar);
    EXPECT_EQ(heard.candidates[1].gate.verdict, GateVerdict::ClassNotSupported);
    EXPECT_EQ(heard.candidates[2].gate.verdict, GateVerdict::Passed);
    EXPECT_EQ(heard.candidates[2].classVerdict, ClassVerdict::Mismatch);
    EXPECT_FALSE(heard.candidates[2].allowed) << "radar track 4 has the right class";
    EXPECT_TRUE(heard.candidates[3].allowed);
    ASSERT_THAT(heard.assignments, SizeIs(1));
    EXPECT_EQ(heard.assignments[0].sensorTrackId, 4);
}

TEST_F(FusionObserverTest, HearsHowFarATrackIsWhoseClassIsNotSupported) {
    config.module.splitGating = true;
    config.module.velocityMinGatingLimit = 0.05;
    showVideo(10.0, {video(1, 10.0, {0.0, 0.3})});
    watch();
    fuseRadar(10.0, {radar(2, 10.0, {0.1, -0.3, 2.0, "no such class"})});
    ASSERT_THAT(heard.candidates, SizeIs(1));
    const FusionObserver::Gate& gate = heard.candidates[0].gate;
    EXPECT_EQ(gate.verdict, GateVerdict::ClassNotSupported);
    EXPECT_NEAR(gate.distance, 0.1 / std::sqrt(2.0 * usualVariance), 1e-9);
    ASSERT_TRUE(gate.velocitySimilarity.has_value());
    EXPECT_NEAR(*gate.velocitySimilarity, -1.0, 1e-12);
}

TEST_F(FusionObserverTest, HearsThatATrackOfTheRightClassForbidsOthersAlsoWhileItIsHeld) {
    config.module.useJVA = true;
    showVideo(10.0, {video(1, 10.0), video(2, 10.0, {far})});
    fuseRadar(10.0, {radar(1, 10.0)});
    showVideo(10.1, {video(2, 10.1, {0.1})});
    watch();
    // Radar track 1 belongs to the first system track and is inside the gate of the second.
    fuseRadar(10.1, {radar(1, 10.1), radar(3, 10.1, {0.2, 0.0, 2.0, "car"})});
    ASSERT_THAT(heard.candidates, SizeIs(1));
    EXPECT_EQ(heard.candidates[0].sensorTrackId, 3);
    EXPECT_EQ(heard.candidates[0].gate.verdict, GateVerdict::Passed);
    EXPECT_FALSE(heard.candidates[0].allowed);
}

TEST_F(FusionObserverTest, HearsThatTheGreedyAssignmentKnowsNoClasses) {
    config.module.useJVA = false;
    showVideo(10.0, {video(1, 10.0)});
    watch();
    fuseRadar(10.0, {radar(3, 10.0, {0.2, 0.0, 2.0, "car"}), radar(4, 10.0, {0.1})});
    ASSERT_THAT(heard.candidates, SizeIs(2));
    EXPECT_TRUE(heard.candidates[0].allowed);
    EXPECT_TRUE(heard.candidates[1].allowed);
}

TEST_F(FusionObserverTest, HearsThatAnOtherClassIsAllowedWithoutABetterCandidate) {
    showVideo(10.0, {video(1, 10.0)});
    watch();
    fuseRadar(10.0, {radar(3, 10.0, {0.2, 0.0, 2.0, "car"})});
    ASSERT_THAT(heard.candidates, SizeIs(1));
    EXPECT_EQ(heard.candidates[0].classVerdict, ClassVerdict::Mismatch);
    EXPECT_TRUE(heard.candidates[0].allowed);
}

TEST_F(FusionObserverTest, HearsPositionAndVelocityApartWithSplitGating) {
    config.module.splitGating = true;
    config.module.velocityMinGatingLimit = 0.05;
    config.module.velocityGatingSimilarity = 0.25;
    showVideo(10.0, {video(1, 10.0, {0.0, 0.3})});
    watch();
    fuseRadar(10.0, {radar(1, 10.0, {0.1, -0.3})});
    ASSERT_THAT(heard.candidates, SizeIs(1));
    const FusionObserver::Gate& gate = heard.candidates[0].gate;
    EXPECT_EQ(gate.verdict, GateVerdict::VelocityDiffers);
    EXPECT_EQ(gate.limit, config.module.positionGatingDistance);
    EXPECT_NEAR(gate.distance, 0.1 / std::sqrt(2.0 * usualVariance), 1e-9);
    ASSERT_TRUE(gate.velocitySimilarity.has_value());
    EXPECT_NEAR(*gate.velocitySimilarity, -1.0, 1e-12);
    EXPECT_EQ(gate.similarityLimit, 0.25);
}

TEST_F(FusionObserverTest, HearsOfTheStationaryVeto) {
    config.module.splitGating = true;
    config.module.stationaryBlockingMinSpeed = 2.0;
    config.module.stationaryBlockingMinVideoAge = 1.0;
    config.module.stationaryBlockingMaxUVSpeed = 0.05;
    showVideo(10.0, {video(1, 10.0)});
    showVideo(12.0, {video(1, 12.0)});
    watch();
    const auto moving = radar(1, 12.0);
    moving->speed = 5.0;
    fuseRadar(12.0, {moving});
    ASSERT_THAT(heard.candidates, SizeIs(1));
    EXPECT_EQ(heard.candidates[0].gate.verdict, GateVerdict::StandsStill);
    EXPECT_FALSE(heard.candidates[0].allowed);
}

TEST_F(FusionObserverTest, ComparesOnlyWhatIsOpenToBeTaken) {
    makeFusedTrack();
    watch();
    // Track 1 holds radar and is no candidate for radar track 5; radar track 1 is held.
    fuseRadar(10.1, {radar(1, 10.1), radar(5, 10.1, {far})});
    EXPECT_THAT(heard.candidates, IsEmpty());
    EXPECT_THAT(heard.continuations, SizeIs(1));
}

TEST_F(FusionObserverTest, HearsOfAContinuation) {
    makeFusedTrack();
    watch();
    showVideo(10.1, {video(1, 10.1, {0.05})});
    ASSERT_THAT(heard.continuations, SizeIs(1));
    EXPECT_EQ(heard.continuations[0].source, VideoObject);
    EXPECT_EQ(heard.continuations[0].sensorTrackId, 1);
    EXPECT_EQ(heard.continuations[0].gate.verdict, GateVerdict::Passed);
    EXPECT_EQ(heard.continuations[0].classVerdict, ClassVerdict::Match);
    EXPECT_FALSE(heard.continuations[0].refused);
    EXPECT_THAT(heard.prunings, IsEmpty());
}

TEST_F(FusionObserverTest, HearsOfARefusalAndOfThePruningThatFollows) {
    makeFusedTrack();
    watch();
    fuseRadar(10.1, {radar(1, 10.1, {far})});
    ASSERT_THAT(heard.continuations, SizeIs(1));
    EXPECT_EQ(heard.continuations[0].gate.verdict, GateVerdict::TooFar);
    EXPECT_TRUE(heard.continuations[0].refused);
    ASSERT_THAT(heard.prunings, SizeIs(1));
    EXPECT_EQ(heard.prunings[0].systemTrackId, 1);
    EXPECT_EQ(heard.prunings[0].source, Radar);
    EXPECT_EQ(heard.prunings[0].sensorTrackId, 1);
    EXPECT_EQ(heard.prunings[0].coastingTime, 0.0);
}

TEST_F(FusionObserverTest, HearsOfMergeCandidatesAndMerges) {
    showVideo(10.0, {video(1, 10.0)});
    fuseRadar(10.1, {radar(1, 10.1, {far})});
    ASSERT_THAT(systemIds(), ElementsAre(1, 2));
    watch();
    fuseRadar(10.2, {radar(1, 10.2, {far})});
    ASSERT_THAT(heard.mergeCandidates, SizeIs(1));
    EXPECT_EQ(heard.mergeCandidates[0].olderId, 1);
    EXPECT_EQ(heard.mergeCandidates[0].youngerId, 2);
    EXPECT_EQ(heard.mergeCandidates[0].gate.verdict, GateVerdict::TooFar);
    EXPECT_THAT(heard.merges, IsEmpty());

    fuseRadar(10.3, {radar(1, 10.3)});
    ASSERT_THAT(heard.mergeCandidates, SizeIs(1));
    EXPECT_EQ(heard.mergeCandidates[0].gate.verdict, GateVerdict::Passed);
    EXPECT_FALSE(heard.mergeCandidates[0].excluded);
    EXPECT_THAT(heard.merges, ElementsAre(std::pair(1, 2)));
    EXPECT_THAT(heard.deletions, ElementsAre(std::pair(2, DeletionReason::Merged)));
}

TEST_F(FusionObserverTest, HearsThatMergeCandidatesOfTheSameAgeStayApart) {
    showVideo(10.0, {video(1, 10.0)});
    fuseRadar(10.0, {radar(1, 10.0, {far})});
    ASSERT_THAT(systemIds(), ElementsAre(1, 2));
    watch();
    fuseRadar(10.1, {radar(1, 10.1)});
    ASSERT_THAT(heard.mergeCandidates, SizeIs(1));
    EXPECT_EQ(heard.mergeCandidates[0].gate.verdict, GateVerdict::Passed);
    EXPECT_EQ(heard.mergeCandidates[0].hindrance, FusionObserver::MergeHindrance::SameStart);
    EXPECT_THAT(heard.merges, IsEmpty());
}

TEST_F(FusionObserverTest, HearsThatACandidateExactlyAtTheLimitIsTooFar) {
    const auto gateAt = [this](double limit) {
        config.module.gatingDistance = limit;
        restart();
        heard = {};
        showVideo(10.0, {video(1, 10.0)});
        watch();
        fuseRadar(10.0, {radar(1, 10.0, {0.1})});
        return heard.candidates.at(0).gate;
    };
    const double distance = gateAt(3.0).distance;
    EXPECT_EQ(gateAt(distance).verdict, GateVerdict::TooFar);
    EXPECT_EQ(gateAt(std::nextafter(distance, 3.0)).verdict, GateVerdict::Passed);
}

TEST_F(FusionObserverTest, HearsOfAConfirmationOnceAndOfTheLimitPassed) {
    watch();
    showVideo(10.0, {video(1, 10.0, {0.0, 0.0, 1000.0})});
    EXPECT_THAT(heard.confirmations, IsEmpty());
    int told = 0;
    for (int i = 1; i < 10; ++i) {
        showVideo(10.0 + 0.1 * i, {video(1, 10.0 + 0.1 * i, {0.0, 0.0, 1000.0})});
        for (const Recorder::Confirmation& confirmation : heard.confirmations) {
            EXPECT_EQ(confirmation.id, 1);
            EXPECT_EQ(confirmation.limit, config.module.systemTrackConfirmationLimitUpper);
            EXPECT_GT(confirmation.probability, confirmation.limit);
            ++told;
        }
    }
    EXPECT_EQ(told, 1);
}

TEST_F(FusionObserverTest, HearsTheLowerLimitWhereBothSensorsAgree) {
    showVideo(10.0, {video(1, 10.0)});
    watch();
    std::vector<Recorder::Confirmation> told;
    for (int i = 0; i < 10; ++i) {
        fuseRadar(10.0 + 0.1 * i, {radar(1, 10.0 + 0.1 * i)});
        told.insert(told.end(), heard.confirmations.begin(), heard.confirmations.end());
    }
    ASSERT_THAT(told, SizeIs(1));
    EXPECT_EQ(told[0].limit, config.module.systemTrackConfirmationLimitLower);
    EXPECT_GT(told[0].probability, told[0].limit);
    EXPECT_LT(told[0].probability, config.module.systemTrackConfirmationLimitUpper);
}

TEST_F(FusionObserverTest, HearsOfPruningByCoastingAndOfTheDeletionThatFollows) {
    showVideo(10.0, {video(7, 10.0)});
    watch();
    showVideo(10.6, {});
    ASSERT_THAT(heard.prunings, SizeIs(1));
    EXPECT_EQ(heard.prunings[0].sensorTrackId, 7);
    EXPECT_NEAR(heard.prunings[0].coastingTime, 0.6, 1e-9);
    EXPECT_THAT(heard.deletions, ElementsAre(std::pair(1, DeletionReason::NoSensorTracks)));
    EXPECT_EQ(heard.order, "pd");
}

TEST_F(FusionObserverTest, HearsOfTheDeletionOfARadarCopy) {
    config.module.allowRadarToMultiple = true;
    fuseRadar(10.0, {radar(1, 10.0, {far})});
    showVideo(10.0, {video(2, 10.0)});
    watch();
    // The radar track moves to the object that video sees: it is shared with it, and its own system
    // track is a copy.
    fuseRadar(10.1, {radar(1, 10.1)});
    EXPECT_THAT(heard.deletions, ElementsAre(std::pair(1, DeletionReason::RadarCopy)));
}

TEST_F(FusionObserverTest, HearsNothingAfterItWasTakenAway) {
    watch();
    showVideo(10.0, {video(1, 10.0)});
    module().setObserver(nullptr);
    showVideo(10.1, {video(1, 10.1)});
    ASSERT_THAT(heard.frames, SizeIs(1));
    EXPECT_EQ(heard.frames[0].timestamp, 10.0);
}

TEST_F(FusionObserverTest, ChangesNothingByListening) {
    // Two objects that approach and separate, seen by both sensors, with a gap.
    std::vector<Veskar::StateVector> states[2];
    std::vector<std::vector<int>> ids[2];
    for (const bool isWatched : {false, true}) {
        restart();
        if (isWatched) {
            watch();
        }
        for (int i = 0; i < 60; ++i) {
            const double t = 10.0 + 0.1 * i;
            const double u = 0.02 * std::abs(i - 30);
            if (i % 17 < 12) {
                showVideo(t, {video(1, t, {u, 0.2}), video(2, t, {-u, -0.2})});
            } else {
                showVideo(t, {});
            }
            fuseRadar(t, {radar(5, t, {u + 0.05, 0.2}), radar(6, t, {-u, -0.2})});
            ids[isWatched].push_back(systemIds());
            for (const auto& track : module().systemTracks) {
                states[isWatched].push_back(track->state);
            }
        }
    }
    EXPECT_EQ(ids[0], ids[1]);
    ASSERT_EQ(states[0].size(), states[1].size());
    for (std::size_t i = 0; i < states[0].size(); ++i) {
        EXPECT_EQ(states[0][i], states[1][i]);
    }
}

}  // namespace
}  // namespace VeskarTest
