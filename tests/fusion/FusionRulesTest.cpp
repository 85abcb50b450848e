// SPDX-License-Identifier: Apache-2.0
// The optional rules: what each one changes, and that it changes nothing while it is off.
#include <veskar/FusionObserver.h>

#include "fusion/FusionFixture.h"

#include <cmath>
#include <map>

namespace VeskarTest {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Veskar::FusionObserver;
using Veskar::Radar;
using Veskar::Source;
using Veskar::Track;
using Veskar::VideoObject;

/// Remembers why things happened in the last frame.
class Reasons : public FusionObserver {
public:
    void onFrame(const Frame& /*frame*/) override { *this = Reasons(); }
    void onContinuation(const Continuation& continuation) override {
        continuations.push_back(continuation);
    }
    void onCandidate(const Candidate& candidate) override { candidates.push_back(candidate); }
    void onMergeCandidate(const MergeCandidate& candidate) override {
        mergeCandidates.push_back(candidate);
    }
    void onPruning(const Pruning& pruning) override { prunings.push_back(pruning); }
    void onConfirmationWithheld(int systemTrackId, double rangeStd, double limit) override {
        withheld.push_back({systemTrackId, rangeStd, limit});
    }

    void onStartWithheld(Source source, int id, double coasting) override {
        starts.push_back({source, id, coasting});
    }

    struct WithheldStart {
        Source source;
        int id;
        double coasting;
    };
    struct Withheld {
        int id;
        double rangeStd;
        double limit;
    };
    std::vector<Continuation> continuations;
    std::vector<Candidate> candidates;
    std::vector<MergeCandidate> mergeCandidates;
    std::vector<Pruning> prunings;
    std::vector<Withheld> withheld;
    std::vector<WithheldStart> starts;
};

std::shared_ptr<Track> coasting(std::shared_ptr<Track> track, double time) {
    track->coastingTime = time;
    return track;
}

class FusionRules : public FusionTest {
protected:
    /// Listens from the next frame on.
    Reasons& listen() {
        module().setObserver(&reasons_);
        return reasons_;
    }

private:
    Reasons reasons_;
};

// --- A radar track keeps its system track

TEST_F(FusionRules, LetRadarKeepTheSystemTrackWhenItsReportIsRefused) {
    config.rules.radarKeepsSystemTrack = true;
    makeFusedTrack();
    const Reasons& reasons = listen();
    fuseRadar(10.1, {radar(1, 10.1, {far})});
    ASSERT_THAT(systemIds(), ElementsAre(1));
    EXPECT_THAT(heldIds(0, Radar), ElementsAre(1));
    EXPECT_THAT(heldIds(0, VideoObject), IsEmpty());
    EXPECT_NEAR(systemTrack(0).state[0], far, 1e-9) << "video's contribution is gone";
    ASSERT_EQ(reasons.prunings.size(), 1U);
    EXPECT_EQ(reasons.prunings[0].source, VideoObject);
    EXPECT_EQ(reasons.prunings[0].reason, FusionObserver::PruningReason::PartnerRefused);
    EXPECT_EQ(reasons.continuations.at(0).refusal, FusionObserver::Refusal::OutsideGate);
}

TEST_F(FusionRules, LetVideoLeaveAsBeforeWhenItsOwnReportIsRefused) {
    config.rules.radarKeepsSystemTrack = true;
    makeFusedTrack();
    const Reasons& reasons = listen();
    showVideo(10.1, {video(1, 10.1, {far})});
    EXPECT_THAT(heldIds(0, Radar), ElementsAre(1));
    EXPECT_THAT(heldIds(0, VideoObject), IsEmpty());
    ASSERT_EQ(reasons.prunings.size(), 1U);
    EXPECT_EQ(reasons.prunings[0].reason, FusionObserver::PruningReason::Refused);
}

// --- Pair gate

/// A video track that is so sure of itself that the fused estimate hardly leaves it, and a radar
/// track whose reports are compared with it.
class PairGate : public FusionRules {
protected:
    PairGate() {
        config.module.splitGating = true;
        config.module.velocityGatingSimilarity = -1.0;
        config.rules.pairGate = 0.7;
    }
    /// Shows a radar report at a multiple of the pair gate.
    void showAt(double gates) {
        makeFusedTrack();
        const double width = 0.7 * 3.0 * std::sqrt(2.0 * usualVariance);
        fuseRadar(10.0, {radar(1, 10.0, {gates * width})});
    }
};

TEST_F(PairGate, KeepsAReportJustInside) {
    const Reasons& reasons = listen();
    showAt(0.999);
    ASSERT_EQ(reasons.continuations.size(), 1U);
    EXPECT_FALSE(reasons.continuations[0].refused);
    EXPECT_TRUE(reasons.prunings.empty());
}

TEST_F(PairGate, SaysWhatItRefuses) {
    makeFusedTrack();
    const Reasons& reasons = listen();
    const double width = 0.7 * 3.0 * std::sqrt(2.0 * usualVariance);
    fuseRadar(10.0, {radar(1, 10.0, {1.001 * width})});
    ASSERT_EQ(reasons.continuations.size(), 1U);
    const FusionObserver::Continuation& told = reasons.continuations[0];
    EXPECT_EQ(told.gate.verdict, FusionObserver::GateVerdict::Passed);
    EXPECT_TRUE(told.refused);
    EXPECT_EQ(told.refusal, FusionObserver::Refusal::PairTooFar);
    ASSERT_TRUE(told.pairDistance);
    EXPECT_NEAR(*told.pairDistance, 0.7 * 3.0 * 1.001, 1e-9);
}

TEST_F(PairGate, IsOffWithoutTheSetting) {
    config.rules.pairGate = 0.0;
    makeFusedTrack();
    const Reasons& reasons = listen();
    const double width = 0.7 * 3.0 * std::sqrt(2.0 * usualVariance);
    fuseRadar(10.0, {radar(1, 10.0, {1.001 * width})});
    ASSERT_EQ(reasons.continuations.size(), 1U);
    EXPECT_FALSE(reasons.continuations[0].refused);
    EXPECT_FALSE(reasons.continuations[0].pairDistance);
}

TEST_F(PairGate, DoesNotActOnASystemTrackOfOneSensor) {
    showVideo(10.0, {video(1, 10.0)});
    showVideo(10.1, {video(1, 10.1, {far})});
    EXPECT_THAT(systemIds(), ElementsAre(1));
    EXPECT_THAT(heldIds(0, VideoObject), ElementsAre(1));
}

// --- Pair memory

class PairMemoryRule : public FusionRules {
protected:
    PairMemoryRule() {
        config.rules.pairMemory = true;
        config.module.splitGating = true;
        config.module.velocityGatingSimilarity = -1.0;
        config.module.positionGatingDistance = 6.0;
    }
    static double standardDeviations(double count) {
        return count * std::sqrt(2.0 * usualVariance);
    }
};

TEST_F(PairMemoryRule, RefusesAReportWhosePairHasDisagreedInACrowd) {
    // Video 1 and radar 1 are 1.6 apart, and video 2, which nobody holds with radar, is as near.
    makeFusedTrack();
    const Reasons& reasons = listen();
    const double apart = standardDeviations(1.6);
    bool isRefused = false;
    for (int frame = 1; frame <= 40 && !isRefused; ++frame) {
        const double time = 10.0 + 0.1 * frame;
        showVideo(time, {video(1, time), video(2, time, {2.0 * apart})});
        fuseRadar(time, {radar(1, time, {apart})});
        isRefused = reasons.continuations.at(0).refused;
        if (isRefused) {
            EXPECT_EQ(reasons.continuations[0].refusal, FusionObserver::Refusal::PairDisagrees);
            EXPECT_GT(frame, 3) << "a single frame proves nothing";
        }
    }
    EXPECT_TRUE(isRefused);
}

/// Rivals that nobody holds do not coast by themselves: they must not count while video is silent.
TEST_F(PairMemoryRule, LearnsNothingWhileVideoIsSilent) {
    makeFusedTrack();
    const double apart = standardDeviations(1.6);
    showVideo(10.0, {video(1, 10.0), coasting(video(2, 10.0, {2.0 * apart}), 0.0)});
    const Reasons& reasons = listen();
    for (int frame = 0; frame < 40; ++frame) {
        const double time = 10.2 + 0.1 * frame;
        fuseRadar(time, {radar(1, time, {apart})});
        for (const FusionObserver::Continuation& continuation : reasons.continuations) {
            ASSERT_NE(continuation.refusal, FusionObserver::Refusal::PairDisagrees);
        }
    }
}

TEST_F(PairMemoryRule, RefusesNothingWithoutRivals) {
    makeFusedTrack();
    const Reasons& reasons = listen();
    const double apart = standardDeviations(1.6);
    for (int frame = 1; frame <= 40; ++frame) {
        const double time = 10.0 + 0.1 * frame;
        showVideo(time, {video(1, time)});
        fuseRadar(time, {radar(1, time, {apart})});
        ASSERT_EQ(reasons.continuations.size(), 1U);
        ASSERT_FALSE(reasons.continuations[0].refused);
    }
}

/// Two system tracks that one sensor each has started, so far apart that association leaves them,
/// and that come together.
class Merging : public FusionRules {
protected:
    Merging() {
        config.module.splitGating = true;
        config.module.velocityGatingSimilarity = -1.0;
    }
    /// Video 1 starts at once, radar 1 at @p radarStart; then both are at the same place.
    void meet(double radarStart) {
        const double time = radarStart + 0.1;
        if (radarStart > 10.0) {
            showVideo(10.0, {video(1, 10.0)});
        }
        fuseRadar(radarStart, {radar(1, radarStart, {2.0 * far})});
        if (radarStart == 10.0) {
            module().cycleFrame(VideoObject, 10.0, {video(1, 10.0)});
        }
        module().cycleFrame(VideoObject, time, {video(1, time)});
        fuseRadar(time, {radar(1, time)});
    }
};

TEST_F(Merging, HappensByTheGateAlone) {
    meet(10.2);
    EXPECT_THAT(systemIds(), ElementsAre(1));
}

TEST_F(Merging, NeedsAPairThatTheMemoryKnows) {
    config.rules.pairMemory = true;
    config.rules.pairMemoryFreshness = -1.0;  // so that it knows none
    meet(10.2);
    EXPECT_THAT(systemIds(), ElementsAre(1, 2));
}

TEST_F(Merging, TakesAPairThatTheMemoryKnows) {
    config.rules.pairMemory = true;
    meet(10.2);
    EXPECT_THAT(systemIds(), ElementsAre(1));
}

TEST_F(Merging, LeavesTracksThatStartedTogetherAlone) {
    const Reasons& reasons = listen();
    meet(10.0);
    EXPECT_THAT(systemIds(), ElementsAre(1, 2));
    ASSERT_EQ(reasons.mergeCandidates.size(), 1U);
    EXPECT_EQ(reasons.mergeCandidates[0].hindrance, FusionObserver::MergeHindrance::SameStart);
    EXPECT_EQ(reasons.mergeCandidates[0].olderId, 1);
}

TEST_F(Merging, OrdersTracksThatStartedTogetherByTheirIds) {
    config.rules.orderedMerging = true;
    meet(10.0);
    EXPECT_THAT(systemIds(), ElementsAre(1));
    EXPECT_THAT(heldIds(0, VideoObject), ElementsAre(1));
    EXPECT_THAT(heldIds(0, Radar), ElementsAre(1));
}

TEST_F(Merging, LetsTheOneWithRadarSurvive) {
    config.rules.orderedMerging = true;
    meet(10.2);
    EXPECT_THAT(systemIds(), ElementsAre(2)) << "video's was the older one";
}

TEST_F(Merging, LetsAConfirmedTrackSurviveOneThatIsNot) {
    config.rules.orderedMerging = true;
    config.module.systemTrackConfirmationLimitUpper = 0.55;
    showVideo(10.0, {video(1, 10.0)});
    showVideo(10.1, {video(1, 10.1, {0.0, 0.0, 100.0})});
    ASSERT_TRUE(systemTrack(0).isConfirmed);
    fuseRadar(10.2, {radar(1, 10.2, {2.0 * far})});
    ASSERT_THAT(systemIds(), ElementsAre(1, 2));
    showVideo(10.3, {video(1, 10.3)});
    fuseRadar(10.3, {radar(1, 10.3)});
    EXPECT_THAT(systemIds(), ElementsAre(1));
}

// --- Coasting reports

class FreshReports : public FusionRules {
protected:
    FreshReports() { config.rules.freshReportsOnly = true; }
};

TEST_F(FreshReports, AloneStartSystemTracks) {
    showVideo(10.0, {coasting(video(1, 10.0), 0.05), coasting(video(2, 10.0, {far}), 0.049)});
    ASSERT_THAT(systemIds(), ElementsAre(1));
    EXPECT_THAT(heldIds(0, VideoObject), ElementsAre(2));
}

TEST_F(FreshReports, TellThatTheyStartNothing) {
    const Reasons& reasons = listen();
    showVideo(10.0, {coasting(video(4, 10.0), 0.3)});
    ASSERT_EQ(reasons.starts.size(), 1U);
    EXPECT_EQ(reasons.starts[0].source, VideoObject);
    EXPECT_EQ(reasons.starts[0].id, 4);
    EXPECT_EQ(reasons.starts[0].coasting, 0.3);
}

TEST_F(FreshReports, AloneAreAssigned) {
    for (const bool isOptimal : {true, false}) {
        config.module.useJVA = isOptimal;
        restart();
        showVideo(10.0, {video(1, 10.0)});
        const Reasons& reasons = listen();
        fuseRadar(10.0, {coasting(radar(1, 10.0), 0.05)});
        EXPECT_THAT(heldIds(0, Radar), IsEmpty());
        EXPECT_THAT(systemIds(), ElementsAre(1));
        ASSERT_EQ(reasons.candidates.size(), 1U);
        EXPECT_FALSE(reasons.candidates[0].allowed);
        EXPECT_EQ(reasons.candidates[0].hindrance, FusionObserver::Hindrance::ReportCoasts);
        fuseRadar(10.0, {coasting(radar(1, 10.0), 0.049)});
        EXPECT_THAT(heldIds(0, Radar), ElementsAre(1));
    }
}

TEST_F(FreshReports, AreNotNeededToGoOn) {
    showVideo(10.0, {video(1, 10.0)});
    const auto report = coasting(video(1, 10.1, {0.1}), 0.1);
    showVideo(10.1, {report});
    EXPECT_EQ(systemTrack(0).getSensorTracks(VideoObject).at(1), report);
}

TEST_F(FusionRules, LetCoastingReportsStartWithoutTheSetting) {
    showVideo(10.0, {coasting(video(1, 10.0), 0.4)});
    EXPECT_THAT(systemIds(), ElementsAre(1));
}

// --- Take-over

class TakeOver : public FusionRules {
protected:
    TakeOver() {
        config.rules.takeOver = true;
        config.rules.freshReportsOnly = true;
    }
    /// Video 1 is lost and coasts, and video 2 is found at its place.
    void find(double coastingTime) {
        showVideo(10.1, {coasting(video(1, 10.1), coastingTime), video(2, 10.1, {0.05})});
    }
};

TEST_F(TakeOver, GivesTheSystemTrackToAnotherTrackOfTheSensor) {
    for (const bool isOptimal : {true, false}) {
        config.module.useJVA = isOptimal;
        restart();
        showVideo(10.0, {video(1, 10.0)});
        const Reasons& reasons = listen();
        find(0.05);
        ASSERT_THAT(systemIds(), ElementsAre(1));
        EXPECT_THAT(heldIds(0, VideoObject), ElementsAre(2));
        EXPECT_NEAR(systemTrack(0).state[0], 0.05, 1e-9) << "the lost one's contribution is gone";
        ASSERT_EQ(reasons.prunings.size(), 1U);
        EXPECT_EQ(reasons.prunings[0].sensorTrackId, 1);
        EXPECT_EQ(reasons.prunings[0].reason, FusionObserver::PruningReason::TakenOver);
    }
}

TEST_F(TakeOver, NeedsATrackThatCoasts) {
    showVideo(10.0, {video(1, 10.0)});
    find(0.049);
    EXPECT_THAT(systemIds(), ElementsAre(1, 2));
    EXPECT_THAT(heldIds(0, VideoObject), ElementsAre(1));
}

TEST_F(TakeOver, LeavesATrackThatWasSeenBesideTheLostOne) {
    for (const bool isOptimal : {true, false}) {
        config.module.useJVA = isOptimal;
        restart();
        showVideo(9.9, {video(1, 9.9), video(2, 9.9, {far})});
        // Nobody holds track 2 any more once it has been gone for long enough.
        for (const double time : {10.0, 10.2, 10.5}) {
            showVideo(time, {video(1, time)});
        }
        const int kept = systemTrack(0).id;
        ASSERT_EQ(module().systemTracks.size(), 1U);
        const Reasons& reasons = listen();
        showVideo(10.6, {coasting(video(1, 10.6), 0.1), video(2, 10.6)});
        EXPECT_EQ(systemTrack(0).id, kept);
        EXPECT_THAT(heldIds(0, VideoObject), ElementsAre(1)) << isOptimal;
        EXPECT_EQ(module().systemTracks.size(), 2U) << "track 2 is another object";
        ASSERT_EQ(reasons.candidates.size(), 1U);
        EXPECT_EQ(reasons.candidates[0].hindrance, FusionObserver::Hindrance::SeenBesideHeld);
        EXPECT_FALSE(reasons.candidates[0].allowed);
    }
}

TEST_F(TakeOver, DoesNotHappenWithoutTheSetting) {
    config.rules.takeOver = false;
    showVideo(10.0, {video(1, 10.0)});
    find(0.3);
    EXPECT_THAT(systemIds(), ElementsAre(1, 2));
}

TEST_F(TakeOver, KeepsWhatTheOtherSensorSupports) {
    makeFusedTrack();
    find(0.1);
    EXPECT_THAT(systemIds(), ElementsAre(1));
    EXPECT_THAT(heldIds(0, VideoObject), ElementsAre(2));
    EXPECT_THAT(heldIds(0, Radar), ElementsAre(1));
}

/// A report that may not replace the held one is still of another class than radar's track.
TEST_F(TakeOver, LeavesTheClassRuleAsItIs) {
    config.module.removeClassMismatches = true;
    showVideo(9.9, {video(1, 9.9), video(2, 9.9, {far})});
    for (const double time : {10.0, 10.2, 10.5}) {
        showVideo(time, {video(1, time)});
        fuseRadar(time, {radar(1, time)});
    }
    ASSERT_EQ(module().systemTracks.size(), 1U);
    // Track 3 would be the right one, and track 2 is of another class inside the gate.
    const auto other = video(2, 10.6, {0.05, 0.0, 2.0, "car"});
    showVideo(10.6, {coasting(video(1, 10.6), 0.1), other, video(3, 10.6, {0.02})});
    EXPECT_EQ(module().systemTracks.size(), 1U) << "a mismatch starts no system track";
}

// --- Confirmation by video alone

class VideoAlone : public FusionRules {
protected:
    VideoAlone() {
        config.rules.videoRangeStd = 3.0;
        config.module.systemTrackConfirmationLimitUpper = 0.4;  // a first report is enough
    }

    void show(double time, double rangeStd) {
        const auto report = video(1, time);
        report->covariance(4, 4) = rangeStd * rangeStd;
        module().cycleFrame(VideoObject, time, {report});
    }
};

TEST_F(VideoAlone, WaitsWhileItsRangeIsUncertain) {
    fuseRadar(10.0, {});
    show(10.0, 3.0);
    const Reasons& reasons = listen();
    show(10.1, 3.0);
    EXPECT_FALSE(systemTrack(0).isConfirmed);
    ASSERT_EQ(reasons.withheld.size(), 1U);
    EXPECT_EQ(reasons.withheld[0].id, 1);
    EXPECT_NEAR(reasons.withheld[0].rangeStd, 3.0, 1e-6);
    EXPECT_EQ(reasons.withheld[0].limit, 3.0);
    show(10.2, 2.9);
    EXPECT_TRUE(systemTrack(0).isConfirmed);
}

TEST_F(VideoAlone, IsConfirmedWhenRadarIsSilent) {
    fuseRadar(10.0, {});
    show(10.5, 5.0);
    show(10.99, 5.0);
    EXPECT_FALSE(systemTrack(0).isConfirmed);
    show(11.0, 5.0);
    EXPECT_TRUE(systemTrack(0).isConfirmed);
}

TEST_F(VideoAlone, IsConfirmedWithoutAnyRadarFrame) {
    show(10.0, 5.0);
    show(10.1, 5.0);
    EXPECT_TRUE(systemTrack(0).isConfirmed);
}

TEST_F(VideoAlone, DoesNotWaitWithRadarBesideIt) {
    fuseRadar(10.0, {});
    show(10.0, 5.0);
    fuseRadar(10.1, {radar(1, 10.1)});
    EXPECT_TRUE(systemTrack(0).isConfirmed);
}

TEST_F(VideoAlone, StaysConfirmed) {
    show(10.0, 5.0);
    show(10.1, 5.0);
    fuseRadar(10.2, {});
    show(10.3, 5.0);
    EXPECT_TRUE(systemTrack(0).isConfirmed);
}

TEST_F(VideoAlone, DoesNotWaitWithoutTheSetting) {
    config.rules.videoRangeStd = 0.0;
    fuseRadar(10.0, {});
    show(10.0, 50.0);
    show(10.1, 50.0);
    EXPECT_TRUE(systemTrack(0).isConfirmed);
}

// --- Memory

TEST_F(FusionRules, ForgetTheSensorsWhenTheModuleIsCleared) {
    config.rules.videoRangeStd = 3.0;
    config.module.systemTrackConfirmationLimitUpper = 0.4;
    fuseRadar(10.0, {});
    module().clear();
    const auto report = video(1, 10.1);
    report->covariance(4, 4) = 25.0;
    module().cycleFrame(VideoObject, 10.1, {report});
    EXPECT_TRUE(systemTrack(0).isConfirmed) << "no radar frame is known any more";
}

}  // namespace
}  // namespace VeskarTest
