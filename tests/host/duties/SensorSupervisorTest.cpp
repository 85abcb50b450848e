// SPDX-License-Identifier: Apache-2.0
#include "host/duties/SensorSupervisor.h"

#include <vector>

#include <gtest/gtest.h>

using Veskar::Host::SensorFrame;
using Veskar::Host::Internal::AddedFrame;
using Veskar::Host::Internal::SensorSupervisor;

namespace {

SensorFrame frame(Veskar::Source source, double time, double received) {
    return {source, time, received, {}};
}

std::vector<AddedFrame> allBefore(SensorSupervisor& duties, double now) {
    std::vector<AddedFrame> added;
    while (const auto next = duties.nextBefore(now)) {
        added.push_back(*next);
    }
    return added;
}

}  // namespace

TEST(SensorSupervisor, NothingIsDueBeforeTheFirstFrame) {
    SensorSupervisor duties;
    EXPECT_FALSE(duties.nextBefore(1e9));
}

TEST(SensorSupervisor, NothingIsAddedWhileBothSensorsReport) {
    SensorSupervisor duties;
    for (int i = 0; i < 20; ++i) {
        EXPECT_FALSE(duties.nextBefore(0.1 * i + 0.05));
        duties.saw(frame(Veskar::VideoObject, 0.1 * i, 0.1 * i + 0.05));
        EXPECT_FALSE(duties.nextBefore(0.1 * i + 0.07));
        duties.saw(frame(Veskar::Radar, 0.1 * i, 0.1 * i + 0.07));
    }
}

TEST(SensorSupervisor, SilentVideoIsReplacedByEmptyFramesFiveTimesASecond) {
    SensorSupervisor duties;
    duties.saw(frame(Veskar::VideoObject, 0.9, 1.0));
    duties.saw(frame(Veskar::VideoObject, 1.0, 1.1));
    const auto added = allBefore(duties, 2.0);
    ASSERT_EQ(added.size(), 4u);
    for (std::size_t i = 0; i < added.size(); ++i) {
        EXPECT_EQ(added[i].source, Veskar::VideoObject);
        EXPECT_EQ(added[i].basis, nullptr);
        EXPECT_NEAR(added[i].received, 1.3 + 0.2 * static_cast<double>(i), 1e-12);
        // The added frames keep video's delay.
        EXPECT_NEAR(added[i].time, added[i].received - 0.1, 1e-12);
    }
}

TEST(SensorSupervisor, VideoThatNeverSpokeIsSilentSinceTheRadarBegan) {
    SensorSupervisor duties;
    duties.saw(frame(Veskar::Radar, 3.0, 3.05));
    const auto added = allBefore(duties, 3.5);
    ASSERT_EQ(added.size(), 2u);
    EXPECT_EQ(added[0].source, Veskar::VideoObject);
    EXPECT_NEAR(added[0].time, 3.2, 1e-12);
}

TEST(SensorSupervisor, ARadarFrameNeedNotWaitForSilentVideo) {
    SensorSupervisor duties;
    EXPECT_FALSE(duties.videoFor(0.95, 1.0)) << "of video nothing is known yet";
    duties.saw(frame(Veskar::VideoObject, 1.0, 1.1));
    EXPECT_FALSE(duties.videoFor(1.25, 1.29)) << "video may still speak";
    const auto empty = duties.videoFor(1.28, 1.32);
    ASSERT_TRUE(empty);
    EXPECT_EQ(empty->source, Veskar::VideoObject);
    EXPECT_EQ(empty->basis, nullptr);
    EXPECT_EQ(empty->time, 1.28);
    EXPECT_EQ(empty->received, 1.32);
    // It replaces the one that was due next.
    EXPECT_FALSE(duties.nextBefore(1.51));
    EXPECT_TRUE(duties.nextBefore(1.53));
    duties.saw(frame(Veskar::VideoObject, 1.6, 1.7));
    EXPECT_FALSE(duties.videoFor(1.75, 1.79)) << "video has come back";
}

TEST(SensorSupervisor, VideoThatIsPredictedIsNotSilent) {
    SensorSupervisor duties;
    for (const double time : {1.0, 2.0, 3.0}) {
        duties.saw(frame(Veskar::VideoObject, time, time));
    }
    EXPECT_FALSE(duties.videoFor(4.4, 4.4));
    EXPECT_TRUE(duties.videoFor(4.6, 4.6));
}

TEST(SensorSupervisor, AFiveHertzCameraThatIsALittleLateIsNotSilent) {
    SensorSupervisor duties;
    duties.saw(frame(Veskar::VideoObject, 1.0, 1.0));
    duties.saw(frame(Veskar::VideoObject, 1.2, 1.2));
    EXPECT_FALSE(duties.nextBefore(1.42));
    EXPECT_TRUE(duties.nextBefore(1.51));
}

TEST(SensorSupervisor, ATenHertzRadarIsNeverPredicted) {
    SensorSupervisor duties;
    duties.saw(frame(Veskar::VideoObject, 1.0, 1.0));
    duties.saw(frame(Veskar::Radar, 1.0, 1.0));
    duties.saw(frame(Veskar::Radar, 1.1, 1.1));
    for (const AddedFrame& added : allBefore(duties, 5.0)) {
        EXPECT_EQ(added.source, Veskar::VideoObject);
    }
}

TEST(SensorSupervisor, TellsTheIntervalOfASlowSensor) {
    SensorSupervisor duties;
    EXPECT_EQ(duties.slowInterval(Veskar::Radar), 0.0);
    for (const double time : {1.0, 2.5, 4.0}) {
        duties.saw(frame(Veskar::VideoObject, time, time));
        duties.saw(frame(Veskar::Radar, time, time));
    }
    EXPECT_EQ(duties.slowInterval(Veskar::Radar), 1.5);
    const auto added = duties.nextBefore(4.3);
    ASSERT_TRUE(added);
    EXPECT_EQ(added->slowInterval, 1.5);
    duties.saw(frame(Veskar::Radar, 4.1, 4.1));
    EXPECT_EQ(duties.slowInterval(Veskar::Radar), 0.0);
}

TEST(SensorSupervisor, AGapDoesNotMakeASensorSlow) {
    SensorSupervisor duties;
    for (const double time : {1.0, 1.1, 1.2, 4.2}) {
        duties.saw(frame(Veskar::VideoObject, time, time));
        duties.saw(frame(Veskar::Radar, time, time));
    }
    for (const AddedFrame& added : allBefore(duties, 9.0)) {
        EXPECT_EQ(added.basis, nullptr);
    }
}

TEST(SensorSupervisor, ASlowRadarIsPredictedInBetweenWhileItIsBelieved) {
    SensorSupervisor duties;
    duties.saw(frame(Veskar::Radar, 1.0, 1.1));
    allBefore(duties, 2.1);
    SensorFrame last = frame(Veskar::Radar, 2.0, 2.1);
    Veskar::Host::RadarReport report;
    report.id = 77;
    last.tracks = {report};
    duties.saw(last);
    std::vector<AddedFrame> radar;
    for (int frames = 0; frames < 158; ++frames) {
        const double now = 2.1 + 0.05 * frames;
        // Video sends frames all the time.
        duties.saw(frame(Veskar::VideoObject, now, now));
        for (const AddedFrame& added : allBefore(duties, now + 0.05)) {
            ASSERT_EQ(added.source, Veskar::Radar);
            ASSERT_NE(added.basis, nullptr);
            EXPECT_EQ(baseOf(added.basis->tracks.at(0)).id, 77);
            EXPECT_NEAR(added.time, 2.0 + added.ahead, 1e-12);
            radar.push_back(added);
        }
    }
    // Every 0.2 s, for one and a half intervals.
    ASSERT_EQ(radar.size(), 7u);
    EXPECT_NEAR(radar.front().ahead, 0.2, 1e-12);
    EXPECT_NEAR(radar.back().ahead, 1.4, 1e-12);
}

TEST(SensorSupervisor, NothingIsDueAtTheVeryMomentThatItIsDue) {
    Veskar::Host::HostParameters parameters;
    parameters.videoSilence = 0.25;
    SensorSupervisor duties(parameters);
    duties.saw(frame(Veskar::VideoObject, 1.0, 1.0));
    EXPECT_FALSE(duties.nextBefore(1.25)) << "a frame may arrive just then";
    EXPECT_TRUE(duties.videoFor(1.25, 1.25)) << "what arrives just then need not wait";
}

TEST(SensorSupervisor, ASlowSensorIsPredictedUpToTheEndOfItsBelief) {
    Veskar::Host::HostParameters parameters;
    parameters.predictionInterval = 0.25;
    SensorSupervisor duties(parameters);
    for (const double time : {1.0, 2.0}) {
        allBefore(duties, time);
        duties.saw(frame(Veskar::Radar, time, time));
    }
    double last = 0.0;
    for (const AddedFrame& added : allBefore(duties, 9.0)) {
        if (added.source == Veskar::Radar) {
            last = added.ahead;
        }
    }
    EXPECT_EQ(last, 1.5);
}

TEST(SensorSupervisor, EmptyFramesGoOnToTheVeryEndOfTheLongestGap) {
    Veskar::Host::HostParameters parameters;
    parameters.videoSilence = 0.25;
    SensorSupervisor duties(parameters);
    duties.saw(frame(Veskar::VideoObject, 1.0, 1.0));
    EXPECT_EQ(allBefore(duties, 100.0).back().received, 1.0 + parameters.longestGap);
}

TEST(SensorSupervisor, ASensorIsSlowWhenThreeIntervalsAreLong) {
    SensorSupervisor duties;
    for (const double time : {1.0, 1.1, 3.1, 5.1}) {
        duties.saw(frame(Veskar::Radar, time, time));
        EXPECT_EQ(duties.slowInterval(Veskar::Radar), 0.0) << time;
    }
    duties.saw(frame(Veskar::Radar, 7.1, 7.1));
    EXPECT_NEAR(duties.slowInterval(Veskar::Radar), 2.0, 1e-12);
}

TEST(SensorSupervisor, EmptyFramesEndSomeSecondsAfterTheLastReport) {
    SensorSupervisor duties;
    duties.saw(frame(Veskar::VideoObject, 1.0, 1.0));
    const auto added = allBefore(duties, 1e18);
    ASSERT_FALSE(added.empty());
    EXPECT_NEAR(added.back().received, 11.0, 0.2001);
    // When radar returns, video counts as silent.
    duties.saw(frame(Veskar::Radar, 1e6, 1e6));
    EXPECT_TRUE(duties.videoFor(1e6, 1e6));
    EXPECT_FALSE(duties.nextBefore(1e6 + 0.19));
    EXPECT_EQ(allBefore(duties, 1e6 + 0.9).size(), 4u);
}

TEST(SensorSupervisor, EmptyFramesGoOnWhileASlowRadarIsPredicted) {
    SensorSupervisor duties;
    duties.saw(frame(Veskar::Radar, 0.0, 0.0));
    allBefore(duties, 20.0);
    duties.saw(frame(Veskar::Radar, 20.0, 20.0));
    int empty = 0;
    int predicted = 0;
    double last = 0.0;
    for (const AddedFrame& added : allBefore(duties, 1e9)) {
        (added.basis == nullptr ? empty : predicted) += 1;
        last = added.received;
    }
    // Predictions for one and a half intervals, and empty video frames for ten seconds more.
    EXPECT_NEAR(predicted, 150, 1);
    EXPECT_NEAR(empty, 200, 2);
    EXPECT_NEAR(last, 60.0, 0.5);
}

TEST(SensorSupervisor, ASensorWithFramesMinutesApartIsBelievedForOne) {
    SensorSupervisor duties;
    for (const double time : {0.0, 1e8, 2e8}) {
        allBefore(duties, time);
        duties.saw(frame(Veskar::Radar, time, time));
    }
    const auto added = allBefore(duties, 3e8);
    EXPECT_LT(added.size(), 700u);
    EXPECT_NEAR(added.back().received - 2e8, 70.0, 0.3);
}

TEST(SensorSupervisor, AClockWithoutRoomForAStepAddsNextToNothing) {
    SensorSupervisor duties;
    duties.saw(frame(Veskar::VideoObject, 1e18, 1e18));
    duties.saw(frame(Veskar::Radar, 1e18, 1e18));
    EXPECT_LE(allBefore(duties, 2e18).size(), 1u);
    duties.saw(frame(Veskar::VideoObject, 2e18, 2e18));
    duties.saw(frame(Veskar::Radar, 2e18, 2e18));
    EXPECT_LE(allBefore(duties, 3e18).size(), 2u);
}
