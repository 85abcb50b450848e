// SPDX-License-Identifier: Apache-2.0
// The radial speed of an object whose sensor does not state it.
#include "live/onvif/FadingRate.h"

#include <cmath>
#include <random>

#include <gtest/gtest.h>

namespace Veskar::Live {
namespace {

using std::chrono::milliseconds;

TEST(FadingRate, FindsAConstantSpeed) {
    FadingRate rate;
    EXPECT_EQ(rate.update(milliseconds(0), 30.0), 0.0);
    double found = 0.0;
    for (int i = 1; i <= 50; ++i) {
        found = rate.update(milliseconds(100 * i), 30.0 - 0.15 * i);
    }
    EXPECT_NEAR(found, -1.5, 1e-3);
}

TEST(FadingRate, IsQuieterThanTheRange) {
    std::mt19937 random(3);
    std::normal_distribution<double> noise(0.0, 0.3);
    FadingRate rate;
    double squares = 0.0;
    constexpr int count = 4000;
    for (int i = 0; i < count; ++i) {
        const double found = rate.update(milliseconds(100 * i), 20.0 + noise(random));
        squares += found * found;
    }
    // Of the stationary filter: 2 sigma^2 / T^2 (1 - f)^3 / (1 + f)^3 with f = exp(-0.2).
    EXPECT_NEAR(std::sqrt(squares / count), 0.134, 0.02);
}

TEST(FadingRate, BeginsAgainAfterAGap) {
    FadingRate rate;
    for (int i = 0; i <= 20; ++i) {
        rate.update(milliseconds(100 * i), 30.0 + i);
    }
    EXPECT_EQ(rate.update(milliseconds(4100), 80.0), 0.0);
    EXPECT_NE(rate.update(milliseconds(4200), 90.0), 0.0);
    EXPECT_EQ(rate.update(milliseconds(4100), 70.0), 0.0);
}

}  // namespace
}  // namespace Veskar::Live
