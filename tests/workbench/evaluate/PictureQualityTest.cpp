// SPDX-License-Identifier: Apache-2.0
#include "evaluate/Instants.h"
#include "evaluate/metrics/PictureQuality.h"

#include <cmath>

#include <gtest/gtest.h>

namespace Workbench {
namespace {

TEST(PictureQuality, CountsDuplicatesCompletenessAndSpuriousTracks) {
    PictureQuality metric(2.0);
    // Object 1 has three tracks, object 2 one, object 3 none; track 11 belongs to no object.
    add(metric,
        instantOf(0, {{1, 0}, {2, 20}, {3, 40}}, {{7, 0}, {8, 1}, {9, -1}, {10, 21}, {11, 70}}));
    const PictureQuality::Result result = metric.result();
    EXPECT_DOUBLE_EQ(result.completeness, 2.0 / 3.0);
    EXPECT_DOUBLE_EQ(result.duplicatesPerObject, 2.0 / 2.0);
    EXPECT_DOUBLE_EQ(result.spuriousness, 1.0 / 5.0);
}

TEST(PictureQuality, GivesATrackToTheNearestObject) {
    PictureQuality metric(2.0);
    add(metric, instantOf(0, {{1, 0}, {2, 3}}, {{7, 1}, {8, 2}}));
    EXPECT_DOUBLE_EQ(metric.result().completeness, 1.0);
    EXPECT_DOUBLE_EQ(metric.result().duplicatesPerObject, 0.0);
}

TEST(PictureQuality, IncludesTheRadius) {
    PictureQuality metric(2.0);
    add(metric, instantOf(0, {{1, 0}}, {{7, 2.0}, {8, -2.001}}));
    EXPECT_DOUBLE_EQ(metric.result().duplicatesPerObject, 0.0);
    EXPECT_DOUBLE_EQ(metric.result().spuriousness, 0.5);
}

TEST(PictureQuality, TracksWithoutAnyObjectAreSpurious) {
    PictureQuality metric(2.0);
    add(metric, instantOf(0, {}, {{7, 2.0}}));
    EXPECT_DOUBLE_EQ(metric.result().spuriousness, 1.0);
}

TEST(PictureQuality, OfNothingThereIsNoShare) {
    const PictureQuality::Result result = PictureQuality(2.0).result();
    EXPECT_TRUE(std::isnan(result.completeness));
    EXPECT_TRUE(std::isnan(result.duplicatesPerObject));
    EXPECT_TRUE(std::isnan(result.spuriousness));
}

}  // namespace
}  // namespace Workbench
