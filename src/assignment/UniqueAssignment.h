// SPDX-License-Identifier: Apache-2.0
// Solves sparse assignment problems whose optimum is provably unique.
#pragma once

#include "assignment/IntIndexed.h"
#include "assignment/SparseCosts.h"
#include "assignment/UniquenessProof.h"

#include <cstddef>
#include <vector>

namespace Veskar {

/// Finds the cheapest assignment of a sparse cost matrix, when it can prove that every other one is
/// clearly worse.
///
/// Any exact solver then gives the same pairs, and this one looks at the cells alone instead of the
/// whole matrix: shortest augmenting paths with a heap, in which a row may also stay without a cell
/// at the forbidden cost.
///
/// Memory is kept from problem to problem.
class UniqueAssignment {
public:
    /// @param costs the problem
    /// @param colCount number of columns
    /// @return whether the solution is proven; otherwise there is none
    bool solve(const SparseCosts& costs, std::size_t colCount);

    /// @return after a success: the column of each row, -1 for a row that gets no cell
    const std::vector<int>& columns() const {
        return isTransposed_ ? solution_.rowOf : solution_.columnOf;
    }
    /// @return after a success: the row of each column, -1 for a column that no row gets
    const std::vector<int>& rows() const {
        return isTransposed_ ? solution_.columnOf : solution_.rowOf;
    }

private:
    /// A path to a column and its length.
    struct Path {
        double length;
        int col;
        bool operator>(const Path& other) const { return length > other.length; }
    };
    bool solveRows(const SparseCosts& costs, std::size_t colCount);
    void start(std::size_t rowCount, std::size_t colCount, std::size_t cellCount);
    void startSearches(std::size_t colCount);
    void spend(const SparseCosts::Row& cells);
    bool hasManyTies() const;
    bool takeFreeMinima(const SparseCosts& costs);
    bool assignFreeRows(const SparseCosts& costs, std::size_t colCount);
    void displaceAll(const SparseCosts& costs);
    int displace(const SparseCosts& costs, int freeRow);
    bool augment(const SparseCosts& costs, int freeRow);
    void relax(const SparseCosts& costs, int row, double length);
    int popNearest();
    void changePrices(int freeRow, double length);
    void flip(int col);

    SparseCosts transposed_;
    bool isTransposed_ = false;  ///< whether rows and columns are exchanged in the solution
    PricedAssignment solution_;
    UniquenessProof proof_;
    std::vector<int> freeRows_;      ///< rows whose best column went to another one
    IntIndexed<double> pathLength_;  ///< shortest path from the free row to each column
    IntIndexed<int> predecessor_;    ///< row before each column on that path
    IntIndexed<char> scanned_;       ///< whether the shortest path to a column is final
    std::vector<int> reached_;       ///< columns with a path
    std::vector<Path> heap_;         ///< shortest path first
    std::size_t effort_ = 0;         ///< cells that may still be looked at
};

}  // namespace Veskar
