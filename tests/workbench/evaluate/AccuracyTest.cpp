// SPDX-License-Identifier: Apache-2.0
#include "evaluate/Instants.h"
#include "evaluate/metrics/Accuracy.h"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

namespace Workbench {
namespace {

const Eigen::Vector2d origin = Eigen::Vector2d::Zero();

TEST(Accuracy, PartsTheErrorIntoRadialAndCrossRange) {
    Accuracy metric(origin);
    // Straight ahead at (10, 0): 3 m too far and 4 m to the left. At (0, 10), where left is -x:
    // 1 m too near and 2 m to the right.
    metric.add(instantOf(0, {{1, 10, 0}, {2, 0, 10}}, {{7, 13, 4}, {8, 2, 9}}), {{0, 0}, {1, 1}});
    const Accuracy::Result result = metric.result();
    EXPECT_EQ(result.matches, 2);
    EXPECT_DOUBLE_EQ(result.positionRmse, std::sqrt((25.0 + 5.0) / 2.0));
    EXPECT_DOUBLE_EQ(result.radialRmse, std::sqrt((9.0 + 1.0) / 2.0));
    EXPECT_DOUBLE_EQ(result.crossRangeRmse, std::sqrt((16.0 + 4.0) / 2.0));
    EXPECT_DOUBLE_EQ(result.radialBias, (3.0 - 1.0) / 2.0);
    EXPECT_DOUBLE_EQ(result.crossRangeBias, (4.0 - 2.0) / 2.0);
}

TEST(Accuracy, MeasuresRangeFromTheObserver) {
    Accuracy metric(Eigen::Vector2d(10, -5));
    // Seen from (10, -5), the object at (10, 0) is in direction y, where left is -x.
    metric.add(instantOf(0, {{1, 10, 0}}, {{7, 9, 2}}), {{0, 0}});
    EXPECT_DOUBLE_EQ(metric.result().radialBias, 2.0);
    EXPECT_DOUBLE_EQ(metric.result().crossRangeBias, 1.0);
}

TEST(Accuracy, TakesTheMedianOfThePositionErrors) {
    Accuracy metric(origin);
    const Instant instant = instantOf(0, {{1, 10}, {2, 20}, {3, 30}}, {{7, 11}, {8, 22}, {9, 130}});
    const Pairs pairs{{0, 0}, {1, 1}, {2, 2}};
    metric.add(instant, pairs);
    metric.beginAgain();
    metric.addAgain(instant, pairs);
    EXPECT_DOUBLE_EQ(metric.result().positionMedian, 2.0);
}

TEST(Accuracy, ComparesVelocitiesWhereTheTruthKnowsThem) {
    Instant instant = instantOf(0, {{1, 10}, {2, 20}}, {{7, 10}, {8, 20}});
    instant.truths[0].velocity = Eigen::Vector2d(1, 1);
    instant.tracks[0].velocity = Eigen::Vector2d(4, 5);
    instant.tracks[1].velocity = Eigen::Vector2d(100, 100);
    Accuracy metric(origin);
    metric.add(instant, {{0, 0}, {1, 1}});
    EXPECT_EQ(metric.result().velocityMatches, 1);
    EXPECT_DOUBLE_EQ(metric.result().velocityRmse, 5.0);
}

TEST(Accuracy, CountsMatchesOfOneClass) {
    Instant instant = instantOf(0, {{1, 10}, {2, 20}}, {{7, 10}, {8, 20}});
    instant.truths[0].className = "human";
    instant.truths[1].className = "human";
    instant.tracks[0].className = "human";
    instant.tracks[1].className = "car";
    Accuracy metric(origin);
    metric.add(instant, {{0, 0}, {1, 1}});
    EXPECT_DOUBLE_EQ(metric.result().classAgreement, 0.5);
}

TEST(Accuracy, WithoutMatchesThereIsNoError) {
    const Accuracy::Result result = Accuracy(origin).result();
    for (const double value :
         {result.positionRmse, result.positionMedian, result.radialRmse, result.crossRangeRmse,
          result.radialBias, result.crossRangeBias, result.velocityRmse, result.classAgreement}) {
        EXPECT_TRUE(std::isnan(value));
    }
}

TEST(Consistency, NormalisesTheErrorByTheCovariance) {
    Instant instant = instantOf(0, {{1, 0, 0}, {2, 50, 0}}, {{7, 1, 2}, {8, 53, 0}});
    instant.tracks[0].covariance << 2, 1,  //
        1, 3;
    // P^-1 = [3 -1; -1 2] / 5, so that (1, 2) gives (3 - 4 + 8) / 5 = 7/5; the other is 3^2.
    Consistency metric;
    metric.add(instant, {{0, 0}, {1, 1}});
    EXPECT_DOUBLE_EQ(metric.result().meanNees, (1.4 + 9.0) / 2.0);
    // The bound is 5.991.
    EXPECT_DOUBLE_EQ(metric.result().shareWithin95, 0.5);
}

TEST(Consistency, PartsAtTheChiSquareBound) {
    Consistency metric;
    metric.add(
        instantOf(0, {{1, 0}, {2, 50}}, {{7, std::sqrt(5.9914)}, {8, 50 + std::sqrt(5.9916)}}),
        {{0, 0}, {1, 1}});
    EXPECT_DOUBLE_EQ(metric.result().shareWithin95, 0.5);
}

TEST(Consistency, LeavesOutCovariancesThatAreNone) {
    Instant instant = instantOf(0, {{1, 0}, {2, 9}}, {{7, 1}, {8, 9}});
    instant.tracks[0].covariance << 1, 2,  //
        2, 1;
    instant.tracks[1].covariance(1, 1) = std::numeric_limits<double>::quiet_NaN();
    Consistency metric;
    metric.add(instant, {{0, 0}, {1, 1}});
    EXPECT_EQ(metric.result().matches, 0);
    EXPECT_TRUE(std::isnan(metric.result().meanNees));
    EXPECT_TRUE(std::isnan(metric.result().shareWithin95));
}

}  // namespace
}  // namespace Workbench
