// SPDX-License-Identifier: Apache-2.0
#include "live/clock/OffsetEstimator.h"

#include <random>

#include <gtest/gtest.h>

using Veskar::Live::OffsetEstimator;
using Verdict = OffsetEstimator::Verdict;

TEST(OffsetEstimator, FindsTheDifferenceBelowTheDelays) {
    OffsetEstimator estimator;
    std::mt19937 random(1);
    std::exponential_distribution<double> delay(1.0 / 0.02);
    for (int i = 0; i < 600; ++i) {
        EXPECT_EQ(estimator.add(5.0 + 0.01 + delay(random), 0.05 * i), Verdict::Fits);
    }
    EXPECT_NEAR(estimator.leastLag(), 5.01, 0.002) << "the 5 % quantile is at 0.001 s";
    EXPECT_NEAR(estimator.jitter(), 0.059, 0.01) << "0.02 s ln(0.95 / 0.05)";
    EXPECT_TRUE(estimator.isSettled());
}

TEST(OffsetEstimator, IsNotMisledByAFewLagsThatAreTooShort) {
    OffsetEstimator estimator;
    for (int i = 0; i < 600; ++i) {
        estimator.add(i % 50 == 7 ? 4.7 : 5.0, 0.05 * i);
    }
    EXPECT_EQ(estimator.leastLag(), 5.0) << "a minimum would be 4.7";
}

TEST(OffsetEstimator, FollowsAClockThatDrifts) {
    OffsetEstimator estimator;
    constexpr double drift = 100e-6;
    for (int i = 0; i < 20 * 3600; ++i) {
        const double time = 0.05 * i;
        ASSERT_EQ(estimator.add(drift * time, time), Verdict::Fits);
        ASSERT_NEAR(estimator.leastLag(), drift * time, drift * OffsetEstimator::window);
    }
}

TEST(OffsetEstimator, BeginsAnewOnlyWithLagsThatAgreeForAWhile) {
    OffsetEstimator estimator;
    double time = 0.0;
    for (int i = 0; i < 100; ++i) {
        estimator.add(1.0, time += 0.05);
    }
    EXPECT_EQ(estimator.add(3601.0, time += 0.05), Verdict::Far);
    EXPECT_EQ(estimator.add(1.0, time += 0.05), Verdict::Fits);
    for (int i = 0; i < 20; ++i) {
        // They disagree with each other.
        EXPECT_EQ(estimator.add(3601.0 + i, time += 0.05), Verdict::Far);
    }
    estimator.add(1.0, time += 0.05);
    const double begin = time + 0.05;
    Verdict verdict = Verdict::Far;
    for (int i = 0; i < 20 && verdict == Verdict::Far; ++i) {
        verdict = estimator.add(3601.0, time += 0.05);
    }
    EXPECT_EQ(verdict, Verdict::NewBase);
    EXPECT_NEAR(time - begin, 0.4, 0.051);
    EXPECT_EQ(estimator.leastLag(), 3601.0);
    EXPECT_EQ(estimator.add(1.0, time += 0.05), Verdict::Far);
}

TEST(OffsetEstimator, NeedsThreeLagsOfASlowSensor) {
    OffsetEstimator estimator;
    estimator.add(1.0, 0.0);
    estimator.add(1.0, 10.0);
    EXPECT_EQ(estimator.add(9.0, 20.0), Verdict::Far);
    EXPECT_EQ(estimator.add(9.0, 30.0), Verdict::Far);
    EXPECT_EQ(estimator.add(9.0, 40.0), Verdict::NewBase);
}

TEST(OffsetEstimator, KeepsTheLastLagHoweverOldTheOthersAre) {
    OffsetEstimator estimator;
    estimator.add(1.0, 0.0);
    estimator.add(1.2, 1000.0);
    EXPECT_EQ(estimator.leastLag(), 1.2);
    EXPECT_FALSE(estimator.isSettled());
}
