// SPDX-License-Identifier: Apache-2.0
#include "live/service/FrameIntake.h"
#include "live/support/Received.h"

#include <chrono>
#include <cmath>
#include <limits>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace Veskar::Live {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::SizeIs;
using Steady = std::chrono::steady_clock::time_point;

Steady at(std::int64_t nanoseconds) {
    return Steady(std::chrono::nanoseconds(nanoseconds));
}

Host::SensorFrame radarFrame(double time, std::size_t reports = 1) {
    Host::SensorFrame frame{Radar, time, 0.0, {}};
    for (std::size_t i = 0; i < reports; ++i) {
        Host::RadarReport report;
        report.id = static_cast<std::int32_t>(i);
        report.range = 10.0 / 3.0;
        report.radialSpeed = 0.0;
        frame.tracks.emplace_back(report);
    }
    return frame;
}

class FrameIntakeTest : public testing::Test {
protected:
    VeskarTest::ToldFaults told_;
    FrameIntake intake_{told_.faults};
};

TEST_F(FrameIntakeTest, RoundsToWhatARecordingHolds) {
    const auto frame = intake_.take(radarFrame(1.0 / 3.0), at(1'234'567'891));
    ASSERT_TRUE(frame);
    EXPECT_EQ(frame->time, 0.333333);
    EXPECT_EQ(frame->received, 1.234567);
    const std::string line = toJsonLine(*frame);
    const Host::SensorFrame read = Host::parseSensorFrame(line);
    EXPECT_EQ(std::get<Host::RadarReport>(frame->tracks[0]).range,
              std::get<Host::RadarReport>(read.tracks[0]).range);
    EXPECT_NE(std::get<Host::RadarReport>(frame->tracks[0]).range, 10.0 / 3.0);
    EXPECT_EQ(toJsonLine(read), line);
}

TEST_F(FrameIntakeTest, ItsClockNeverGoesBack) {
    EXPECT_EQ(intake_.clock(at(2'000'000'999)), 2.0);
    EXPECT_EQ(intake_.clock(at(1'000'000'000)), 2.0);
    EXPECT_EQ(intake_.take(radarFrame(0.5), at(1'500'000'000))->received, 2.0);
    EXPECT_EQ(intake_.clock(at(2'000'001'000)), 2.000001);
}

TEST_F(FrameIntakeTest, RefusesWhatNoRecordingMayHold) {
    EXPECT_TRUE(intake_.take(radarFrame(1.0), at(1'500'000'000)));
    EXPECT_FALSE(intake_.take(radarFrame(1.0), at(1'600'000'000)));   // not later
    EXPECT_FALSE(intake_.take(radarFrame(1.71), at(1'700'000'000)));  // before it was measured
    Host::SensorFrame bad = radarFrame(1.75);
    std::get<Host::RadarReport>(bad.tracks[0]).range = std::numeric_limits<double>::quiet_NaN();
    EXPECT_FALSE(intake_.take(bad, at(1'800'000'000)));
    EXPECT_FALSE(intake_.take({VideoVura, 1.8, 0.0, {}}, at(1'900'000'000)));
    EXPECT_EQ(intake_.counts().taken, 1U);
    EXPECT_EQ(intake_.counts().refused, 4U);
    EXPECT_THAT(told_.told(), ElementsAre(HasSubstr("left out a frame of radar: time"),
                                          HasSubstr("left out a frame of other")));
    EXPECT_TRUE(intake_.take(radarFrame(1.9), at(2'000'000'000)));
}

TEST_F(FrameIntakeTest, KeepsTheMostProbableReports) {
    Host::SensorFrame frame = radarFrame(1.0, 260);
    const auto report = [&](std::size_t i) -> Host::RadarReport& {
        return std::get<Host::RadarReport>(frame.tracks[i]);
    };
    report(0).confirmed = false;
    report(1).coasting = 0.5;
    report(2).confirmed = false;
    for (std::size_t i = 3; i < 260; ++i) {
        report(i).objectClass = {"car", 0.9};
    }
    report(7).objectClass = {"car", 0.1};
    const auto taken = intake_.take(frame, at(1'500'000'000));
    ASSERT_TRUE(taken);
    ASSERT_THAT(taken->tracks, SizeIs(256));
    for (const Host::Report& kept : taken->tracks) {
        const std::int32_t id = Host::baseOf(kept).id;
        EXPECT_TRUE(id > 2 && id != 7) << id;
    }
    EXPECT_EQ(intake_.counts().reports, 256U);
    EXPECT_EQ(intake_.counts().reportsLeftOut, 4U);
    EXPECT_THAT(told_.told(), ElementsAre(HasSubstr("4 more than 256")));
}

}  // namespace
}  // namespace Veskar::Live
