// SPDX-License-Identifier: Apache-2.0
#include "evaluate/Instants.h"
#include "evaluate/metrics/Hota.h"

#include <cmath>

#include <gtest/gtest.h>

namespace Workbench {
namespace {

Hota::Result resultOf(const std::vector<Instant>& instants) {
    Hota metric(4.0);
    addTwice(metric, instants);
    return metric.result();
}

TEST(Hota, IsOneForPerfectTracks) {
    std::vector<Instant> instants;
    instants.reserve(5);
    for (int i = 0; i < 5; ++i) {
        instants.push_back(instantOf(i, {{1, 0}, {2, 50}}, {{7, 0}, {8, 50}}));
    }
    EXPECT_NEAR(resultOf(instants).HOTA, 1.0, 1e-12);
    EXPECT_NEAR(resultOf(instants).DetA, 1.0, 1e-12);
    EXPECT_NEAR(resultOf(instants).AssA, 1.0, 1e-12);
    EXPECT_NEAR(resultOf(instants).LocA, 1.0, 1e-12);
}

TEST(Hota, SplitsDetectionAndAssociation) {
    // Object 1 exists for four instants and coincides with track 7 twice, then with track 8 twice.
    // Every threshold: TP 4, no errors, DetA 1. Each match of (1, 7) has the overlap 2 / (4 + 2 -
    // 2) = 1/2, and so has (1, 8): AssA 1/2, HOTA sqrt(1/2).
    std::vector<Instant> instants;
    instants.push_back(instantOf(0, {{1, 0}}, {{7, 0}}));
    instants.push_back(instantOf(1, {{1, 0}}, {{7, 0}}));
    instants.push_back(instantOf(2, {{1, 0}}, {{8, 0}}));
    instants.push_back(instantOf(3, {{1, 0}}, {{8, 0}}));
    EXPECT_NEAR(resultOf(instants).DetA, 1.0, 1e-12);
    EXPECT_NEAR(resultOf(instants).AssA, 0.5, 1e-12);
    EXPECT_NEAR(resultOf(instants).HOTA, std::sqrt(0.5), 1e-12);
}

TEST(Hota, CountsMissesAndFalseTracksInDetection) {
    // One match in two instants, one miss and one false track: DetA 1 / (1 + 1 + 1), overlap 1 / (2
    // + 2 - 1) = 1/3, HOTA sqrt(1/9) = 1/3.
    std::vector<Instant> instants;
    instants.push_back(instantOf(0, {{1, 0}}, {{7, 0}}));
    instants.push_back(instantOf(1, {{1, 0}}, {{7, 50}}));
    EXPECT_NEAR(resultOf(instants).DetA, 1.0 / 3.0, 1e-12);
    EXPECT_NEAR(resultOf(instants).AssA, 1.0 / 3.0, 1e-12);
    EXPECT_NEAR(resultOf(instants).HOTA, 1.0 / 3.0, 1e-12);
}

TEST(Hota, AveragesOverTheLocalisationThresholds) {
    // One track 1 m off, similarity 0.75: a match at the thresholds 0.05 ... 0.75 (15 of 19), a
    // miss and a false track at the four above. LocA is 1 at those without a match.
    std::vector<Instant> instants;
    instants.push_back(instantOf(0, {{1, 0}}, {{7, 1}}));
    const Hota::Result result = resultOf(instants);
    EXPECT_NEAR(result.HOTA, 15.0 / 19.0, 1e-12);
    EXPECT_NEAR(result.DetA, 15.0 / 19.0, 1e-12);
    EXPECT_NEAR(result.AssA, 15.0 / 19.0, 1e-12);
    EXPECT_NEAR(result.LocA, (15.0 * 0.75 + 4.0) / 19.0, 1e-12);
}

TEST(Hota, PrefersTheTrackThatSuitsTheObjectOverTheWholeTime) {
    // At the third instant track 8 is slightly nearer to object 1, but 1 and 7 are better aligned.
    // Potentials (1,7) = 1 + 1 + 0.75/1.75, (1,8) = 1/1.75; with counts 3 and 3, 3 and 1. The score
    // of 7 (0.68 times 0.75) is above that of 8 (0.17 times 1), so all three matches are (1, 7) up
    // to threshold 0.75; above, the third instant has none, and track 8 is always false.
    std::vector<Instant> instants;
    instants.push_back(instantOf(0, {{1, 0}}, {{7, 0}}));
    instants.push_back(instantOf(1, {{1, 0}}, {{7, 0}}));
    instants.push_back(instantOf(2, {{1, 0}}, {{7, 1}, {8, 0}}));
    // 15 thresholds: DetA 3 / 4, overlap 3 / 3. Four: DetA 2 / (2 + 1 + 2), overlap 2 / (3 + 3 -
    // 2).
    const Hota::Result result = resultOf(instants);
    EXPECT_NEAR(result.DetA, (15.0 * 0.75 + 4.0 * 0.4) / 19.0, 1e-12);
    EXPECT_NEAR(result.AssA, (15.0 * 1.0 + 4.0 * 0.5) / 19.0, 1e-12);
    EXPECT_NEAR(result.HOTA, (15.0 * std::sqrt(0.75) + 4.0 * std::sqrt(0.2)) / 19.0, 1e-12);
}

TEST(Hota, WithoutTracksIsZero) {
    std::vector<Instant> instants;
    instants.push_back(instantOf(0, {{1, 0}}, {}));
    EXPECT_EQ(resultOf(instants).HOTA, 0.0);
    EXPECT_EQ(resultOf(instants).DetA, 0.0);
}

}  // namespace
}  // namespace Workbench
