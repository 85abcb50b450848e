// SPDX-License-Identifier: Apache-2.0
// Which reports become histories of tracks.
#include <veskar-host/Projection.h>

#include "calibrate/Scene.h"

#include <cmath>

#include <gtest/gtest.h>

using namespace Workbench;

namespace {

SensorFrame videoFrame(double time, const VideoReport& report) {
    return {Veskar::VideoObject, time, time, {report}};
}

VideoReport box(double left, double bottom) {
    VideoReport report;
    report.id = 7;
    report.box = {left, bottom, left + 0.1, bottom + 0.2};
    report.labels.objectClass = {"human", 0.8};
    return report;
}

SensorFrame radarFrame(double time, double range, double azimuth) {
    RadarReport report;
    report.id = 3;
    report.range = range;
    report.azimuth = azimuth;
    return {Veskar::Radar, time, time, {report}};
}

TEST(Sightings, BeginsANewHistoryAfterAGap) {
    Sightings sightings;
    for (const double time : {0.0, 0.1, 0.2, 2.0, 2.1}) {
        sightings.add(videoFrame(time, box(0.0, 0.0)));
    }
    ASSERT_EQ(sightings.video().size(), 2U);
    EXPECT_EQ(sightings.video()[0].sightings.size(), 3U);
}

TEST(Sightings, ForgetWhatIsOld) {
    Sightings sightings;
    sightings.add(radarFrame(0.0, 20.0, 0.0));  // ends before
    VideoReport other = box(0.3, 0.0);
    other.id = 8;
    sightings.add(videoFrame(0.0, other));
    for (const double time : {1.0, 1.1, 1.2}) {
        sightings.add(videoFrame(time, box(0.0, 0.0)));
    }
    sightings.forgetBefore(1.1);
    EXPECT_TRUE(sightings.radar().empty());
    ASSERT_EQ(sightings.video().size(), 1U);
    EXPECT_EQ(sightings.video()[0].sightings.size(), 2U);
    EXPECT_EQ(sightings.video()[0].sightings[0].time, 1.1) << "of the same time stays";
    EXPECT_EQ(sightings.video()[0].className(), "human");
    // Tracks go on where they are now, and new ones begin.
    sightings.add(videoFrame(1.3, box(0.0, 0.0)));
    sightings.add(radarFrame(1.3, 20.0, 0.0));
    EXPECT_EQ(sightings.video()[0].sightings.size(), 3U);
    ASSERT_EQ(sightings.radar().size(), 1U);
    EXPECT_EQ(sightings.radar()[0].sightings.size(), 1U);
}

TEST(Sightings, LeaveOutCutBoxesAndTracksThatNobodySees) {
    Sightings sightings;
    sightings.add(videoFrame(0.0, box(-0.99, 0.0)));
    sightings.add(videoFrame(0.1, box(0.0, -0.99)));
    VideoReport coasting = box(0.0, 0.0);
    coasting.coasting = 0.1;
    sightings.add(videoFrame(0.2, coasting));
    VideoReport tentative = box(0.0, 0.0);
    tentative.confirmed = false;
    sightings.add(videoFrame(0.3, tentative));
    EXPECT_TRUE(sightings.video().empty());
}

TEST(Sightings, InterpolateWithinAHistoryOnly) {
    Sightings sightings;
    sightings.add(videoFrame(0.0, box(0.0, 0.0)));
    sightings.add(videoFrame(0.4, box(0.2, -0.4)));
    const VideoHistory& history = sightings.video().at(0);
    const auto middle = history.at(0.1);
    ASSERT_TRUE(middle);
    EXPECT_NEAR((*middle)[0], 0.1, 1e-12);
    EXPECT_NEAR((*middle)[1], -0.1, 1e-12);
    EXPECT_FALSE(history.at(0.5));
    EXPECT_FALSE(history.at(-0.1));
}

TEST(Sightings, TakeTheMostProbableClassOfAll) {
    Sightings sightings;
    VideoReport mistaken = box(0.0, 0.0);
    mistaken.labels.objectClass = {"animal", 0.9};
    sightings.add(videoFrame(0.0, mistaken));
    sightings.add(videoFrame(0.1, box(0.0, 0.0)));
    sightings.add(videoFrame(0.2, box(0.0, 0.0)));
    EXPECT_EQ(sightings.video().at(0).className(), "human");
}

TEST(Moments, KnowWhereAnObjectMovesAndWhetherSteadily) {
    Sightings sightings;
    // Away at 2 m/s, then back at once.
    for (int i = 0; i < 120; ++i) {
        const double time = 0.1 * i;
        sightings.add(radarFrame(time, 20.0 + 2.0 * (time < 6.0 ? time : 12.0 - time), 0.0));
    }
    int steady = 0;
    for (const Moment& moment : momentsOf(sightings)) {
        const RadarLook& look = moment.looks.at(0);
        if (look.isSteady) {
            ++steady;
            // Long enough after the start, and after the turn.
            EXPECT_GE(moment.time, 2.9);
            EXPECT_FALSE(moment.time > 6.3 && moment.time < 8.5) << moment.time;
            EXPECT_NEAR(std::cos(look.heading), moment.time < 6.4 ? 1.0 : -1.0, 1e-6)
                << moment.time;
        }
    }
    EXPECT_GT(steady, 10);
}

}  // namespace
