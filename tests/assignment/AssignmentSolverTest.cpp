// SPDX-License-Identifier: Apache-2.0
#include "assignment/AssignmentSolver.h"
#include "assignment/LiteralSolver.h"
#include "assignment/Problems.h"
#include "support/AllocationCounter.h"
#include "support/Constants.h"

#include <cmath>
#include <stdexcept>
#include <string>
#include <utility>

#include <gtest/gtest.h>

using namespace VeskarTest;
using Veskar::AssignmentSolver;
using Veskar::SparseCosts;

namespace {

using VeskarTest::F;

Pairs solve(AssignmentSolver& solver, const Costs& cost, const Allowed& allowed) {
    const std::size_t cols = cost[0].size();
    const std::vector<int>& columnOf = solver.solve(cost, allowed, cost.size(), cols);
    Pairs pairs;
    for (std::size_t i = 0; i < cost.size(); ++i) {
        const int j = columnOf[i];
        if (j >= 0 && j < static_cast<int>(cols) && allowed[i][j]) {
            pairs.emplace_back(i, j);
        }
    }
    return pairs;
}

Allowed allowedOf(const Costs& cost) {
    Allowed allowed;
    for (const auto& row : cost) {
        allowed.emplace_back();
        for (const double c : row) {
            allowed.back().push_back(c != F && std::isfinite(c));
        }
    }
    return allowed;
}

Costs makeRectangle(RandomEstimates& random, int rows, int cols, double density) {
    Costs cost = makeGated(random, std::max(rows, cols), density);
    cost.resize(rows);
    for (auto& row : cost) {
        row.resize(cols);
    }
    return cost;
}

Pairs solveCells(AssignmentSolver& solver, const Costs& cost) {
    SparseCosts cells;
    for (const auto& row : cost) {
        cells.addRow(row.data(), row.size());
    }
    const std::vector<int>& columnOf = solver.solve(cells, cost[0].size());
    Pairs pairs;
    for (std::size_t i = 0; i < cost.size(); ++i) {
        if (cells.find(i, columnOf[i]) != nullptr) {
            pairs.emplace_back(i, columnOf[i]);
        }
    }
    return pairs;
}

/// Solves the problem both ways and expects the literal pairs.
void expectLiteralPairs(AssignmentSolver& solver, const Costs& cost) {
    const Allowed allowed = allowedOf(cost);
    const Pairs expected = runLiterally(static_cast<int>(cost.size()),
                                        static_cast<int>(cost[0].size()), cost, allowed);
    EXPECT_EQ(solve(solver, cost, allowed), expected);
    EXPECT_EQ(solveCells(solver, cost), expected);
}

TEST(AssignmentSolver, GivesTheLiteralPairsWhateverWayItTakes) {
    RandomEstimates random(31);
    AssignmentSolver solver;
    for (int k = 0; k < 4000 && !HasFailure(); ++k) {
        SCOPED_TRACE("problem " + std::to_string(k));
        const int large = k % 100 == 0 ? random.integer(60, 140) : random.integer(1, 48);
        const int small = std::max(1, static_cast<int>(large * random.uniform(0.1, 1.0)));
        const int shape = random.integer(0, 2);
        expectLiteralPairs(solver,
                           makeAny(random, shape == 1 ? small : large, shape == 2 ? small : large));
    }
}

// The literal algorithm takes long for these: one of each shape.
TEST(AssignmentSolver, GivesTheLiteralPairsOfLargeProblems) {
    RandomEstimates random(34);
    AssignmentSolver solver;
    for (const auto& [rows, cols] : {std::pair(200, 200), std::pair(30, 220), std::pair(220, 30),
                                     std::pair(190, 200), std::pair(200, 190)}) {
        SCOPED_TRACE(std::to_string(rows) + " rows");
        for (const double density : {1.0, 0.1, 0.02}) {
            expectLiteralPairs(solver, makeRectangle(random, rows, cols, density));
        }
    }
}

// Allowed pairs at the forbidden cost may complete the unique assignment; which ones do depends on
// the scan orders.
TEST(AssignmentSolver, GivesTheLiteralPairsWhereForbiddenCostsAreAllowed) {
    RandomEstimates random(32);
    AssignmentSolver solver;
    for (int k = 0; k < 1000; ++k) {
        const int n = random.integer(9, 40);
        const Costs cost = makeGated(random, n, 1.0 / n);
        Allowed allowed = allowedOf(cost);
        for (int extra = random.integer(1, k % 2 == 0 ? n : 3); extra > 0; --extra) {
            allowed[random.integer(0, n - 1)][random.integer(0, n - 1)] = true;
        }
        ASSERT_EQ(solve(solver, cost, allowed), runLiterally(n, n, cost, allowed)) << k;
    }
}

TEST(AssignmentSolver, LeavesAllowedMatricesThatAreTooSmallToTheCaller) {
    RandomEstimates random(33);
    AssignmentSolver solver;
    const Costs cost = makeGated(random, 20, 0.03);
    const std::vector<int> expected = solveLiterally(cost).columnOfRow;
    EXPECT_EQ(solver.solve(cost, {}, 20, 20), expected);
    EXPECT_EQ(solver.solve(cost, Allowed(20), 20, 20), expected);
}

TEST(AssignmentSolver, DoesNotAllocateOnceWarm) {
    RandomEstimates random(35);
    AssignmentSolver solver;
    for (const auto& [rows, cols] : {std::pair(40, 40), std::pair(9, 60), std::pair(60, 9)}) {
        for (const double density : {1.0, 0.06}) {
            const Costs cost = makeRectangle(random, rows, cols, density);
            const Allowed allowed = allowedOf(cost);
            const auto solveOnce = [&] {
                return solver.solve(cost, allowed, cost.size(), cost[0].size())[0];
            };
            solveOnce();
            const AllocationScope allocations;
            solveOnce();
            EXPECT_EQ(allocations.count(), 0u) << rows << " rows, density " << density;
        }
    }
}

TEST(AssignmentSolver, RefusesMoreThan512) {
    EXPECT_NO_THROW(AssignmentSolver::refuseTooBig(512));
    try {
        AssignmentSolver::refuseTooBig(513);
        FAIL();
    } catch (const std::runtime_error& e) {
        EXPECT_STREQ(e.what(), "One of the JVA costMatrix dimensions was too big (>512)");
    }
}

}  // namespace
