// SPDX-License-Identifier: Apache-2.0
// The assignment solvers with any costs: one column per row, allowed pairs only, and never a worse
// total than the optimum by an independent algorithm, dynamic programming over subsets of columns.
#include <veskar/TrackAssociator.h>

#include "assignment/AssignmentSolver.h"
#include "support/Require.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <vector>

#include <fuzzer/FuzzedDataProvider.h>

using namespace VeskarFuzz;
using Veskar::forbiddenCost;

namespace {

using Costs = std::vector<std::vector<double>>;
using Allowed = std::vector<std::vector<bool>>;

struct Problem {
    Costs cost;
    Allowed allowed;
    std::size_t cols = 0;
};

/// The cost of an allowed pair: on a coarse grid, where ties are likely, or any value, or not
/// finite.
double readCost(FuzzedDataProvider& bytes) {
    const auto choice = bytes.ConsumeIntegral<std::uint8_t>();
    if (choice < 160) {
        return choice % 10;
    }
    if (choice < 250) {
        return bytes.ConsumeFloatingPointInRange(0.0, 20.0);
    }
    return choice % 2 == 0 ? std::numeric_limits<double>::quiet_NaN()
                           : std::numeric_limits<double>::infinity();
}

Problem readProblem(FuzzedDataProvider& bytes) {
    Problem problem;
    const auto rows = bytes.ConsumeIntegralInRange<std::size_t>(1, 11);
    problem.cols = bytes.ConsumeIntegralInRange<std::size_t>(1, 8);  // 2^8 subsets are fast
    const auto density = bytes.ConsumeIntegral<std::uint8_t>();
    for (std::size_t i = 0; i < rows; ++i) {
        problem.cost.emplace_back(problem.cols, forbiddenCost);
        problem.allowed.emplace_back(problem.cols, false);
        for (std::size_t j = 0; j < problem.cols; ++j) {
            if (bytes.ConsumeIntegral<std::uint8_t>() <= density) {
                problem.cost[i][j] = readCost(bytes);
                // Costs that are not finite count as forbidden.
                problem.allowed[i][j] = std::isfinite(problem.cost[i][j]);
            }
        }
    }
    return problem;
}

/// The least total over the rows; a row without an allowed pair has the forbidden cost.
double leastTotal(const Problem& problem) {
    const std::size_t subsets = std::size_t{1} << problem.cols;
    std::vector<double> best(subsets, 0.0);
    for (std::size_t i = 0; i < problem.cost.size(); ++i) {
        std::vector<double> next(subsets, std::numeric_limits<double>::infinity());
        for (std::size_t taken = 0; taken < subsets; ++taken) {
            next[taken] = std::min(next[taken], best[taken] + forbiddenCost);
            for (std::size_t j = 0; j < problem.cols; ++j) {
                const std::size_t bit = std::size_t{1} << j;
                if (problem.allowed[i][j] && (taken & bit) != 0) {
                    next[taken] = std::min(next[taken], best[taken & ~bit] + problem.cost[i][j]);
                }
            }
        }
        best = next;
    }
    return best.back();
}

/// @param columnOf a column for each row; forbidden ones are ignored
void requireOptimum(const Problem& problem, const std::vector<int>& columnOf) {
    std::vector<bool> taken(problem.cols, false);
    double total = 0.0;
    for (std::size_t i = 0; i < problem.cost.size(); ++i) {
        const int col = columnOf[i];
        if (col < 0 || col >= static_cast<int>(problem.cols) ||
            !problem.allowed[i][static_cast<std::size_t>(col)]) {
            total += forbiddenCost;
            continue;
        }
        const auto j = static_cast<std::size_t>(col);
        require(!taken[j], "no column is taken twice");
        taken[j] = true;
        total += problem.cost[i][j];
    }
    require(std::abs(total - leastTotal(problem)) <= 1e-6, "no assignment is cheaper");
}

std::vector<int> solveAsMatrix(const Problem& problem) {
    Veskar::TrackAssociator associator((Veskar::Config()));
    Problem copy = problem;
    associator.runJVA(static_cast<int>(problem.cost.size()), static_cast<int>(problem.cols),
                      copy.cost, copy.allowed);
    std::vector<int> columnOf(problem.cost.size(), -1);
    for (const auto& [row, col] : associator.getAssociations()) {
        require(columnOf.at(static_cast<std::size_t>(row)) == -1, "no row is taken twice");
        columnOf[static_cast<std::size_t>(row)] = col;
        require(problem.allowed[static_cast<std::size_t>(row)][static_cast<std::size_t>(col)],
                "pairs are allowed ones");
    }
    return columnOf;
}

std::vector<int> solveAsCells(const Problem& problem) {
    Veskar::SparseCosts cells;
    for (std::size_t i = 0; i < problem.cost.size(); ++i) {
        cells.addRow(problem.cost[i].data(), problem.cols);
    }
    Veskar::AssignmentSolver solver;
    return solver.solve(cells, problem.cols);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzedDataProvider bytes(data, size);
    const Problem problem = readProblem(bytes);
    requireOptimum(problem, solveAsMatrix(problem));
    requireOptimum(problem, solveAsCells(problem));
    return 0;
}
