// SPDX-License-Identifier: Apache-2.0
#include "evaluate/Instants.h"
#include "evaluate/JudgedScene.h"
#include "evaluate/metrics/Median.h"
#include "evaluate/metrics/NearPairs.h"
#include "evaluate/metrics/PairNumbers.h"
#include "evaluate/metrics/PairValues.h"
#include "evaluate/metrics/SetDistance.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <random>

#include <gmock/gmock.h>

namespace Workbench {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// Objects and tracks anywhere in a square.
Instant anywhere(std::mt19937& random, double side) {
    std::uniform_real_distribution<double> coordinate(0.0, side);
    std::vector<At> truths;
    std::vector<At> tracks;
    for (int i = 0; i < 40; ++i) {
        truths.push_back({i, coordinate(random), coordinate(random)});
        tracks.push_back({i, coordinate(random), coordinate(random)});
    }
    return instantOf(0, truths, tracks);
}

TEST(NearPairs, AreThoseWithinReachInTheOrderOfObjectsAndTracks) {
    const NearPairs pairs =
        nearPairs(instantOf(0, {{1, 0}, {2, 3}}, {{7, 5}, {8, 1, 1}, {9, 9}, {10, -2}}), 2.0);
    ASSERT_EQ(pairs.size(), 3U);
    EXPECT_EQ(std::make_pair(pairs[0].truth, pairs[0].track), std::make_pair(0, 1));
    EXPECT_DOUBLE_EQ(pairs[0].distance, std::sqrt(2.0));
    EXPECT_EQ(std::make_pair(pairs[1].truth, pairs[1].track), std::make_pair(0, 3));
    EXPECT_EQ(std::make_pair(pairs[2].truth, pairs[2].track), std::make_pair(1, 0));
}

TEST(NearPairs, EqualAllPairsWithinReach) {
    std::mt19937 random(1);
    for (int run = 0; run < 50; ++run) {
        const Instant instant = anywhere(random, 20.0);
        const NearPairs pairs = nearPairs(instant, 4.0);
        auto next = pairs.begin();
        for (int i = 0; i < 40; ++i) {
            for (int j = 0; j < 40; ++j) {
                const double distance = (instant.tracks[static_cast<std::size_t>(j)].position -
                                         instant.truths[static_cast<std::size_t>(i)].position)
                                            .norm();
                if (distance <= 4.0) {
                    ASSERT_NE(next, pairs.end());
                    EXPECT_EQ(next->truth, i);
                    EXPECT_EQ(next->track, j);
                    EXPECT_EQ(next->distance, distance);
                    ++next;
                }
            }
        }
        EXPECT_EQ(next, pairs.end());
    }
}

TEST(JudgedScene, KeepsTheBestAssignmentInItsParts) {
    std::mt19937 random(2);
    const SetDistanceParameters parameters{5.0, 2.0};
    for (int run = 0; run < 100; ++run) {
        JudgedScene whole{anywhere(random, 20.0), {}, {}};
        whole.near = nearPairs(whole.instant, 5.0);
        whole.matches = matchWithinCutoff(whole.instant, whole.near, parameters);
        std::vector<bool> keepTruth(40);
        std::vector<bool> keepTrack(40);
        std::generate(keepTruth.begin(), keepTruth.end(), [&] { return random() % 2 == 0; });
        std::generate(keepTrack.begin(), keepTrack.end(), [&] { return random() % 2 == 0; });
        for (const auto& [truth, track] : whole.matches) {
            keepTrack[static_cast<std::size_t>(track)] = keepTruth[static_cast<std::size_t>(truth)];
        }
        const JudgedScene part = partOf(whole, keepTruth, keepTrack);
        EXPECT_EQ(part.matches, matchWithinCutoff(part.instant, part.near, parameters));
        const NearPairs near = nearPairs(part.instant, 5.0);
        ASSERT_EQ(part.near.size(), near.size());
        for (std::size_t k = 0; k < near.size(); ++k) {
            EXPECT_EQ(part.near[k].truth, near[k].truth);
            EXPECT_EQ(part.near[k].track, near[k].track);
            EXPECT_EQ(part.near[k].distance, near[k].distance);
        }
    }
}

std::vector<int> numbersOf(PairNumbers& numbers, const Instant& instant, double reach) {
    NearPairs near = nearPairs(instant, reach);
    numbers.number(near, instant);
    std::vector<int> result;
    for (const NearPair& pair : near) {
        result.push_back(pair.number);
    }
    return result;
}

TEST(PairNumbers, CountPairsInTheOrderInWhichTheyAreFirstNear) {
    PairNumbers numbers;
    EXPECT_THAT(numbersOf(numbers, instantOf(0, {{1, 0}, {2, 1}}, {{1, 0}, {2, 1}}), 0.5),
                ElementsAre(0, 1));
    EXPECT_THAT(numbersOf(numbers, instantOf(1, {{1, 0}, {2, 1}}, {{1, 0}, {2, 1}}), 2.0),
                ElementsAre(0, 2, 3, 1));
    EXPECT_THAT(numbersOf(numbers, instantOf(2, {{2, 1}}, {{1, 9}}), 2.0), IsEmpty());
    // A pair that comes back has the same number, in whatever order the members are.
    EXPECT_THAT(numbersOf(numbers, instantOf(3, {{2, 1}, {1, 0}}, {{2, 1}, {1, 0}}), 2.0),
                ElementsAre(1, 3, 2, 0));
}

TEST(PairNumbers, EqualThoseOfAMap) {
    std::mt19937 random(3);
    PairNumbers numbers;
    std::map<std::pair<int, int>, int> expected;
    for (int run = 0; run < 200; ++run) {
        const Instant instant = anywhere(random, 20.0);
        NearPairs near = nearPairs(instant, 4.0);
        numbers.number(near, instant);
        for (const NearPair& pair : near) {
            const auto place = [](int index) { return static_cast<std::size_t>(index); };
            const std::pair<int, int> ids(instant.truths[place(pair.truth)].id,
                                          instant.tracks[place(pair.track)].id);
            EXPECT_EQ(pair.number,
                      expected.try_emplace(ids, static_cast<int>(expected.size())).first->second);
        }
    }
    EXPECT_EQ(expected.size(), 1600U);
}

TEST(PairValues, HoldOneForEachPairThatIsAskedFor) {
    PairValues<int> values;
    values[7] = 70;
    values[2] = 20;
    ++values[7];
    EXPECT_EQ(values[2], 20);
    EXPECT_EQ(values[5], 0);
    EXPECT_THAT(values.all(), ElementsAre(71, 20, 0));
}

TEST(PairValues, AreSortedByObjectAndTrack) {
    PairValues<CountedPair<int>> pairs;
    pairs[0] = {2, 1, 10};
    pairs[1] = {1, 9, 20};
    pairs[2] = {2, 0, 30};
    std::vector<int> counts;
    for (const CountedPair<int>& pair : sorted(pairs)) {
        counts.push_back(pair.count);
    }
    EXPECT_THAT(counts, ElementsAre(20, 30, 10));
}

TEST(Median, IsThatOfTheSortedNumbers) {
    std::mt19937 random(4);
    std::uniform_real_distribution<float> exponent(-20.0F, 10.0F);
    for (const std::size_t size : {1U, 2U, 3U, 1000U, 4999U}) {
        std::vector<float> values(size);
        std::generate(values.begin(), values.end(), [&] { return std::exp(exponent(random)); });
        values.front() = 0.0F;
        Median median;
        for (const float value : values) {
            median.count(value);
        }
        median.beginAgain();
        for (const float value : values) {
            median.countAgain(value);
        }
        std::sort(values.begin(), values.end());
        EXPECT_EQ(median.size(), size);
        EXPECT_EQ(median.result(), static_cast<double>(values[size / 2]));
    }
}

TEST(Median, OfNothingIsNotANumber) {
    Median median;
    median.beginAgain();
    EXPECT_TRUE(std::isnan(median.result()));
}

}  // namespace
}  // namespace Workbench
