// SPDX-License-Identifier: Apache-2.0
// Solves an assignment problem the fast way where that is safe.
#pragma once

#include "assignment/JonkerVolgenant.h"
#include "assignment/SparseCosts.h"
#include "assignment/UniqueAssignment.h"

#include <cstddef>
#include <vector>

namespace Veskar {

/// Answers as JonkerVolgenant does on the matrix padded to a square with forbidden pairs. Sparse
/// problems whose optimum is unique beyond doubt are solved on their cells alone.
class AssignmentSolver {
public:
    using CostMatrix = std::vector<std::vector<double>>;
    using AllowedMatrix = std::vector<std::vector<bool>>;

    /// @param size number of rows or columns of a problem
    /// @throw std::runtime_error when it is above 512
    static void refuseTooBig(std::size_t size);

    /// Solves a problem in which exactly the cells are allowed.
    ///
    /// @param costs the problem
    /// @param colCount number of columns
    /// @return a column for each row; one without a cell in that row means unassigned
    const std::vector<int>& solve(const SparseCosts& costs, std::size_t colCount);

    /// Solves a problem given as a matrix.
    ///
    /// @param cost pair costs; further rows and columns enlarge the problem by forbidden pairs
    /// @param allowed pairs that may be assigned
    /// @param rowCount number of leading rows of @p cost to assign
    /// @param colCount number of leading columns of @p cost to assign
    /// @return a column for each of these rows; one that is not allowed means unassigned
    const std::vector<int>& solve(const CostMatrix& cost, const AllowedMatrix& allowed,
                                  std::size_t rowCount, std::size_t colCount);

private:
    bool gatherCells(const CostMatrix& cost, std::size_t rowCount, std::size_t colCount);
    void transpose(const CostMatrix& cost, std::size_t rowCount, std::size_t colCount);
    static bool leavesAllowedPair(const AllowedMatrix& allowed, const std::vector<int>& columnOf,
                                  const std::vector<int>& rowOf);

    SparseCosts cells_;
    std::vector<double> exchanged_;  ///< a matrix with rows and columns exchanged
    UniqueAssignment unique_;
    JonkerVolgenant dense_;
};

}  // namespace Veskar
