// SPDX-License-Identifier: Apache-2.0
#include "assignment/AssignmentSolver.h"

#include <algorithm>
#include <array>
#include <stdexcept>

namespace Veskar {
namespace {

constexpr std::size_t maxSize = 512;

/// Up to this size the dense solver is as quick as the search for cells in a matrix.
constexpr std::size_t smallSize = 16;

// Both solvers give the same pairs; which one is quicker was measured (bench/assignment).

/// Whether rows or columns to spare keep the dense solver busy: the rows or columns that square the
/// matrix compete for forbidden pairs.
bool isOblong(std::size_t rowCount, std::size_t colCount) {
    return rowCount > colCount || 5 * rowCount <= 4 * colCount;
}

/// Whether the sparse solver is the quicker one for cells that have been found: where they are few,
/// and where some rows or columns get none, for each of which the dense solver takes a search.
bool isSparse(const SparseCosts& costs, std::size_t colCount) {
    const std::size_t rowCount = costs.rowCount();
    return 5 * costs.cellCount() <= rowCount * colCount || rowCount != colCount ||
           costs.hasEmptyRow();
}

/// Whether the sparse solver is the quicker one even though the cells have to be found in a matrix,
/// which the dense solver reads as it is.
///
/// @param complete whether every row has a cell
bool isSparseMatrix(std::size_t cellCount, std::size_t rowCount, std::size_t colCount,
                    bool complete) {
    constexpr std::size_t cellsPerRow = 4;
    constexpr std::size_t spareRows = 8;  // the first rows may have more of them
    return complete ? cellCount <= cellsPerRow * (rowCount + spareRows)
                    : 2 * cellCount <= colCount * colCount;
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
    if (isSparse(costs, colCount) && unique_.solve(costs, colCount)) {
        return unique_.columns();
    }
    const std::size_t rowCount = costs.rowCount();
    dense_.start(std::max(rowCount, colCount));
    for (std::size_t i = 0; i < rowCount; ++i) {
        dense_.setRow(i, costs.row(i));
    }
    return dense_.solve();
}

const std::vector<int>& AssignmentSolver::solve(const CostMatrix& cost,
                                                const AllowedMatrix& allowed, std::size_t rowCount,
                                                std::size_t colCount) {
    if (gatherCells(cost, rowCount, colCount) &&
        unique_.solve(cells_, std::max(rowCount, colCount))) {
        const bool exchanged = rowCount > colCount;
        const std::vector<int>& columnOf = exchanged ? unique_.rows() : unique_.columns();
        const std::vector<int>& rowOf = exchanged ? unique_.columns() : unique_.rows();
        if (!leavesAllowedPair(allowed, columnOf, rowOf)) {
            return columnOf;
        }
    }
    dense_.start(std::max(cost.size(), cost[0].size()));
    for (std::size_t i = 0; i < rowCount; ++i) {
        dense_.setRow(i, firstCosts(cost[i], colCount), colCount);
    }
    return dense_.solve();
}

/// Reads the cells of a matrix; if it has more rows than columns, with those exchanged.
/// @return whether they are for the sparse solver
bool AssignmentSolver::gatherCells(const CostMatrix& cost, std::size_t rowCount,
                                   std::size_t colCount) {
    cells_.clear();
    if (rowCount > colCount) {
        transpose(cost, rowCount, colCount);
        for (std::size_t j = 0; j < colCount; ++j) {
            cells_.addRow(&exchanged_[j * rowCount], rowCount);
        }
        return true;
    }
    const bool oblong = isOblong(rowCount, colCount);
    if (!oblong && colCount <= smallSize) {
        return false;
    }
    bool complete = rowCount == colCount;
    for (std::size_t i = 0; i < rowCount; ++i) {
        cells_.addRow(firstCosts(cost[i], colCount), colCount);
        complete = complete && !cells_.row(i).empty();
        if (!oblong && !isSparseMatrix(cells_.cellCount(), i + 1, colCount, complete)) {
            return false;
        }
    }
    return !complete || colCount > 2 * smallSize;
}

void AssignmentSolver::transpose(const CostMatrix& cost, std::size_t rowCount,
                                 std::size_t colCount) {
    exchanged_.resize(std::max(exchanged_.size(), rowCount * colCount));
    double* out = exchanged_.data();
    constexpr std::size_t blockSize = 8;  // of rows, so that whole cache lines are written
    const std::size_t blockEnd = colCount < blockSize ? 0 : rowCount - rowCount % blockSize;
    std::size_t i = 0;
    for (; i < blockEnd; i += blockSize) {
        std::array<const double*, blockSize> from = {};
        for (std::size_t k = 0; k < blockSize; ++k) {
            from[k] = firstCosts(cost[i + k], colCount);
        }
        for (std::size_t j = 0; j < colCount; ++j) {
            double* to = out + j * rowCount + i;
            for (std::size_t k = 0; k < blockSize; ++k) {
                to[k] = from[k][j];
            }
        }
    }
    for (; i < rowCount; ++i) {
        const double* from = firstCosts(cost[i], colCount);
        for (std::size_t j = 0; j < colCount; ++j) {
            out[j * rowCount + i] = from[j];
        }
    }
}

/// Whether an allowed pair could be one of those at the forbidden cost with which the dense solver
/// completes the unique assignment. Those are not unique.
bool AssignmentSolver::leavesAllowedPair(const AllowedMatrix& allowed,
                                         const std::vector<int>& columnOf,
                                         const std::vector<int>& rowOf) {
    const std::size_t colCount = rowOf.size();
    if (std::find(rowOf.begin(), rowOf.end(), -1) == rowOf.end()) {
        return false;
    }
    for (std::size_t i = 0; i < columnOf.size(); ++i) {
        if (columnOf[i] >= 0) {
            continue;
        }
        if (i >= allowed.size() || allowed[i].size() < colCount) {
            return true;
        }
        for (std::size_t j = 0; j < colCount; ++j) {
            if (allowed[i][j] && rowOf[j] < 0) {
                return true;
            }
        }
    }
    return false;
}

}  // namespace Veskar
