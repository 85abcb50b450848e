// SPDX-License-Identifier: Apache-2.0
// The linear assignment problem by shortest augmenting paths, in the dense form.
#pragma once

#include "assignment/IntIndexed.h"
#include "assignment/SparseCosts.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace Veskar {

/// Assigns every row of a square cost matrix to a column of its own at the least total cost
/// (Jonker, Volgenant: "A shortest augmenting path algorithm for dense and sparse linear assignment
/// problems", Computing 38, 1987): column reduction, reduction transfer, two passes of augmenting
/// row reduction, then one shortest augmenting path for every row that is still free.
///
/// Among equally good assignments the scan orders decide: lowest row and highest column in the
/// column reduction, first column in the row reduction, the order of the column list in the search.
///
/// It always ends. Two rules see to it in the row reduction, where rows that compete for fewer good
/// columns raise prices in steps as small as the difference of their costs: a step too small to
/// change a price counts as a tie, and a pass that has taken 4 n + 100 steps leaves the rows it
/// still displaces to the search.
///
/// Memory is kept from problem to problem: a solve allocates only when it is the largest so far.
class JonkerVolgenant {
public:
    /// Starts a new problem in which every pair is forbidden.
    /// @param size number of rows and of columns, at least 1
    void start(std::size_t size);

    /// Sets the first costs of a row; the rest stays forbidden.
    ///
    /// @param row a row
    /// @param costs the costs, which must stay there until the problem is solved; what is not
    ///              finite counts as forbidden
    /// @param count number of costs
    void setRow(std::size_t row, const double* costs, std::size_t count);
    /// Sets the costs of a row.
    ///
    /// @param row a row
    /// @param cells the costs; what is not finite counts as forbidden
    void setRow(std::size_t row, const SparseCosts::Row& cells);

    /// Solves the problem that was set.
    /// @return the column of each row; valid until the next start
    const std::vector<int>& solve();

    /// @return the columns' prices v of the last solution: with u[i] = c[i][j] - v[j] on the
    ///         assigned pairs, u[i] + v[j] <= c[i][j] on all pairs
    const std::vector<double>& columnPrices() const { return v_; }

private:
    /// The smallest reduced cost of a row, the first column that has it, and the smallest of all
    /// other columns.
    struct BestTwo {
        double least;
        int leastCol;
        double second;
    };

    double* makeRow(std::size_t row);
    void copyRow(std::size_t row, const double* costs, std::size_t count);
    void assign(int row, int col);
    bool priceColumns();
    double priceColumns(int i);
    bool isRowFinite(int row) const;
    bool areRowsFinite() const;
    void copyRowsThatAreNotFinite();
    bool assignCheapestRows();
    void transferReductions();
    void reduceRows();
    BestTwo findBestTwo(int row) const;
    BestTwo scanBestTwo(int row) const;
    int findSecondCol(int row, const BestTwo& best) const;
    void augment(int freeRow);
    int findShortestPath(int freeRow);
    int findNearestUnassigned(int row) const;
    int collectNearest();
    int relax(int scanned);

    int n_ = 0;
    IntIndexed<const double*> rows_;         ///< costs of each row
    std::vector<double> forbiddenRow_;       ///< the costs of a row without any
    std::vector<double> ownRows_;            ///< rows that are built or copied here
    IntIndexed<double> v_;                   ///< column prices
    std::vector<std::int64_t> cheapestRow_;  ///< row of each column's least cost
    IntIndexed<int> columnOf_;               ///< column of each row
    IntIndexed<int> rowOf_;                  ///< row of each column, -1 while unassigned
    IntIndexed<int> matches_;                ///< columns in which a row is the cheapest
    std::vector<int> freeRows_;              ///< rows without a column
    std::vector<int> displaced_;             ///< rows that a pass of the row reduction leaves free
    IntIndexed<double> pathCost_;            ///< shortest path from the free row to each column
    IntIndexed<int> predecessor_;            ///< row before each column on that path
    IntIndexed<int> columns_;                ///< search order: scanned, then nearest, then the rest
    int low_ = 0;                            ///< columns before this position are scanned
    int up_ = 0;                             ///< columns from low to here are the nearest
    int last_ = -1;                          ///< last position whose column gets a new price
    double nearest_ = 0.0;                   ///< path cost of the nearest columns
};

}  // namespace Veskar
