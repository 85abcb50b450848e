// SPDX-License-Identifier: Apache-2.0
// Sparse assignment problems whose solution is beyond doubt.
#pragma once

#include "association/SparseCosts.h"

#include <cstddef>
#include <utility>
#include <vector>

namespace Veskar {

/// Finds the cheapest assignment of a sparse cost matrix, when it can prove that every other one is
/// clearly worse.
///
/// Any exact solver then gives the same pairs, whatever it does with ties, and this one looks at
/// the cells alone instead of the whole matrix: shortest augmenting paths with a heap, in which a
/// row may also stay without a cell at the forbidden cost.
///
/// The proof does not depend on how the solution was found. With row prices u <= forbidden and
/// column prices v <= 0 such that u[i] + v[j] <= c[i][j], with equality on the assignment, and
/// u = forbidden for rows and v = 0 for columns that are left over, the cost of any other
/// assignment exceeds the optimum by the sum of what it leaves between both sides of these
/// relations. Where equality nearly holds on no closed chain of moves, every other assignment
/// leaves a clear margin.
///
/// Memory is kept from problem to problem.
class UniqueAssignment {
public:
    /// @param costs the problem
    /// @param colCount number of columns
    /// @return whether the solution is proven; otherwise nothing is known
    bool solve(const SparseCosts& costs, std::size_t colCount);

    /// @return after a success: the column of each row, -1 for a row that gets no cell
    const std::vector<int>& columns() const { return columnOf; }
    /// @return after a success: number of columns
    std::size_t colCount() const { return rowOf.size(); }
    /// @param col a column
    /// @return after a success: whether some row has it
    bool usesColumn(std::size_t col) const { return rowOf[col] >= 0; }

private:
    /// A path to a column and its length.
    struct Path {
        double length;
        int col;
        bool operator>(const Path& other) const { return length > other.length; }
    };
    void start(std::size_t rowCount, std::size_t colCount, std::size_t cellCount);
    bool takeFreeMinima(const SparseCosts& costs);
    int displace(const SparseCosts& costs, int freeRow);
    bool augment(const SparseCosts& costs, int freeRow);
    void relax(const SparseCosts& costs, int row, double length);
    int popNearest();
    void changePrices(int freeRow, double length);
    void flip(int col);
    bool pricesAreOptimal(const SparseCosts& costs);
    bool rowPriceIsOptimal(const SparseCosts::Row& cells, std::size_t row);
    bool columnPricesAreOptimal() const;
    bool hasTightCycle();

    std::vector<double> u;           ///< row prices
    std::vector<double> v;           ///< column prices
    std::vector<int> columnOf;       ///< column of each row or -1
    std::vector<int> rowOf;          ///< row of each column or -1
    std::vector<int> freeRows;       ///< rows whose best column went to another one
    std::vector<double> pathLength;  ///< shortest path from the free row to each column
    std::vector<int> predecessor;    ///< row before each column on that path
    std::vector<char> scanned;       ///< whether the shortest path to a column is final
    std::vector<int> reached;        ///< columns with a path
    std::vector<Path> heap;          ///< shortest path first
    std::size_t effort = 0;          ///< cells that may still be looked at
    /// Moves that cost nearly nothing, row after row: a row goes to the column of the named row,
    /// which has to move on. What is left over counts as one more row: rows leave the assignment,
    /// and columns become free, through it.
    std::vector<std::size_t> moves;
    std::vector<std::size_t> firstMove;  ///< of each row in `moves`
    std::vector<int> movesInto;          ///< how many of `moves` lead to each row
    std::vector<std::size_t> settled;    ///< rows that no chain of moves leads back to
};

}  // namespace Veskar
