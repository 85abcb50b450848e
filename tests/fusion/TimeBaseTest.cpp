// SPDX-License-Identifier: Apache-2.0
#include "fusion/TimeBase.h"
#include "support/Constants.h"

#include <cmath>

#include <gtest/gtest.h>

namespace Veskar {
namespace {

using Verdict = TimeBase::Verdict;

TEST(TimeBase, AcceptsTheFirstFrameWhateverItsTime) {
    for (const double time : {0.0, -5.0, 1.7e9}) {
        TimeBase timeBase;
        EXPECT_EQ(timeBase.judge(time), Verdict::Accept) << time;
    }
}

TEST(TimeBase, AcceptsFramesUpToAnHourFromTheLastAcceptedOne) {
    for (const double hour : {3600.0, -3600.0}) {
        TimeBase timeBase;
        timeBase.judge(0.0);
        EXPECT_EQ(timeBase.judge(hour), Verdict::Accept);
        EXPECT_EQ(timeBase.judge(2.0 * hour), Verdict::Accept) << "the last one, not the first";
    }
}

TEST(TimeBase, HoldsBackAFrameFartherAway) {
    for (const double time : {std::nextafter(3600.0, VeskarTest::infinite), 1.7e9}) {
        for (const double sign : {1.0, -1.0}) {
            TimeBase timeBase;
            timeBase.judge(0.0);
            EXPECT_EQ(timeBase.judge(sign * time), Verdict::HoldBack) << sign * time;
        }
    }
}

TEST(TimeBase, RestartsWhenTheNextFrameIsWithinAMinuteOfTheOneHeldBack) {
    for (const double distance : {0.0, 60.0, -60.0}) {
        TimeBase timeBase;
        timeBase.judge(0.0);
        timeBase.judge(65536.0);
        EXPECT_EQ(timeBase.judge(65536.0 + distance), Verdict::Restart) << distance;
        EXPECT_EQ(timeBase.judge(65536.0), Verdict::Accept) << "the new base is the base now";
        EXPECT_EQ(timeBase.judge(0.0), Verdict::HoldBack) << "and the old one is far";
    }
}

TEST(TimeBase, HoldsBackTheNextFrameInsteadWhenThatIsFarFromBoth) {
    TimeBase timeBase;
    timeBase.judge(0.0);
    timeBase.judge(65536.0);
    const double farther = std::nextafter(65596.0, VeskarTest::infinite);
    EXPECT_EQ(timeBase.judge(farther), Verdict::HoldBack);
    EXPECT_EQ(timeBase.judge(65536.0), Verdict::HoldBack) << "the first one is forgotten";
    EXPECT_EQ(timeBase.judge(65536.0), Verdict::Restart);
}

TEST(TimeBase, GoesOnWhenTheNextFrameIsNearTheLastAcceptedOne) {
    TimeBase timeBase;
    timeBase.judge(0.0);
    timeBase.judge(65536.0);
    EXPECT_EQ(timeBase.judge(3600.0), Verdict::Accept);
    EXPECT_EQ(timeBase.judge(65536.0), Verdict::HoldBack) << "a frame between parts the two";
}

TEST(TimeBase, SaysWhichStampsAreFarFromTheLastAcceptedOne) {
    TimeBase timeBase;
    EXPECT_FALSE(timeBase.isFar(1e9)) << "there is none yet";
    timeBase.judge(0.0);
    EXPECT_FALSE(timeBase.isFar(3600.0));
    EXPECT_TRUE(timeBase.isFar(-3600.5));
    timeBase.judge(65536.0);
    EXPECT_TRUE(timeBase.isFar(65536.0)) << "held back is not accepted";
    timeBase.judge(65536.0);
    EXPECT_FALSE(timeBase.isFar(65536.0));
}

TEST(TimeBase, PrefersToRestartWhenTheNextFrameIsNearBoth) {
    TimeBase timeBase;
    timeBase.judge(0.0);
    timeBase.judge(3601.0);
    EXPECT_EQ(timeBase.judge(3599.0), Verdict::Restart);
}

}  // namespace
}  // namespace Veskar
