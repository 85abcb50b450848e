// SPDX-License-Identifier: Apache-2.0
#include "evaluate/metrics/Assignment.h"

#include <algorithm>
#include <numeric>
#include <random>

#include <Eigen/Core>
#include <gmock/gmock.h>

namespace Workbench {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

Pairs assign(const Eigen::MatrixXd& gain) {
    std::vector<Gain> gains;
    for (int row = 0; row < gain.rows(); ++row) {
        for (int column = 0; column < gain.cols(); ++column) {
            gains.push_back({row, column, gain(row, column)});
        }
    }
    Pairs pairs;
    for (const std::size_t place : assignWithGreatestGain(
             static_cast<std::size_t>(gain.rows()), static_cast<std::size_t>(gain.cols()), gains)) {
        pairs.emplace_back(gains[place].row, gains[place].column);
    }
    return pairs;
}

/// The greatest total over all permutations of a square problem, by brute force.
double greatestTotal(const Eigen::MatrixXd& gain) {
    std::vector<int> columns(static_cast<std::size_t>(gain.cols()));
    std::iota(columns.begin(), columns.end(), 0);
    double best = 0.0;
    do {
        double total = 0.0;
        for (Eigen::Index i = 0; i < gain.rows(); ++i) {
            total += std::max(0.0, gain(i, columns[static_cast<std::size_t>(i)]));
        }
        best = std::max(best, total);
    } while (std::next_permutation(columns.begin(), columns.end()));
    return best;
}

double totalOf(const Pairs& pairs, const Eigen::MatrixXd& gain) {
    double total = 0.0;
    for (const auto& [i, j] : pairs) {
        total += gain(i, j);
    }
    return total;
}

TEST(Assignment, PrefersTheGreaterTotalToTheGreatestPair) {
    Eigen::MatrixXd gain(2, 2);
    gain << 10, 9,  //
        8, 1;
    // 10 + 1 against 9 + 8.
    EXPECT_THAT(assign(gain), ElementsAre(Pair(0, 1), Pair(1, 0)));
}

TEST(Assignment, LeavesPairsWithoutGainAlone) {
    Eigen::MatrixXd gain(2, 2);
    gain << 3, 0,  //
        4, -1;
    // Row 0 could only get column 0, which gains more with row 1; a second pair would gain 0.
    EXPECT_THAT(assign(gain), ElementsAre(Pair(1, 0)));
}

TEST(Assignment, MakesFewerPairsWhenThatGainsMore) {
    Eigen::MatrixXd gain(2, 2);
    gain << 5, 1,  //
        1, 0;
    // One pair of 5 against two pairs of 1 + 1.
    EXPECT_THAT(assign(gain), ElementsAre(Pair(0, 0)));
}

TEST(Assignment, EmptySidesHaveNoPairs) {
    EXPECT_THAT(assign(Eigen::MatrixXd(0, 0)), IsEmpty());
    EXPECT_THAT(assign(Eigen::MatrixXd(0, 3)), IsEmpty());
    EXPECT_THAT(assign(Eigen::MatrixXd(3, 0)), IsEmpty());
}

TEST(Assignment, OblongProblemsLeaveTheRestAlone) {
    Eigen::MatrixXd gain(1, 3);
    gain << 1, 7, 2;
    EXPECT_THAT(assign(gain), ElementsAre(Pair(0, 1)));
    EXPECT_THAT(assign(gain.transpose()), ElementsAre(Pair(1, 0)));
}

TEST(Assignment, EqualsExhaustiveSearchOnRandomProblems) {
    std::mt19937 random(7);
    std::uniform_real_distribution<double> value(-1.0, 1.0);
    for (int run = 0; run < 200; ++run) {
        const Eigen::MatrixXd gain =
            Eigen::MatrixXd::NullaryExpr(6, 6, [&] { return value(random); });
        EXPECT_NEAR(totalOf(assign(gain), gain), greatestTotal(gain), 1e-9);
    }
}

TEST(Assignment, EqualsExhaustiveSearchOnOblongProblems) {
    std::mt19937 random(8);
    std::uniform_real_distribution<double> value(-1.0, 1.0);
    for (int run = 0; run < 200; ++run) {
        const Eigen::MatrixXd gain =
            Eigen::MatrixXd::NullaryExpr(3, 6, [&] { return value(random); });
        Eigen::MatrixXd square = Eigen::MatrixXd::Zero(6, 6);
        square.topRows(3) = gain;
        const double best = greatestTotal(square);
        EXPECT_NEAR(totalOf(assign(gain), gain), best, 1e-9);
        EXPECT_NEAR(totalOf(assign(gain.transpose()), gain.transpose()), best, 1e-9);
    }
}

TEST(Assignment, SolvesManySmallGroups) {
    const Eigen::MatrixXd gain = Eigen::MatrixXd::Identity(600, 600);
    const Pairs pairs = assign(gain);
    ASSERT_EQ(pairs.size(), 600U);
    EXPECT_TRUE(std::all_of(pairs.begin(), pairs.end(),
                            [](const auto& pair) { return pair.first == pair.second; }));
}

TEST(Assignment, SolvesALargeGroup) {
    // Like the tracks of a long recording, in which a few objects had very many tracks each. Row i
    // has a large gain with column 100 i and a very small one with all others.
    Eigen::MatrixXd gain = Eigen::MatrixXd::Constant(30, 3000, 1e-3);
    Pairs expected;
    for (int i = 0; i < 30; ++i) {
        const int partner = 100 * i;
        gain(i, partner) = 1.0;
        expected.emplace_back(i, partner);
    }
    EXPECT_EQ(assign(gain), expected);
}

}  // namespace
}  // namespace Workbench
