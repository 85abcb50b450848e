// SPDX-License-Identifier: Apache-2.0
#include "evaluate/Instants.h"
#include "evaluate/metrics/ClearMot.h"

#include <gtest/gtest.h>

namespace Workbench {
namespace {

/// Similarity 1 - d / 4, matches up to 2 m.
constexpr SimilarityParameters parameters{4.0, 0.5};

TEST(ClearMot, CountsMatchesMissesAndFalseTracks) {
    ClearMot metric(parameters);
    // Object 1 on track 7 at 1 m, object 2 missed, track 8 false.
    add(metric, instantOf(0, {{1, 0}, {2, 50}}, {{7, 1}, {8, 100}}));
    // No tracks; then no objects.
    add(metric, instantOf(1, {{1, 0}, {2, 50}}, {}));
    add(metric, instantOf(2, {}, {{7, 1}}));
    const ClearMot::Result result = metric.result();
    EXPECT_EQ(result.TP, 1);
    EXPECT_EQ(result.FN, 3);
    EXPECT_EQ(result.FP, 2);
    EXPECT_EQ(result.IDSW, 0);
    EXPECT_DOUBLE_EQ(result.MOTA, (1.0 - 2.0 - 0.0) / 4.0);
    EXPECT_DOUBLE_EQ(result.MOTP, 0.75);
    EXPECT_DOUBLE_EQ(result.motpDistance, 1.0);
    EXPECT_DOUBLE_EQ(result.tracksPerObject, 1.0);
}

TEST(ClearMot, MatchesUpToTheThreshold) {
    ClearMot at(parameters);
    add(at, instantOf(0, {{1, 0}}, {{7, 2.0}}));  // similarity 0.5
    EXPECT_EQ(at.result().TP, 1);
    ClearMot beyond(parameters);
    add(beyond, instantOf(0, {{1, 0}}, {{7, 2.001}}));
    EXPECT_EQ(beyond.result().TP, 0);
}

TEST(ClearMot, KeepsAMatchWhenAnotherTrackComesNearer) {
    ClearMot metric(parameters);
    add(metric, instantOf(0, {{1, 0}}, {{7, 1}}));
    add(metric, instantOf(1, {{1, 0}}, {{7, 1.9}, {8, 0}}));
    EXPECT_EQ(metric.result().IDSW, 0);
    EXPECT_DOUBLE_EQ(metric.result().motpDistance, (1.0 + 1.9) / 2.0);
}

TEST(ClearMot, CountsASwitchAgainstTheLastTrackTheObjectHad) {
    ClearMot metric(parameters);
    add(metric, instantOf(0, {{1, 0}}, {{7, 0}}));
    add(metric, instantOf(1, {{1, 0}}, {{9, 90}}));  // lost
    add(metric, instantOf(2, {{1, 0}}, {{8, 0}}));   // matched with another track: switch
    add(metric, instantOf(3, {{1, 0}}, {{9, 90}}));  // lost
    add(metric, instantOf(4, {{1, 0}}, {{8, 0}}));   // matched with the same track: no switch
    EXPECT_EQ(metric.result().IDSW, 1);
    EXPECT_DOUBLE_EQ(metric.result().tracksPerObject, 2.0);
    // Three intervals of tracking are two fragmentations.
    EXPECT_EQ(metric.result().Frag, 2);
}

TEST(ClearMot, CountsTwoSwitchesWhenTwoObjectsSwapTheirTracks) {
    ClearMot metric(parameters);
    add(metric, instantOf(0, {{1, 0}, {2, 10}}, {{7, 0}, {8, 10}}));
    add(metric, instantOf(1, {{1, 0}, {2, 10}}, {{7, 10}, {8, 0}}));
    // 4 matches, no misses: (4 - 0 - 2) / 4.
    EXPECT_EQ(metric.result().IDSW, 2);
    EXPECT_EQ(metric.result().Frag, 0);
    EXPECT_DOUBLE_EQ(metric.result().MOTA, 0.5);
}

TEST(ClearMot, SortsObjectsByTheShareOfTheirLifeThatIsTracked) {
    ClearMot metric(parameters);
    for (int i = 0; i < 10; ++i) {
        // Tracked 9, 8, 2 and 1 times of 10: above 80 % is mostly tracked, below 20 % mostly lost.
        std::vector<At> tracks;
        const int spells[] = {9, 8, 2, 1};
        for (int object = 0; object < 4; ++object) {
            if (i < spells[object]) {
                tracks.push_back({object, 100.0 * object});
            }
        }
        add(metric, instantOf(i, {{0, 0}, {1, 100}, {2, 200}, {3, 300}}, tracks));
    }
    const ClearMot::Result result = metric.result();
    EXPECT_EQ(result.MT, 1);
    EXPECT_EQ(result.PT, 2);
    EXPECT_EQ(result.ML, 1);
}

TEST(ClearMot, WithoutAnythingIsZero) {
    const ClearMot::Result result = ClearMot(parameters).result();
    EXPECT_EQ(result.MOTA, 0.0);
    EXPECT_EQ(result.MOTP, 0.0);
    EXPECT_EQ(result.ML, 0);
}

}  // namespace
}  // namespace Workbench
