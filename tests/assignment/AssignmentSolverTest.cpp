// SPDX-License-Identifier: Apache-2.0
#include "assignment/AssignmentSolver.h"
#include "assignment/LiteralSolver.h"
#include "assignment/Problems.h"
#include "support/Constants.h"

#include <stdexcept>

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
            allowed.back().push_back(c != F);
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

TEST(AssignmentSolver, GivesTheLiteralPairsWhateverWayItTakes) {
    RandomEstimates random(31);
    AssignmentSolver solver;
    for (int k = 0; k < 600; ++k) {
        const int rows = random.integer(1, 40);
        const int cols = random.integer(1, 40);
        const Costs cost = makeRectangle(random, rows, cols, random.uniform(0.01, 0.6));
        const Allowed allowed = allowedOf(cost);
        const Pairs expected = runLiterally(rows, cols, cost, allowed);
        ASSERT_EQ(solve(solver, cost, allowed), expected) << "problem " << k;

        SparseCosts cells;
        for (const auto& row : cost) {
            cells.addRow(row.data(), row.size());
        }
        Pairs sparse;
        const std::vector<int>& columnOf = solver.solve(cells, cols);
        for (int i = 0; i < rows; ++i) {
            if (cells.find(i, columnOf[i]) != nullptr) {
                sparse.emplace_back(i, columnOf[i]);
            }
        }
        ASSERT_EQ(sparse, expected) << "problem " << k;
    }
}

// Allowed pairs at the forbidden cost may complete the unique assignment; which ones do depends on
// the scan orders.
TEST(AssignmentSolver, GivesTheLiteralPairsWhereForbiddenCostsAreAllowed) {
    RandomEstimates random(32);
    AssignmentSolver solver;
    for (int k = 0; k < 300; ++k) {
        const int n = random.integer(9, 30);
        const Costs cost = makeGated(random, n, 1.0 / n);
        Allowed allowed = allowedOf(cost);
        for (int extra = random.integer(1, n); extra > 0; --extra) {
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
