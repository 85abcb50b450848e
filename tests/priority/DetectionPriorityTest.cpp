// SPDX-License-Identifier: Apache-2.0
#include <veskar/DetectionPriority.h>

#include "support/PrivateBus.h"
#include "support/SocketCounter.h"
#include "support/SyslogCapture.h"
#include "support/TrackFactory.h"

#include <cmath>
#include <limits>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace VeskarTest;
using testing::ElementsAre;
using testing::IsEmpty;
using Veskar::Config;
using Veskar::DetectionPriority;
using Veskar::Source;
using Veskar::SystemTrack;

namespace {

Config makeConfig() {
    Config config;
    Config::PriorityConfig& limits = config.detectionPriority;
    limits.vuraHeightFractionLimit = 0.12;
    limits.vodHeightFractionLimit = 0.08;
    limits.longlivedLimit = 20.0;
    limits.travelledDistanceLimit = 0.5;
    limits.radarFarLimitHuman = 50.0;
    limits.radarFarLimitVehicle = 90.0;
    limits.nVideoFramesMissedLimitLow = 3;
    limits.nVideoFramesMissedLimitHigh = 6;
    limits.autoAnnotationEnabled = true;
    return config;
}

/// A system track of these sources: confirmed, young, at its start position, large enough for video
/// and near enough for radar.
std::shared_ptr<SystemTrack> makeTrackOf(bool video, bool radar) {
    Report report;
    report.source = Source::VideoObject;
    report.id = 7;
    report.className = "human";
    auto track = makeSystemTrack(makeTrack(report));
    if (!video) {
        track->sensorTracks[Source::VideoObject].clear();
    }
    if (radar) {
        track->sensorTracks[Source::Radar][41] = makeTrack(Source::Radar, 41);
    }
    track->boundingBox = Eigen::Vector4d(-0.1, 0.2, -0.3, 0.4);
    track->isConfirmed = true;
    return track;
}

Veskar::Track& videoOf(SystemTrack& track) {
    return *track.sensorTracks[Source::VideoObject].begin()->second;
}

/// Sets the image position at a distance from the start position.
void travel(SystemTrack& track, double distance) {
    track.startPosition = Eigen::Vector2d::Zero();
    track.state(0) = 0.6 * distance;
    track.state(2) = 0.8 * distance;
}

class Priority : public testing::Test {
protected:
    Priority() {
        // Without a bus it is day and every SNR is good, so that the box's height alone decides
        // about the video conditions.
        leaveSystemBus();
        priority = std::make_unique<DetectionPriority>(makeConfig());
    }

    SyslogCapture log;
    std::unique_ptr<DetectionPriority> priority;
};

}  // namespace

TEST_F(Priority, OfATrackWithoutSensorsIsNone) {
    const auto track = makeTrackOf(false, false);
    EXPECT_THAT(priority->evaluateTrack(*track), ElementsAre("0"));
    track->isConfirmed = false;
    EXPECT_THAT(priority->evaluateTrack(*track), ElementsAre("0"));
}

TEST_F(Priority, OfAFusedTrackWaitsForItsConfirmation) {
    const auto track = makeTrackOf(true, true);
    track->isConfirmed = false;
    EXPECT_THAT(priority->evaluateTrack(*track),
                ElementsAre("0", "maximizeDetections", "minimizeFalseAlarms"));
    EXPECT_EQ(track->annotationLabel, "human") << "annotated before it is confirmed";
    EXPECT_THAT(track->annotatedRadarIds, ElementsAre(41));
    track->isConfirmed = true;
    EXPECT_THAT(priority->evaluateTrack(*track),
                ElementsAre("1", "automatic", "maximizeDetections", "minimizeFalseAlarms"));
}

TEST_F(Priority, RepeatsALatchedReasonWithoutLookingAgain) {
    const auto track = makeTrackOf(false, true);
    track->systemStartTime = track->time - 21.0;
    EXPECT_THAT(priority->evaluateTrack(*track),
                ElementsAre("16", "automatic", "maximizeDetections"));
    track->systemStartTime = track->time;
    track->isConfirmed = false;
    travel(*track, 0.9);
    const int before = track->framesWithoutVideo;
    EXPECT_THAT(priority->evaluateTrack(*track),
                ElementsAre("16", "automatic", "maximizeDetections"));
    EXPECT_EQ(track->framesWithoutVideo, before);
    track->sensorTracks[Source::Radar].clear();
    EXPECT_THAT(priority->evaluateTrack(*track), ElementsAre("16", "automatic"));
    track->sensorTracks[Source::Radar][42] = makeTrack(Source::Radar, 42);
    track->sensorTracks[Source::VideoObject][7] = makeTrack(Source::VideoObject, 7);
    EXPECT_THAT(priority->evaluateTrack(*track),
                ElementsAre("16", "automatic", "maximizeDetections", "minimizeFalseAlarms"));
    EXPECT_THAT(track->annotatedRadarIds, ElementsAre(41, 42)) << "annotation goes on";
}

TEST_F(Priority, ReportsTheReservedLatchButNeverSetsIt) {
    const auto track = makeTrackOf(true, false);
    track->reasonLatches[3] = true;
    EXPECT_THAT(priority->evaluateTrack(*track),
                ElementsAre("8", "automatic", "maximizeDetections"));
}

TEST_F(Priority, OfASmallRadarTrackIsItsDistanceFromVideo) {
    const auto track = makeTrackOf(false, true);
    track->boundingBox(3) = 2.0 * 0.1;
    EXPECT_THAT(priority->evaluateTrack(*track),
                ElementsAre("2", "automatic", "maximizeDetections"));
    EXPECT_THAT(track->annotatedRadarIds, IsEmpty()) << "this reason alone annotates nothing";
}

TEST_F(Priority, AddsUpTheReasonsOfOneEvaluation) {
    const auto radar = makeTrackOf(false, true);
    radar->boundingBox(3) = 2.0 * 0.1;
    radar->systemStartTime = radar->time - 21.0;
    travel(*radar, 0.6);
    EXPECT_THAT(priority->evaluateTrack(*radar),
                ElementsAre("50", "automatic", "maximizeDetections"));
    const auto video = makeTrackOf(true, false);
    videoOf(*video).state(4) = 51.0;
    video->systemStartTime = video->time - 21.0;
    travel(*video, 0.6);
    EXPECT_THAT(priority->evaluateTrack(*video),
                ElementsAre("52", "automatic", "maximizeDetections"));
    EXPECT_THAT(video->annotatedRadarIds, IsEmpty());
}

TEST_F(Priority, LosesItsReasonsWhenVideoMissesARadarTrackTooOften) {
    // The limits: more than 6 misses for its age, more than 3 for its travelled distance.
    const auto old = makeTrackOf(false, true);
    old->systemStartTime = old->time - 21.0;
    old->framesWithoutVideo = 6;
    EXPECT_THAT(priority->evaluateTrack(*old), ElementsAre("0", "maximizeDetections"));
    EXPECT_EQ(old->framesWithoutVideo, 7) << "this evaluation counts before it is judged";
    EXPECT_THAT(old->annotatedRadarIds, ElementsAre(41)) << "annotated although blocked";
    EXPECT_EQ(old->annotationLabel, "unknown");
    const auto younger = makeTrackOf(false, true);
    younger->systemStartTime = younger->time - 21.0;
    younger->framesWithoutVideo = 5;
    EXPECT_THAT(priority->evaluateTrack(*younger),
                ElementsAre("16", "automatic", "maximizeDetections"));

    const auto far = makeTrackOf(false, true);
    travel(*far, 0.6);
    far->framesWithoutVideo = 3;
    EXPECT_THAT(priority->evaluateTrack(*far), ElementsAre("0", "maximizeDetections"));
    const auto nearer = makeTrackOf(false, true);
    travel(*nearer, 0.6);
    nearer->framesWithoutVideo = 2;
    EXPECT_THAT(priority->evaluateTrack(*nearer),
                ElementsAre("32", "automatic", "maximizeDetections"));
}

TEST_F(Priority, CountsMissesInGoodVideoConditionsOnly) {
    const auto tooSmall = makeTrackOf(false, true);
    tooSmall->boundingBox(3) = 2.0 * 0.07;
    tooSmall->reasonLatches = {};
    priority->evaluateTrack(*tooSmall);
    EXPECT_EQ(tooSmall->framesWithoutVideo, 0);
    const auto good = makeTrackOf(false, true);
    for (int i = 1; i <= 10; ++i) {
        priority->evaluateTrack(*good);
        EXPECT_EQ(good->framesWithoutVideo, i);
    }
    const auto seen = makeTrackOf(true, false);
    priority->evaluateTrack(*seen);
    EXPECT_EQ(seen->framesWithoutVideo, 0);
    const auto unconfirmed = makeTrackOf(false, true);
    unconfirmed->isConfirmed = false;
    priority->evaluateTrack(*unconfirmed);
    EXPECT_EQ(unconfirmed->framesWithoutVideo, 0);
}

TEST_F(Priority, TakesItsLimitsStrictly) {
    const auto track = makeTrackOf(false, true);
    track->systemStartTime = track->time - 20.0;
    travel(*track, 0.5);
    EXPECT_THAT(priority->evaluateTrack(*track), ElementsAre("0", "maximizeDetections"));
    EXPECT_THAT(track->annotatedRadarIds, IsEmpty());
}

TEST_F(Priority, OutsideVideoRangeIsABoxOfLessThanTwiceTheLargerLimit) {
    const auto track = makeTrackOf(false, true);
    track->boundingBox(3) = 2.0 * 0.12;
    EXPECT_FALSE(priority->outsideVideoDetectionRange(*track));
    track->boundingBox(3) = std::nextafter(2.0 * 0.12, 0.0);
    EXPECT_TRUE(priority->outsideVideoDetectionRange(*track));
    Config config = makeConfig();
    std::swap(config.detectionPriority.vuraHeightFractionLimit,
              config.detectionPriority.vodHeightFractionLimit);
    EXPECT_TRUE(DetectionPriority(config).outsideVideoDetectionRange(*track));
}

TEST_F(Priority, OutsideRadarRangeDependsOnTheVideoClass) {
    const auto track = makeTrackOf(true, false);
    Veskar::Track& video = videoOf(*track);
    const auto isOutside = [&](const std::string& className, double range) {
        video.className = className;
        video.state(4) = range;
        return priority->outsideRadarDetectionRange(*track);
    };
    EXPECT_FALSE(isOutside("human", 50.0));
    EXPECT_TRUE(isOutside("human", std::nextafter(50.0, 51.0)));
    for (const char* vehicle :
         {"car", "truck", "bus", "vehicle_other", "motorcycle_bicycle", "bike"}) {
        EXPECT_FALSE(isOutside(vehicle, 90.0)) << vehicle;
        EXPECT_TRUE(isOutside(vehicle, std::nextafter(90.0, 91.0))) << vehicle;
    }
    for (const char* other : {"vehicle", "animal", "unknown", "human_head", "human_face", "Human",
                              "license_plate", ""}) {
        EXPECT_FALSE(isOutside(other, std::numeric_limits<double>::max())) << other;
        EXPECT_TRUE(isOutside(other, std::numeric_limits<double>::infinity())) << other;
    }
}

TEST_F(Priority, OutsideRadarRangeAsksTheFirstVideoTrackItself) {
    const auto track = makeTrackOf(true, false);
    Report report;
    report.id = 3;
    report.className = "car";
    const auto first = makeTrack(report);
    first->state(4) = 91.0;
    track->sensorTracks[Source::VideoObject][3] = first;
    track->className = "human";
    EXPECT_TRUE(priority->outsideRadarDetectionRange(*track));
    first->state(4) = 60.0;
    EXPECT_FALSE(priority->outsideRadarDetectionRange(*track));
}

TEST_F(Priority, OutsideRadarRangeIsNothingThatRadarSees) {
    const auto track = makeTrackOf(true, true);
    videoOf(*track).state(4) = 1000.0;
    EXPECT_FALSE(priority->outsideRadarDetectionRange(*track));
}

TEST_F(Priority, BlocksStrictlyAboveTheLimit) {
    const auto track = makeTrackOf(false, true);
    track->framesWithoutVideo = 4;
    EXPECT_FALSE(priority->blockedByNoVideoDetection(*track, 4));
    EXPECT_TRUE(priority->blockedByNoVideoDetection(*track, 3));
}

TEST_F(Priority, AnnotatesEachRadarTrackOnce) {
    const auto track = makeTrackOf(true, true);
    track->isConfirmed = false;
    priority->evaluateTrack(*track);
    videoOf(*track).className = "car";
    priority->evaluateTrack(*track);
    EXPECT_THAT(track->annotatedRadarIds, ElementsAre(41));
    EXPECT_EQ(track->annotationLabel, "human") << "nothing was sent, nothing is remembered";
    // A radar track with a smaller id becomes the first one.
    track->sensorTracks[Source::Radar][12] = makeTrack(Source::Radar, 12);
    priority->evaluateTrack(*track);
    EXPECT_THAT(track->annotatedRadarIds, ElementsAre(41, 12));
    EXPECT_EQ(track->annotationLabel, "car");
    track->sensorTracks[Source::Radar].erase(12);
    priority->evaluateTrack(*track);
    EXPECT_THAT(track->annotatedRadarIds, ElementsAre(41, 12));
}

TEST_F(Priority, AnnotatesWithTheClassOfTheFirstVideoTrackItself) {
    const auto track = makeTrackOf(true, true);
    track->className = "bus";
    track->classVoted = true;
    Report report;
    report.id = 3;
    report.className = "car";
    track->sensorTracks[Source::VideoObject][3] = makeTrack(report);
    priority->evaluateTrack(*track);
    EXPECT_EQ(track->annotationLabel, "car");
}

TEST_F(Priority, AnnotatesNothingWhenItIsSwitchedOff) {
    Config config = makeConfig();
    config.detectionPriority.autoAnnotationEnabled = false;
    DetectionPriority quiet(config);
    const auto fused = makeTrackOf(true, true);
    EXPECT_THAT(quiet.evaluateTrack(*fused),
                ElementsAre("1", "automatic", "maximizeDetections", "minimizeFalseAlarms"));
    EXPECT_THAT(fused->annotatedRadarIds, IsEmpty());
    EXPECT_EQ(fused->annotationLabel, "");
}

TEST_F(Priority, AnnotatesNothingWithoutARadarTrack) {
    const auto track = makeTrackOf(true, false);
    priority->sendAnnotation(*track, "human");
    EXPECT_THAT(track->annotatedRadarIds, IsEmpty());
}

TEST_F(Priority, OpensNoSocketOutsideTheHostApplication) {
    const auto track = makeTrackOf(true, true);
    const int before = openedSockets();
    priority->evaluateTrack(*track);
    EXPECT_THAT(track->annotatedRadarIds, ElementsAre(41));
    EXPECT_EQ(openedSockets(), before);
}

TEST_F(Priority, KeepsACopyOfTheConfiguration) {
    auto config = std::make_unique<Config>(makeConfig());
    DetectionPriority own(*config);
    config->detectionPriority.longlivedLimit = 1e9;
    config.reset();
    const auto track = makeTrackOf(true, false);
    track->systemStartTime = track->time - 21.0;
    EXPECT_THAT(own.evaluateTrack(*track), ElementsAre("16", "automatic", "maximizeDetections"));
}

TEST_F(Priority, HasACameraAndBlocksForSymmetryOnly) {
    const auto track = makeTrackOf(false, true);
    priority->setupCamera(nullptr);
    priority->updateSNRBlock();
    EXPECT_THAT(priority->evaluateTrack(*track), ElementsAre("0", "maximizeDetections"));
}

namespace {

/// One combination of all inputs of the evaluation.
struct Situation {
    bool video;
    bool radar;
    bool confirmed;
    bool small;  // outside video range
    bool far;    // outside radar range
    bool old;
    bool travelled;
    bool annotate;
    int missedBefore;
    unsigned latches;  // one bit each

    std::string text() const {
        return testing::PrintToString(std::vector<int>{video, radar, confirmed, small, far, old,
                                                       travelled, annotate, missedBefore,
                                                       static_cast<int>(latches)});
    }
};

/// The expected results of the evaluation.
struct Outcome {
    std::set<std::string> tags;
    unsigned latches = 0;
    int missed = 0;
    std::string label;
};

/// The rules in order, written out.
Outcome judge(const Situation& s) {
    Outcome outcome;
    outcome.latches = s.latches;
    outcome.missed = s.missedBefore;
    const auto annotate = [&](const std::string& label) {
        if (s.annotate && outcome.label.empty()) {
            outcome.label = label;
        }
    };
    if (s.video && s.radar) {
        outcome.tags.insert("minimizeFalseAlarms");
        annotate("human");
    }
    if (s.video || s.radar) {
        outcome.tags.insert("maximizeDetections");
    }
    if (s.latches != 0) {
        outcome.tags.insert("automatic");
        outcome.tags.insert(std::to_string(s.latches));
        return outcome;
    }
    if (s.confirmed && s.video && s.radar) {
        outcome.latches += 1;
    } else if (s.confirmed && s.radar) {
        // In these tests small boxes have bad video conditions and large ones good ones.
        outcome.missed += s.small ? 0 : 1;
        const bool blockedHigh = outcome.missed > 6;
        const bool blockedLow = outcome.missed > 3;
        outcome.latches += s.small && !blockedHigh ? 2 : 0;
        outcome.latches += s.old && !blockedHigh ? 16 : 0;
        outcome.latches += s.travelled && !blockedLow ? 32 : 0;
        if (s.old || s.travelled) {
            annotate("unknown");
        }
    } else if (s.confirmed && s.video) {
        outcome.latches += s.far ? 4 : 0;
        outcome.latches += s.old ? 16 : 0;
        outcome.latches += s.travelled ? 32 : 0;
    }
    if (outcome.latches != 0) {
        outcome.tags.insert("automatic");
    }
    outcome.tags.insert(std::to_string(outcome.latches));
    return outcome;
}

void expectOutcome(DetectionPriority& priority, const Situation& s) {
    const auto track = makeTrackOf(s.video, s.radar);
    track->isConfirmed = s.confirmed;
    track->boundingBox(3) = 2.0 * (s.small ? 0.07 : 0.2);
    if (s.video) {
        videoOf(*track).state(4) = s.far ? 51.0 : 49.0;
    }
    track->systemStartTime = track->time - (s.old ? 20.5 : 19.5);
    travel(*track, s.travelled ? 0.51 : 0.49);
    track->framesWithoutVideo = s.missedBefore;
    for (std::size_t i = 0; i < 6; ++i) {
        track->reasonLatches[i] = (s.latches >> i & 1U) != 0;
    }
    const Outcome expected = judge(s);
    EXPECT_EQ(priority.evaluateTrack(*track), expected.tags) << s.text();
    unsigned latches = 0;
    for (std::size_t i = 0; i < 6; ++i) {
        latches |= track->reasonLatches[i] ? 1U << i : 0U;
    }
    EXPECT_EQ(latches, expected.latches) << s.text();
    EXPECT_EQ(track->framesWithoutVideo, expected.missed) << s.text();
    EXPECT_EQ(track->annotationLabel, expected.label) << s.text();
    EXPECT_EQ(track->annotatedRadarIds.size(), expected.label.empty() ? 0U : 1U) << s.text();
}

}  // namespace

TEST_F(Priority, FollowsTheRulesInEverySituation) {
    Config silent = makeConfig();
    silent.detectionPriority.autoAnnotationEnabled = false;
    DetectionPriority withoutAnnotation(silent);
    for (unsigned bits = 0; bits < 256; ++bits) {
        const auto bit = [&](unsigned i) { return (bits >> i & 1U) != 0; };
        for (const int missed : {0, 2, 3, 4, 5, 6, 7, 100}) {
            for (unsigned latches = 0; latches < 64; ++latches) {
                const Situation situation{bit(0), bit(1), bit(2), bit(3), bit(4),
                                          bit(5), bit(6), bit(7), missed, latches};
                expectOutcome(bit(7) ? *priority : withoutAnnotation, situation);
                if (HasFailure()) {
                    return;
                }
            }
        }
    }
}
