// SPDX-License-Identifier: Apache-2.0
#include "assignment/AssignmentSolver.h"

#include <algorithm>
#include <stdexcept>

namespace Veskar {
namespace {

constexpr std::size_t maxSize = 512;

/// The largest number of cells for which the sparse solver is tried; beyond it is seldom faster.
std::size_t sparseLimit(std::size_t rowCount, std::size_t colCount) {
    constexpr std::size_t smallSize = 8;
    constexpr std::size_t cellsPerLine = 8;
    const std::size_t size = std::max(rowCount, colCount);
    return size <= smallSize ? 0 : std::min(cellsPerLine * size, size * size / 8);
}

/// @return the first costs of a row; a row that has fewer stops the process
const double* firstCosts(const std::vector<double>& row, std::size_t count) {
    return &row[count - 1] - (count - 1);
}

}  // namespace

void AssignmentSolver::refuseTooBig(std::size_t size) {
    if (size > maxSize) {
        throw std::runtime_error("One of the JVA costMatrix dimensions was too big (>512)");
    }
}

const std::vector<int>& AssignmentSolver::solve(const SparseCosts& costs, std::size_t colCount) {
    const std::size_t rowCount = costs.rowCount();
    if (costs.cellCount() <= sparseLimit(rowCount, colCount) && unique_.solve(costs, colCount)) {
        return unique_.columns();
    }
    dense_.start(std::max(rowCount, colCount));
    for (std::size_t i = 0; i < rowCount; ++i) {
        dense_.setRow(i, costs.row(i));
    }
    return dense_.solve();
}

const std::vector<int>& AssignmentSolver::solve(const CostMatrix& cost,
                                                const AllowedMatrix& allowed, std::size_t rowCount,
                                                std::size_t colCount) {
    if (gatherCells(cost, rowCount, colCount) && unique_.solve(cells_, colCount) &&
        !leavesAllowedPair(allowed)) {
        return unique_.columns();
    }
    dense_.start(std::max(cost.size(), cost[0].size()));
    for (std::size_t i = 0; i < rowCount; ++i) {
        dense_.setRow(i, firstCosts(cost[i], colCount), colCount);
    }
    return dense_.solve();
}

/// @return whether they are few enough for the sparse solver
bool AssignmentSolver::gatherCells(const CostMatrix& cost, std::size_t rowCount,
                                   std::size_t colCount) {
    const std::size_t limit = sparseLimit(rowCount, colCount);
    cells_.clear();
    for (std::size_t i = 0; i < rowCount; ++i) {
        cells_.addRow(firstCosts(cost[i], colCount), colCount);
        if (cells_.cellCount() > limit) {
            return false;
        }
    }
    return true;
}

/// Whether an allowed pair could be one of those at the forbidden cost with which the dense solver
/// completes the unique assignment. Those are not unique.
bool AssignmentSolver::leavesAllowedPair(const AllowedMatrix& allowed) const {
    const std::vector<int>& columnOf = unique_.columns();
    const std::size_t colCount = unique_.colCount();
    for (std::size_t i = 0; i < columnOf.size(); ++i) {
        if (columnOf[i] >= 0) {
            continue;
        }
        if (i >= allowed.size() || allowed[i].size() < colCount) {
            return true;
        }
        for (std::size_t j = 0; j < colCount; ++j) {
            if (allowed[i][j] && !unique_.usesColumn(j)) {
                return true;
            }
        }
    }
    return false;
}

}  // namespace Veskar
