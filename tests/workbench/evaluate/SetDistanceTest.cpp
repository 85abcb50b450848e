// SPDX-License-Identifier: Apache-2.0
#include "evaluate/Instants.h"
#include "evaluate/metrics/SetDistance.h"

#include <cmath>

#include <gtest/gtest.h>

namespace Workbench {
namespace {

constexpr SetDistanceParameters parameters{5.0, 2.0};

Gospa gospaOf(const Instant& instant, const SetDistanceParameters& chosen = parameters) {
    const Pairs matches = matchWithinCutoff(instant, nearPairs(instant, chosen.cutoff), chosen);
    return gospa(instant, matches, chosen);
}

double ospaOf(const Instant& instant) {
    return ospa(gospaOf(instant), parameters);
}

TEST(Gospa, SplitsIntoLocalisationMissedAndFalse) {
    // Object 1 has a track at 3 m, object 2 is missed, and the track at 100 m is false: 3^2 + 25/2
    // + 25/2 = 34.
    const Instant instant = instantOf(0, {{1, 0}, {2, 50}}, {{7, 3}, {8, 100}});
    const Gospa result = gospaOf(instant);
    EXPECT_DOUBLE_EQ(result.localisationCost, 9.0);
    EXPECT_EQ(result.missed, 1);
    EXPECT_EQ(result.falseTracks, 1);
    EXPECT_DOUBLE_EQ(result.distance, std::sqrt(34.0));
}

TEST(Gospa, CountsAPairAtTheCutoffAsMissedAndFalse) {
    // Pairing at the cutoff and not pairing both cost 25; the counts show which is chosen.
    const Gospa at = gospaOf(instantOf(0, {{1, 0}}, {{7, 5}}));
    EXPECT_EQ(at.missed + at.falseTracks, 2);
    EXPECT_DOUBLE_EQ(at.distance, 5.0);
    const Gospa inside = gospaOf(instantOf(0, {{1, 0}}, {{7, 4.5}}));
    EXPECT_EQ(inside.missed + inside.falseTracks, 0);
    EXPECT_DOUBLE_EQ(inside.distance, 4.5);
}

TEST(Gospa, ChoosesTheAssignmentWithTheLeastTotal) {
    // Nearest neighbours first would pair 2 with 7 (1 m) and leave 1 and 8 unpaired: 1 + 25 = 26.
    // The best is 1 with 7 (2 m) and 2 with 8 (3 m): 4 + 9 = 13.
    const Gospa result = gospaOf(instantOf(0, {{1, 0}, {2, 3}}, {{7, 2}, {8, 6}}));
    EXPECT_DOUBLE_EQ(result.localisationCost, 13.0);
    EXPECT_EQ(result.missed + result.falseTracks, 0);
}

TEST(Gospa, FollowsOrderAndCutoff) {
    // p = 1, c = 10: 3 + 10/2 = 8.
    const Gospa result = gospaOf(instantOf(0, {{1, 0}, {2, 50}}, {{7, 3}}), {10.0, 1.0});
    EXPECT_DOUBLE_EQ(result.distance, 8.0);
}

TEST(Gospa, IsZeroForNothing) {
    EXPECT_EQ(gospaOf(instantOf(0, {}, {})).distance, 0.0);
}

TEST(GospaMean, AveragesTheDistanceAndSplitsThePower) {
    GospaMean mean(parameters);
    mean.add(gospaOf(instantOf(0, {{1, 0}}, {{7, 3}})));  // 3
    mean.add(gospaOf(instantOf(1, {{1, 0}}, {})));        // sqrt(12.5)
    mean.add(gospaOf(instantOf(2, {}, {{7, 3}})));        // sqrt(12.5)
    mean.add(gospaOf(instantOf(3, {}, {})));              // 0
    const GospaMean::Result result = mean.result();
    EXPECT_DOUBLE_EQ(result.mean, (3.0 + 2.0 * std::sqrt(12.5)) / 4.0);
    EXPECT_DOUBLE_EQ(result.localisation, std::sqrt(9.0 / 4.0));
    EXPECT_DOUBLE_EQ(result.missed, std::sqrt(12.5 / 4.0));
    EXPECT_DOUBLE_EQ(result.falseTracks, std::sqrt(12.5 / 4.0));
    EXPECT_DOUBLE_EQ(result.rootMeanPower, std::sqrt(34.0 / 4.0));
    EXPECT_DOUBLE_EQ(result.missedPerInstant, 0.25);
    EXPECT_DOUBLE_EQ(result.falsePerInstant, 0.25);
}

TEST(GospaMean, WithoutAMomentIsZero) {
    EXPECT_EQ(GospaMean(parameters).result().mean, 0.0);
}

TEST(Ospa, DividesByTheLargerNumber) {
    // Two objects, one track at 3 m: sqrt((9 + 25) / 2).
    EXPECT_DOUBLE_EQ(ospaOf(instantOf(0, {{1, 0}, {2, 50}}, {{7, 3}})), std::sqrt(17.0));
}

TEST(Ospa, CutsThePairsOff) {
    // Equal numbers, one pair 100 m apart, one exact: sqrt((25 + 0) / 2).
    EXPECT_DOUBLE_EQ(ospaOf(instantOf(0, {{1, 0}, {2, 50}}, {{7, 150}, {8, 0}})), std::sqrt(12.5));
}

TEST(Ospa, IsTheCutoffWhenOneSideIsEmptyAndZeroWhenBothAre) {
    EXPECT_DOUBLE_EQ(ospaOf(instantOf(0, {{1, 0}}, {})), 5.0);
    EXPECT_DOUBLE_EQ(ospaOf(instantOf(0, {}, {{7, 0}, {8, 9}})), 5.0);
    EXPECT_EQ(ospaOf(instantOf(0, {}, {})), 0.0);
}

TEST(OspaMean, AveragesOverTime) {
    OspaMean mean(parameters);
    mean.add(gospaOf(instantOf(0, {{1, 0}}, {{7, 1}})));  // 1
    mean.add(gospaOf(instantOf(1, {{1, 0}}, {})));        // 5
    EXPECT_DOUBLE_EQ(mean.result(), 3.0);
}

}  // namespace
}  // namespace Workbench
