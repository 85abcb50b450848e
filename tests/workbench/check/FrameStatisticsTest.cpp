// SPDX-License-Identifier: Apache-2.0
#include "check/FrameStatistics.h"

#include <gtest/gtest.h>

namespace Workbench {
namespace {

SensorFrame frameAt(double time, double delay, std::size_t tracks) {
    SensorFrame frame;
    frame.time = time;
    frame.received = time + delay;
    frame.tracks.resize(tracks);
    return frame;
}

TEST(FrameStatistics, MeasuresRateDelayAndGaps) {
    FrameStatistics frames;
    std::uint64_t line = 2;
    for (const double time : {1.0, 1.1, 1.2, 1.3, 2.0, 2.1, 4.1, 4.2}) {
        frames.add(frameAt(time, time > 4.0 ? 0.09 : 0.05, time < 2.0 ? 0 : 3), line++);
    }
    EXPECT_EQ(frames.frames(), 8U);
    EXPECT_EQ(frames.emptyFrames(), 4U);
    EXPECT_EQ(frames.tracks(), 12U);
    EXPECT_DOUBLE_EQ(frames.medianInterval(), 0.1);
    EXPECT_NEAR(frames.meanDelay(), (6 * 0.05 + 2 * 0.09) / 8.0, 1e-12);
    EXPECT_NEAR(frames.longestDelay(), 0.09, 1e-12);
    ASSERT_TRUE(frames.longestGap().has_value());
    EXPECT_NEAR(frames.longestGap()->length, 2.0, 1e-12);
    EXPECT_NEAR(frames.longestGap()->after, 2.1, 1e-12);
    EXPECT_EQ(frames.longestGap()->line, 8U);
    EXPECT_EQ(frames.gapsLongerThan(0.3), 2U);
    EXPECT_EQ(frames.gapsLongerThan(1.0), 1U);
    EXPECT_EQ(frames.gapsLongerThan(2.0), 0U);
}

TEST(FrameStatistics, KnowsNothingOfOneFrame) {
    FrameStatistics frames;
    frames.add(frameAt(1.0, 0.0, 0), 2);
    EXPECT_FALSE(frames.longestGap().has_value());
    EXPECT_EQ(frames.gapsLongerThan(0.0), 0U);
}

}  // namespace
}  // namespace Workbench
