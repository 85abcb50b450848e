// SPDX-License-Identifier: Apache-2.0
#include "evaluate/Instants.h"
#include "evaluate/metrics/Identity.h"

#include <gtest/gtest.h>

namespace Workbench {
namespace {

/// Matches up to 2 m.
constexpr SimilarityParameters parameters{4.0, 0.5};

TEST(Identity, GivesAnObjectItsLongestTrackOnly) {
    Identity metric(parameters);
    // Object 1 for ten instants: track 7 for six of them, track 8 for the last three.
    for (int i = 0; i < 10; ++i) {
        std::vector<At> tracks;
        if (i < 6) {
            tracks.push_back({7, 0.5});
        } else if (i > 6) {
            tracks.push_back({8, 0.5});
        }
        add(metric, instantOf(i, {{1, 0}}, tracks));
    }
    // IDTP 6, IDFN 10 - 6, IDFP 9 - 6.
    const Identity::Result result = metric.result();
    EXPECT_EQ(result.IDTP, 6);
    EXPECT_EQ(result.IDFN, 4);
    EXPECT_EQ(result.IDFP, 3);
    EXPECT_DOUBLE_EQ(result.IDR, 6.0 / 10.0);
    EXPECT_DOUBLE_EQ(result.IDP, 6.0 / 9.0);
    EXPECT_DOUBLE_EQ(result.IDF1, 6.0 / (6.0 + 0.5 * 3.0 + 0.5 * 4.0));
}

TEST(Identity, AssignsOverTheWholeTimeAndNotGreedily) {
    Identity metric(parameters);
    // Track 7 matches object 1 three times and object 2 twice, track 8 matches object 1 twice.
    // 1-7 alone gives 3; 1-8 and 2-7 give 2 + 2.
    for (int i = 0; i < 3; ++i) {
        add(metric, instantOf(i, {{1, 0}}, {{7, 0}}));
    }
    for (int i = 3; i < 5; ++i) {
        add(metric, instantOf(i, {{1, 0}, {2, 50}}, {{8, 0}, {7, 50}}));
    }
    EXPECT_EQ(metric.result().IDTP, 4);
}

TEST(Identity, MatchesUpToTheThreshold) {
    Identity at(parameters);
    add(at, instantOf(0, {{1, 0}}, {{7, 2.0}}));
    EXPECT_EQ(at.result().IDTP, 1);
    Identity beyond(parameters);
    add(beyond, instantOf(0, {{1, 0}}, {{7, 2.001}}));
    EXPECT_EQ(beyond.result().IDTP, 0);
}

TEST(Identity, WithoutTracksEverythingIsMissed) {
    Identity metric(parameters);
    add(metric, instantOf(0, {{1, 0}, {2, 9}}, {}));
    EXPECT_EQ(metric.result().IDFN, 2);
    EXPECT_EQ(metric.result().IDF1, 0.0);
}

}  // namespace
}  // namespace Workbench
