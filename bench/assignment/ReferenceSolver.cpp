// SPDX-License-Identifier: Apache-2.0
#include "assignment/ReferenceSolver.h"

#include <limits>
#include <numeric>
#include <utility>

namespace VeskarBench {
namespace {

constexpr std::size_t none = std::numeric_limits<std::size_t>::max();
constexpr double infinite = std::numeric_limits<double>::infinity();

}  // namespace

const std::vector<std::size_t>& ReferenceSolver::solve(
    const std::vector<std::vector<double>>& cost) {
    const std::size_t rowCount = cost.size();
    const std::size_t colCount = cost[0].size();
    matrix_.resize(rowCount * colCount);
    if (rowCount <= colCount) {
        auto out = matrix_.begin();
        for (const auto& row : cost) {
            out = std::copy(row.begin(), row.end(), out);
        }
        return solve(matrix_.data(), rowCount, colCount);
    }
    for (std::size_t i = 0; i < rowCount; ++i) {
        for (std::size_t j = 0; j < colCount; ++j) {
            matrix_[j * rowCount + i] = cost[i][j];
        }
    }
    return solve(matrix_.data(), colCount, rowCount);
}

const std::vector<std::size_t>& ReferenceSolver::solve(const double* cost, std::size_t rowCount,
                                                       std::size_t colCount) {
    colCount_ = colCount;
    u_.assign(rowCount, 0.0);
    v_.assign(colCount, 0.0);
    pathLength_.resize(colCount);
    predecessor_.assign(colCount, none);
    columnOf_.assign(rowCount, none);
    rowOf_.assign(colCount, none);
    remaining_.resize(colCount);
    rowScanned_.resize(rowCount);
    colScanned_.resize(colCount);
    for (std::size_t freeRow = 0; freeRow < rowCount; ++freeRow) {
        std::size_t col = findShortestPath(cost, freeRow);
        u_[freeRow] += length_;
        for (std::size_t i = 0; i < rowCount; ++i) {
            if (rowScanned_[i] != 0 && i != freeRow) {
                u_[i] += length_ - pathLength_[columnOf_[i]];
            }
        }
        for (std::size_t j = 0; j < colCount; ++j) {
            if (colScanned_[j] != 0) {
                v_[j] -= length_ - pathLength_[j];
            }
        }
        for (std::size_t row = none; row != freeRow;) {
            row = predecessor_[col];
            rowOf_[col] = row;
            std::swap(columnOf_[row], col);
        }
    }
    return columnOf_;
}

/// Dijkstra's search over the reduced costs.
/// @return the free column at the end of the path
std::size_t ReferenceSolver::findShortestPath(const double* cost, std::size_t freeRow) {
    std::fill(pathLength_.begin(), pathLength_.end(), infinite);
    std::fill(rowScanned_.begin(), rowScanned_.end(), 0);
    std::fill(colScanned_.begin(), colScanned_.end(), 0);
    std::iota(remaining_.rbegin(), remaining_.rend(), std::size_t{0});
    std::size_t remainingCount = colCount_;
    length_ = 0.0;
    std::size_t row = freeRow;
    for (;;) {
        rowScanned_[row] = 1;
        const double* costs = cost + row * colCount_;
        std::size_t nearest = none;
        double least = infinite;
        for (std::size_t k = 0; k < remainingCount; ++k) {
            const std::size_t j = remaining_[k];
            const double length = length_ + costs[j] - u_[row] - v_[j];
            if (length < pathLength_[j]) {
                predecessor_[j] = row;
                pathLength_[j] = length;
            }
            if (pathLength_[j] < least || (pathLength_[j] == least && rowOf_[j] == none)) {
                least = pathLength_[j];
                nearest = k;
            }
        }
        length_ = least;
        const std::size_t col = remaining_[nearest];
        colScanned_[col] = 1;
        remaining_[nearest] = remaining_[--remainingCount];
        if (rowOf_[col] == none) {
            return col;
        }
        row = rowOf_[col];
    }
}

}  // namespace VeskarBench
