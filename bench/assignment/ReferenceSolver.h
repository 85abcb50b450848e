// SPDX-License-Identifier: Apache-2.0
// The peer that the assignment solver is measured against.
#pragma once

#include <cstddef>
#include <vector>

namespace VeskarBench {

/// The rectangular assignment problem by shortest augmenting paths as in the textbook (Crouse: "On
/// implementing 2D rectangular assignment algorithms", IEEE Transactions on Aerospace and
/// Electronic Systems 52, 2016, after Jonker, Volgenant 1987): one search over all columns for
/// every row, on a dense matrix, without any further reduction. What widely used numeric libraries
/// do.
class ReferenceSolver {
public:
    /// @param cost pair costs, row after row, as many rows as columns or fewer
    /// @param rowCount number of rows
    /// @param colCount number of columns
    /// @return the column of each row; valid until the next call
    const std::vector<std::size_t>& solve(const double* cost, std::size_t rowCount,
                                          std::size_t colCount);

    /// Solves a matrix of any shape: copies it to contiguous memory, transposed if it has more rows
    /// than columns.
    /// @return the column of each of its rows, or the row of each of its columns if it is
    /// transposed
    const std::vector<std::size_t>& solve(const std::vector<std::vector<double>>& cost);

private:
    std::size_t findShortestPath(const double* cost, std::size_t freeRow);

    std::size_t colCount_ = 0;
    double length_ = 0.0;  ///< of the shortest path found last
    std::vector<double> matrix_;
    std::vector<double> u_;
    std::vector<double> v_;
    std::vector<double> pathLength_;
    std::vector<std::size_t> predecessor_;
    std::vector<std::size_t> columnOf_;
    std::vector<std::size_t> rowOf_;
    std::vector<std::size_t> remaining_;
    std::vector<char> rowScanned_;
    std::vector<char> colScanned_;
};

}  // namespace VeskarBench
