// SPDX-License-Identifier: Apache-2.0
#include "simulate/Random.h"

#include <cmath>

#include <gtest/gtest.h>

using Workbench::Random;

TEST(Random, GivesTheSameNumbersForever) {
    // Recordings must not change with the compiler or standard library. The first value was
    // computed by an independent implementation in another language: FNV-1a of "test" over the
    // seed, mixed by splitmix64, seeds mt19937-64.
    Random random(7, "test");
    const double first = random.uniform();
    Random again(7, "test");
    EXPECT_EQ(again.uniform(), first);
    EXPECT_NE(Random(8, "test").uniform(), first);
    EXPECT_NE(Random(7, "other").uniform(), first);
    EXPECT_DOUBLE_EQ(first, 0.15129108875688924);
}

TEST(Random, UniformFillsItsInterval) {
    Random random(1, "uniform");
    double sum = 0.0;
    for (int i = 0; i < 10000; ++i) {
        const double value = random.uniform(2.0, 4.0);
        ASSERT_GE(value, 2.0);
        ASSERT_LT(value, 4.0);
        sum += value;
    }
    EXPECT_NEAR(sum / 10000.0, 3.0, 0.03);
}

TEST(Random, NormalHasZeroMeanAndUnitVariance) {
    Random random(2, "normal");
    double sum = 0.0;
    double squares = 0.0;
    int beyond = 0;
    for (int i = 0; i < 20000; ++i) {
        const double value = random.normal();
        sum += value;
        squares += value * value;
        beyond += std::abs(value) > 1.959964 ? 1 : 0;
    }
    EXPECT_NEAR(sum / 20000.0, 0.0, 0.03);
    EXPECT_NEAR(squares / 20000.0, 1.0, 0.04);
    EXPECT_NEAR(beyond / 20000.0, 0.05, 0.006);
}

TEST(Random, PoissonHasItsMeanAndVariance) {
    Random random(3, "poisson");
    double sum = 0.0;
    double squares = 0.0;
    for (int i = 0; i < 20000; ++i) {
        const double value = random.poisson(2.5);
        sum += value;
        squares += value * value;
    }
    const double mean = sum / 20000.0;
    EXPECT_NEAR(mean, 2.5, 0.05);
    EXPECT_NEAR(squares / 20000.0 - mean * mean, 2.5, 0.15);
    EXPECT_EQ(random.poisson(0.0), 0);
}

TEST(GaussMarkov, WandersWithItsCorrelationTime) {
    Random random(4, "markov");
    Workbench::GaussMarkov process;
    double squares = 0.0;
    double products = 0.0;
    double before = process.step(random, 0.5, 2.0, 1.0);
    for (int i = 0; i < 40000; ++i) {
        const double value = process.step(random, 0.5, 2.0, 1.0);
        squares += value * value;
        products += value * before;
        before = value;
    }
    EXPECT_NEAR(squares / 40000.0, 4.0, 0.25);
    EXPECT_NEAR(products / squares, std::exp(-0.5), 0.03);
}
