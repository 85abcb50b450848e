// SPDX-License-Identifier: Apache-2.0
#include "assignment/JonkerVolgenant.h"
#include "assignment/LiteralSolver.h"
#include "assignment/Problems.h"
#include "support/AllocationCounter.h"
#include "support/Constants.h"

#include <algorithm>
#include <numeric>

#include <gtest/gtest.h>

using namespace VeskarTest;
using Veskar::forbiddenCost;
using Veskar::JonkerVolgenant;

namespace {

using VeskarTest::F;
using VeskarTest::infinite;
using VeskarTest::nan;

std::vector<int> solve(JonkerVolgenant& solver, const Costs& C) {
    solver.start(C.size());
    for (std::size_t i = 0; i < C.size(); ++i) {
        solver.setRow(i, C[i].data(), C[i].size());
    }
    return solver.solve();
}

std::vector<int> solve(const Costs& C) {
    JonkerVolgenant solver;
    return solve(solver, C);
}

double totalCost(const Costs& C, const std::vector<int>& columnOf) {
    double total = 0.0;
    for (std::size_t i = 0; i < C.size(); ++i) {
        total += C[i][columnOf[i]];
    }
    return total;
}

double leastTotalCost(const Costs& C) {
    std::vector<int> order(C.size());
    std::iota(order.begin(), order.end(), 0);
    double least = infinite;
    do {
        least = std::min(least, totalCost(C, order));
    } while (std::next_permutation(order.begin(), order.end()));
    return least;
}

class SolverFamilies : public testing::TestWithParam<Family> {};

TEST_P(SolverFamilies, AgreeWithTheLiteralAlgorithm) {
    RandomEstimates random(11);
    JonkerVolgenant solver;
    for (int k = 0; k < 420; ++k) {
        const int n = k < 360 ? 1 + k % 12 : k < 416 ? 13 + k % 30 : k == 416 ? 200 : 90 + k % 20;
        const Costs C = GetParam().make(random, n);
        ASSERT_EQ(solve(solver, C), solveLiterally(C).columnOfRow) << "problem " << k;
    }
}

TEST_P(SolverFamilies, ReachTheOptimumOfAllPermutations) {
    RandomEstimates random(12);
    for (int k = 0; k < 60; ++k) {
        const Costs C = GetParam().make(random, 1 + k % 7);
        const double least = leastTotalCost(C);
        ASSERT_NEAR(totalCost(C, solve(C)), least, 1e-9 * std::max(1.0, std::abs(least)));
    }
}

// Dual feasibility, u[i] + v[j] <= c[i][j] with equality on the assignment, proves optimality.
TEST_P(SolverFamilies, HavePricesThatProveTheOptimum) {
    RandomEstimates random(13);
    JonkerVolgenant solver;
    for (const int n : {9, 16, 33, 64, 120}) {
        const Costs C = GetParam().make(random, n);
        const std::vector<int> columnOf = solve(solver, C);
        std::vector<int> sorted = columnOf;
        std::sort(sorted.begin(), sorted.end());
        for (int j = 0; j < n; ++j) {
            ASSERT_EQ(sorted[j], j);
        }
        const std::vector<double>& v = solver.columnPrices();
        for (int i = 0; i < n; ++i) {
            const double u = C[i][columnOf[i]] - v[columnOf[i]];
            for (int j = 0; j < n; ++j) {
                ASSERT_LE(u + v[j], C[i][j] + 1e-9) << "row " << i << ", column " << j;
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(All, SolverFamilies, testing::ValuesIn(families),
                         [](const auto& instance) { return std::string(instance.param.name); });

TEST(JonkerVolgenant, SolvesASinglePair) {
    EXPECT_EQ(solve({{3.0}}), std::vector<int>{0});
    EXPECT_EQ(solve({{forbiddenCost}}), std::vector<int>{0});
}

TEST(JonkerVolgenant, GivesTheFirstContestedColumnToTheLowerOfTwoIdenticalRows) {
    EXPECT_EQ(solve({{1.0, 2.0}, {1.0, 2.0}}), (std::vector<int>{1, 0}));
    EXPECT_EQ(solve({{1.0, 1.0, 5.0}, {1.0, 1.0, 5.0}, {0.5, 5.0, 0.5}}),
              (std::vector<int>{1, 0, 2}));
}

// After the augmentation the price of a column is (v + d) - least. v + (d - least) may differ in
// the last digit, which leads to another assignment where costs are nearly tied.
TEST(JonkerVolgenant, MovesPricesInTheOrderOfTheSum) {
    const Costs C = {{F, F, F, 1.02, 1.0, 1.03, F, F, F, F, 1.02},
                     {F, F, F, F, F, F, F, 1.03, F, F, F},
                     {F, 1.0, F, F, 1.03, F, F, 1.0, 1.03, F, 1.01},
                     {F, 1.02, F, 1.03, 1.01, F, F, F, F, F, F},
                     {1.0, F, 1.03, 1.01, F, 1.0, F, 1.01, F, 1.01, 1.01},
                     {F, 1.0, 1.0, F, F, 1.01, F, F, F, F, 1.0},
                     {F, F, 1.03, 1.01, F, F, F, 1.0, 1.02, 1.01, 1.03},
                     {1.0, F, F, 1.01, F, 1.02, 1.0, F, F, F, F},
                     {F, F, F, 1.01, F, F, 1.01, F, F, 1.01, F},
                     {F, F, 1.0, F, 1.02, 1.01, F, 1.03, 1.0, F, 1.01},
                     {F, F, F, F, F, F, F, 1.02, F, F, F}};
    EXPECT_EQ(solve(C), (std::vector<int>{4, 5, 10, 1, 0, 2, 3, 6, 9, 8, 7}));
    EXPECT_EQ(solve(C), solveLiterally(C).columnOfRow);
}

TEST(JonkerVolgenant, TakesForbiddenPairsWhereNothingElseIsLeft) {
    const Costs C = {{1.0, forbiddenCost, forbiddenCost},
                     {2.0, forbiddenCost, forbiddenCost},
                     {forbiddenCost, forbiddenCost, forbiddenCost}};
    const std::vector<int> columnOf = solve(C);
    EXPECT_EQ(columnOf[0], 0);
    EXPECT_EQ(columnOf, solveLiterally(C).columnOfRow);
}

TEST(JonkerVolgenant, TreatsCostsThatAreNotFiniteAsForbidden) {
    EXPECT_EQ(solve({{nan, 1.0}, {2.0, 9998.0}}), (std::vector<int>{1, 0}));
    EXPECT_EQ(solve({{infinite, 1.0}, {9998.0, 2.0}}), (std::vector<int>{1, 0}));
    // Infinite costs are forbidden; they are neither best nor worst.
    EXPECT_EQ(solve({{-infinite, 1.0}, {1.0, 1.0}}), (std::vector<int>{1, 0}));
    EXPECT_EQ(solve({{infinite, 20000.0}, {20000.0, infinite}}), (std::vector<int>{0, 1}));
}

// A sum of finite costs that overflows does not make them forbidden.
TEST(JonkerVolgenant, TakesHugeCostsForFinite) {
    EXPECT_EQ(solve({{1e308, 1.0}, {1.0, 1e308}}), (std::vector<int>{1, 0}));
    EXPECT_EQ(solve({{1e308, 1.1e308}, {1e308, 1.3e308}}), (std::vector<int>{1, 0}));
    EXPECT_EQ(solve({{nan, 1.1e308}, {1e308, 1e308}}), (std::vector<int>{0, 1}));
}

TEST(JonkerVolgenant, PadsShortAndMissingRowsWithForbiddenPairs) {
    JonkerVolgenant solver;
    const std::vector<double> first = {5.0, 1.0};
    const std::vector<double> second = {4.0, nan};
    solver.start(4);
    solver.setRow(0, first.data(), 2);
    solver.setRow(2, second.data(), 2);
    const std::vector<int> columnOf = solver.solve();
    EXPECT_EQ(columnOf[0], 1);
    EXPECT_EQ(columnOf[2], 0);
}

TEST(JonkerVolgenant, ReadsSparseRowsLikeFullOnes) {
    RandomEstimates random(14);
    JonkerVolgenant solver;
    for (int k = 0; k < 50; ++k) {
        const Costs C = makeGated(random, 3 + k % 20, 0.3);
        Veskar::SparseCosts cells;
        solver.start(C.size());
        for (std::size_t i = 0; i < C.size(); ++i) {
            cells.addRow(C[i].data(), C[i].size());
        }
        for (std::size_t i = 0; i < C.size(); ++i) {
            solver.setRow(i, cells.row(i));
        }
        ASSERT_EQ(solver.solve(), solveLiterally(C).columnOfRow);
    }
    Veskar::SparseCosts notFinite;
    notFinite.add(0, nan);
    notFinite.add(1, 1.0);
    notFinite.endRows(1);
    solver.start(2);
    solver.setRow(0, notFinite.row(0));
    EXPECT_EQ(solver.solve(), (std::vector<int>{1, 0}));
}

TEST(JonkerVolgenant, ForgetsTheProblemBefore) {
    RandomEstimates random(15);
    JonkerVolgenant solver;
    for (const int n : {30, 5, 31, 1, 12}) {
        const Costs C = makeGated(random, n, 0.4);
        ASSERT_EQ(solve(solver, C), solve(C));
        ASSERT_EQ(solve(solver, C), solve(C));
    }
}

TEST(JonkerVolgenant, DoesNotAllocateOnceWarm) {
    RandomEstimates random(16);
    JonkerVolgenant solver;
    Costs C = makeGated(random, 60, 0.3);
    C[3][4] = nan;
    const auto solveOnce = [&] {
        solver.start(C.size());
        for (std::size_t i = 0; i < C.size(); ++i) {
            solver.setRow(i, C[i].data(), C[i].size());
        }
        return solver.solve()[0];
    };
    solveOnce();
    const AllocationScope allocations;
    solveOnce();
    EXPECT_EQ(allocations.count(), 0u);
}

// The smallest problem whose row reduction repeats its state: at 9999 the prices no longer change.
TEST(JonkerVolgenant, EndsWhereAPriceDoesNotMove) {
    const Costs C = {
        {0.0, 1.2000000000000002, 0.6000000000000001}, {0.4, 1.6, 1.8}, {1.5, 1.5, 0.9}};
    const std::vector<int> columnOf = solve(C);
    EXPECT_DOUBLE_EQ(totalCost(C, columnOf), leastTotalCost(C));
    EXPECT_EQ(columnOf, solveLiterally(C).columnOfRow);
    EXPECT_TRUE(solveLiterally(C).endingRuleUsed);
}

// Eleven rows compete for ten columns at nearly equal costs: in steps of about 1e-4 the prices
// would reach the forbidden cost only after 1e8 steps.
TEST(JonkerVolgenant, EndsAPriceWar) {
    RandomEstimates random(17);
    JonkerVolgenant solver;
    for (const double step : {1e-4, 1e-8, 1e-12}) {
        const Costs C = makePriceWar(random, 12, step);
        const LiteralSolution expected = solveLiterally(C);
        ASSERT_TRUE(expected.endingRuleUsed);
        ASSERT_LE(expected.longestPass, 4 * 12 + 100 + 12);
        EXPECT_EQ(solve(solver, C), expected.columnOfRow);
    }
}

TEST(JonkerVolgenant, ReachesTheOptimumWhereTheEndingRulesAct) {
    RandomEstimates random(18);
    int acted = 0;
    for (int k = 0; k < 200; ++k) {
        const Costs C = makePriceWar(random, 5 + k % 3, std::pow(10.0, -1 - k % 12));
        acted += solveLiterally(C).endingRuleUsed ? 1 : 0;
        ASSERT_NEAR(totalCost(C, solve(C)), leastTotalCost(C), 1e-9);
    }
    EXPECT_GT(acted, 100);
}

// Sums and differences overflow here; every row must still get a column.
TEST(JonkerVolgenant, EndsOnHugeCosts) {
    RandomEstimates random(19);
    const double numbers[] = {1e308, -1e308, 1e300, -1e300, 1.7e308, -1.7e308, 5e-324, 0.0, 1.0};
    for (int k = 0; k < 300; ++k) {
        const int n = 1 + k % 24;
        Costs C(n, std::vector<double>(n));
        for (auto& row : C) {
            for (double& c : row) {
                c = numbers[random.integer(0, 8)];
            }
        }
        std::vector<int> columnOf = solve(C);
        std::sort(columnOf.begin(), columnOf.end());
        for (int j = 0; j < n; ++j) {
            ASSERT_EQ(columnOf[j], j);
        }
    }
}

}  // namespace
