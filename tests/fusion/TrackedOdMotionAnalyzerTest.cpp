// SPDX-License-Identifier: Apache-2.0
#include <veskar/TrackedOdMotionAnalyzer.h>

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

namespace Veskar {
namespace {

constexpr double threshold = 0.25;

Config analyzerConfig(int minLength, int maxLength) {
    Config config;
    config.module.trackedOdMotionAnalyzerMinHistoryLength = minLength;
    config.module.trackedOdMotionAnalyzerMaxHistoryLength = maxLength;
    config.module.trackedOdMotionAnalyzerDistanceThreshold = threshold;
    return config;
}

TEST(TrackedOdMotionAnalyzer, NeverAnswersYesToTheFirstPosition) {
    Config config = analyzerConfig(0, 20);
    config.module.trackedOdMotionAnalyzerDistanceThreshold = -1.0;
    TrackedOdMotionAnalyzer analyzer(config);
    EXPECT_FALSE(analyzer.updateAndCheckMotion(7, 0.9, 0.9));
    EXPECT_TRUE(analyzer.updateAndCheckMotion(7, 0.9, 0.9));
}

TEST(TrackedOdMotionAnalyzer, AnswersByDistanceFromTheSecondPositionWhenTwoAreEnough) {
    for (const int minLength : {-1, 0, 1, 2}) {
        TrackedOdMotionAnalyzer analyzer(analyzerConfig(minLength, 20));
        EXPECT_FALSE(analyzer.updateAndCheckMotion(1, 0.0, 0.0));
        EXPECT_TRUE(analyzer.updateAndCheckMotion(1, 0.5, 0.0)) << minLength;
    }
}

TEST(TrackedOdMotionAnalyzer, WaitsForTheMinimumLength) {
    TrackedOdMotionAnalyzer analyzer(analyzerConfig(4, 20));
    EXPECT_FALSE(analyzer.updateAndCheckMotion(1, 0.0, 0.0));
    EXPECT_FALSE(analyzer.updateAndCheckMotion(1, 1.0, 0.0));
    EXPECT_FALSE(analyzer.updateAndCheckMotion(1, 1.0, 0.0));
    EXPECT_TRUE(analyzer.updateAndCheckMotion(1, 1.0, 0.0));
}

TEST(TrackedOdMotionAnalyzer, NeedsADistanceAboveTheThreshold) {
    TrackedOdMotionAnalyzer analyzer(analyzerConfig(2, 20));
    analyzer.updateAndCheckMotion(1, 0.0, 0.0);
    EXPECT_FALSE(analyzer.updateAndCheckMotion(1, threshold, 0.0));
    EXPECT_FALSE(analyzer.updateAndCheckMotion(1, 0.0, -threshold));
    EXPECT_TRUE(analyzer.updateAndCheckMotion(1, 0.0, -std::nextafter(threshold, 1.0)));
}

TEST(TrackedOdMotionAnalyzer, MeasuresBothCoordinatesTogether) {
    TrackedOdMotionAnalyzer analyzer(analyzerConfig(2, 20));
    analyzer.updateAndCheckMotion(1, 0.1, 0.1);
    EXPECT_TRUE(analyzer.updateAndCheckMotion(1, 0.3, -0.1));  // 0.2 each, 0.28 combined
}

TEST(TrackedOdMotionAnalyzer, ComparesOnlyTheEndsOfTheHistory) {
    TrackedOdMotionAnalyzer analyzer(analyzerConfig(2, 20));
    analyzer.updateAndCheckMotion(1, 0.0, 0.0);
    EXPECT_TRUE(analyzer.updateAndCheckMotion(1, 0.8, 0.0));
    EXPECT_FALSE(analyzer.updateAndCheckMotion(1, 0.0, 0.0));
}

TEST(TrackedOdMotionAnalyzer, ForgetsTheOldestPositionBeyondTheMaximumLength) {
    TrackedOdMotionAnalyzer analyzer(analyzerConfig(2, 3));
    analyzer.updateAndCheckMotion(1, 0.0, 0.0);
    EXPECT_TRUE(analyzer.updateAndCheckMotion(1, 0.5, 0.0));
    EXPECT_TRUE(analyzer.updateAndCheckMotion(1, 0.5, 0.0));
    EXPECT_FALSE(analyzer.updateAndCheckMotion(1, 0.5, 0.0)) << "the origin must be gone";
}

TEST(TrackedOdMotionAnalyzer, CountsTheLengthAfterForgetting) {
    TrackedOdMotionAnalyzer analyzer(analyzerConfig(3, 2));
    for (int i = 0; i < 10; ++i) {
        EXPECT_FALSE(analyzer.updateAndCheckMotion(1, i, 0.0));
    }
}

TEST(TrackedOdMotionAnalyzer, KeepsTheNewestPositionWhateverTheMaximumLength) {
    for (const int maxLength : {1, 0, -3}) {
        TrackedOdMotionAnalyzer analyzer(analyzerConfig(0, maxLength));
        for (int i = 0; i < 4; ++i) {
            EXPECT_FALSE(analyzer.updateAndCheckMotion(1, i, 0.0));
        }
    }
}

TEST(TrackedOdMotionAnalyzer, KeepsDetectionsApart) {
    TrackedOdMotionAnalyzer analyzer(analyzerConfig(2, 20));
    analyzer.updateAndCheckMotion(1, 0.0, 0.0);
    EXPECT_FALSE(analyzer.updateAndCheckMotion(-1, 0.9, 0.9));
    EXPECT_TRUE(analyzer.updateAndCheckMotion(1, 0.9, 0.9));
    EXPECT_FALSE(analyzer.updateAndCheckMotion(-1, 0.9, 0.9));
}

TEST(TrackedOdMotionAnalyzer, EvictsTheLowestIdBeyondAThousand) {
    TrackedOdMotionAnalyzer analyzer(analyzerConfig(2, 20));
    for (int id = 1; id <= 1000; ++id) {
        analyzer.updateAndCheckMotion(id, 0.0, 0.0);
    }
    EXPECT_TRUE(analyzer.updateAndCheckMotion(1, 1.0, 0.0)) << "a thousand are kept";
    EXPECT_FALSE(analyzer.updateAndCheckMotion(5000, 0.0, 0.0));
    EXPECT_TRUE(analyzer.updateAndCheckMotion(2, 1.0, 0.0));
    EXPECT_TRUE(analyzer.updateAndCheckMotion(5000, 1.0, 0.0));
    EXPECT_FALSE(analyzer.updateAndCheckMotion(1, 1.0, 0.0)) << "1 had to go, and is new again";
}

TEST(TrackedOdMotionAnalyzer, EvictsTheNewDetectionWhenItsIdIsTheLowest) {
    TrackedOdMotionAnalyzer analyzer(analyzerConfig(2, 20));
    for (int id = 1; id <= 1000; ++id) {
        analyzer.updateAndCheckMotion(id, 0.0, 0.0);
    }
    EXPECT_FALSE(analyzer.updateAndCheckMotion(0, 0.0, 0.0));
    EXPECT_FALSE(analyzer.updateAndCheckMotion(0, 1.0, 0.0)) << "0 was not kept";
    EXPECT_TRUE(analyzer.updateAndCheckMotion(1, 1.0, 0.0));
}

TEST(TrackedOdMotionAnalyzer, AnswersNoToPositionsThatAreNoNumbers) {
    TrackedOdMotionAnalyzer analyzer(analyzerConfig(2, 20));
    analyzer.updateAndCheckMotion(1, 0.0, 0.0);
    EXPECT_FALSE(analyzer.updateAndCheckMotion(1, std::numeric_limits<double>::quiet_NaN(), 0.0));
    EXPECT_TRUE(analyzer.updateAndCheckMotion(1, 1.0, 0.0));
}

}  // namespace
}  // namespace Veskar
