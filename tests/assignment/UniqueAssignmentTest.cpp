// SPDX-License-Identifier: Apache-2.0
#include "assignment/LiteralSolver.h"
#include "assignment/Problems.h"
#include "assignment/UniqueAssignment.h"
#include "support/AllocationCounter.h"
#include "support/Constants.h"

#include <limits>

#include <gtest/gtest.h>

using namespace VeskarTest;
using Veskar::SparseCosts;
using Veskar::UniqueAssignment;

namespace {

using VeskarTest::F;

SparseCosts cellsOf(const Costs& C) {
    SparseCosts costs;
    for (const auto& row : C) {
        costs.addRow(row.data(), row.size());
    }
    return costs;
}

bool isUnique(const Costs& C) {
    UniqueAssignment solver;
    return solver.solve(cellsOf(C), C[0].size());
}

std::vector<int> solveUnique(const Costs& C) {
    UniqueAssignment solver;
    EXPECT_TRUE(solver.solve(cellsOf(C), C[0].size()));
    return solver.columns();
}

/// The literal solution with -1 for rows that get a forbidden pair.
std::vector<int> literalColumns(const Costs& C) {
    const std::size_t n = std::max(C.size(), C[0].size());
    Costs square(n, std::vector<double>(n, F));
    for (std::size_t i = 0; i < C.size(); ++i) {
        std::copy(C[i].begin(), C[i].end(), square[i].begin());
    }
    std::vector<int> columnOf = solveLiterally(square).columnOfRow;
    columnOf.resize(C.size());
    for (std::size_t i = 0; i < C.size(); ++i) {
        if (square[i][static_cast<std::size_t>(columnOf[i])] == F) {
            columnOf[i] = -1;
        }
    }
    return columnOf;
}

TEST(UniqueAssignment, AgreesWithTheLiteralAlgorithmWhereverItAnswers) {
    RandomEstimates random(21);
    UniqueAssignment solver;
    int answered = 0;
    for (int k = 0; k < 2000; ++k) {
        const auto rows = static_cast<std::size_t>(random.integer(1, 25));
        const auto cols = static_cast<std::size_t>(random.integer(1, 25));
        Costs C =
            makeGated(random, static_cast<int>(std::max(rows, cols)), random.uniform(0.02, 0.4));
        C.resize(rows);
        for (auto& row : C) {
            row.resize(cols);
        }
        if (solver.solve(cellsOf(C), cols)) {
            ++answered;
            ASSERT_EQ(solver.columns(), literalColumns(C)) << "problem " << k;
        }
    }
    EXPECT_GT(answered, 1900);
}

// Costs that are a few steps around ties: answers must be right on both sides of the margin.
TEST(UniqueAssignment, AgreesOnNearTiesWhereverItAnswers) {
    RandomEstimates random(22);
    UniqueAssignment solver;
    int answered = 0;
    int refused = 0;
    for (int k = 0; k < 2000; ++k) {
        const double step = std::pow(10.0, random.uniform(-13.0, -3.0));
        Costs C = makeGated(random, random.integer(2, 14), 0.3);
        for (auto& row : C) {
            for (double& c : row) {
                c = c == F ? F : 1.0 + step * random.integer(0, 6);
            }
        }
        if (solver.solve(cellsOf(C), C.size())) {
            ++answered;
            ASSERT_EQ(solver.columns(), literalColumns(C)) << "problem " << k;
        } else {
            ++refused;
        }
    }
    EXPECT_GT(answered, 100);
    EXPECT_GT(refused, 100);
}

TEST(UniqueAssignment, LeavesOutTheRowThatCostsLeast) {
    EXPECT_EQ(solveUnique({{1.0, F}, {0.5, F}}), (std::vector<int>{-1, 0}));
    EXPECT_EQ(solveUnique({{1.0, F}, {3.0, 7.0}, {2.0, F}}), (std::vector<int>{0, 1, -1}));
}

TEST(UniqueAssignment, PrefersTwoDearPairsToOneCheapPair) {
    EXPECT_EQ(solveUnique({{0.0, 4999.0}, {4999.0, F}}), (std::vector<int>{1, 0}));
    EXPECT_EQ(solveUnique({{0.0, 5001.0}, {5001.0, F}}), (std::vector<int>{0, -1}));
}

TEST(UniqueAssignment, AnswersProblemsWithoutCells) {
    EXPECT_EQ(solveUnique({{F, F}, {F, F}, {F, F}}), (std::vector<int>{-1, -1, -1}));
}

TEST(UniqueAssignment, RefusesTies) {
    EXPECT_FALSE(isUnique({{1.0, 1.0}, {F, F}}));      // either column
    EXPECT_FALSE(isUnique({{1.0}, {1.0}}));            // either row
    EXPECT_FALSE(isUnique({{1.0, 2.0}, {2.0, 3.0}}));  // both diagonals
    EXPECT_FALSE(isUnique({{1.0, 1.0, F}, {F, 1.0, 1.0}, {1.0, F, 1.0}}));
    EXPECT_FALSE(isUnique({{0.0, 4999.5}, {4999.5, F}}));  // two pairs or one
    EXPECT_TRUE(isUnique({{1.0, 2.0}, {2.5, 3.0}}));
}

TEST(UniqueAssignment, RefusesWhatIsWithinTheMargin) {
    const double margin = Veskar::UniquenessProof::clearMargin;
    EXPECT_FALSE(isUnique({{1.0, 1.0 + 0.9 * margin}}));
    EXPECT_TRUE(isUnique({{1.0, 1.0 + 1.1 * margin}}));
    EXPECT_FALSE(isUnique({{1.0}, {1.0 + 0.9 * margin}}));
    EXPECT_TRUE(isUnique({{1.0}, {1.0 + 1.1 * margin}}));
    EXPECT_FALSE(isUnique({{F - 0.9 * margin}}));
    EXPECT_TRUE(isUnique({{F - 1.1 * margin}}));
}

TEST(UniqueAssignment, RefusesCostsBeyondTheForbiddenOne) {
    EXPECT_FALSE(isUnique({{10000.0}}));
    EXPECT_FALSE(isUnique({{-10000.0}}));
    EXPECT_TRUE(isUnique({{-9999.0}}));
    SparseCosts costs;
    costs.add(0, std::numeric_limits<double>::quiet_NaN());
    costs.endRows(1);
    EXPECT_FALSE(UniqueAssignment().solve(costs, 1));
}

// Rows that stand close together beside a line of columns: each takes the nearest column and moves
// all others on, so that the effort of the searches grows faster than the problem.
TEST(UniqueAssignment, GivesUpWhereThatTakesTooLong) {
    const auto isSolved = [](int size) {
        SparseCosts costs;
        for (int i = 0; i < size; ++i) {
            for (int j = 0; j < size; ++j) {
                const double distance = 0.011 * i - j;
                costs.add(static_cast<std::size_t>(j), 0.01 * distance * distance);
            }
            costs.endRow();
        }
        return UniqueAssignment().solve(costs, static_cast<std::size_t>(size));
    };
    EXPECT_TRUE(isSolved(4));
    EXPECT_FALSE(isSolved(300));
}

// Of a problem with more rows than columns the columns are assigned.
TEST(UniqueAssignment, AnswersProblemsWithMoreRowsThanColumns) {
    UniqueAssignment solver;
    const Costs C = {{1.0, F}, {3.0, 7.0}, {2.0, F}, {F, F}};
    ASSERT_TRUE(solver.solve(cellsOf(C), 2));
    EXPECT_EQ(solver.columns(), (std::vector<int>{0, 1, -1, -1}));
    EXPECT_EQ(solver.rows(), (std::vector<int>{0, 1}));
    EXPECT_FALSE(solver.solve(cellsOf({{1.0}, {1.0}, {2.0}}), 1));
    ASSERT_TRUE(solver.solve(cellsOf({{1.0, 2.0, F}}), 3));
    EXPECT_EQ(solver.columns(), (std::vector<int>{0}));
    EXPECT_EQ(solver.rows(), (std::vector<int>{0, -1, -1}));
}

TEST(UniqueAssignment, DoesNotAllocateOnceWarm) {
    RandomEstimates random(24);
    const Costs C = makeGated(random, 60, 0.04);
    const Costs tall = makeAny(random, 60, 20);
    const SparseCosts costs = cellsOf(C);
    const SparseCosts tallCosts = cellsOf(tall);
    UniqueAssignment solver;
    EXPECT_TRUE(solver.solve(costs, 60));
    solver.solve(tallCosts, 20);
    const AllocationScope allocations;
    EXPECT_TRUE(solver.solve(costs, 60));
    solver.solve(tallCosts, 20);
    EXPECT_EQ(allocations.count(), 0u);
}

}  // namespace
