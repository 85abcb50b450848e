// SPDX-License-Identifier: Apache-2.0
// The linear assignment problem by shortest augmenting paths, in the dense form.
#pragma once

#include <vector>

namespace Veskar {

/// Cost of a pair that must not be assigned. An ordinary number: when nothing else is left, the
/// solver takes such a pair, and its user has to drop it.
constexpr double forbiddenCost = 9999.0;

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
    void reset(int size);

    /// @param row a row
    /// @param col a column
    /// @param cost cost of the pair; what is not finite counts as forbidden
    void setCost(int row, int col, double cost);

    /// Solves the problem that was set.
    /// @return the column of each row; valid until the next reset
    const std::vector<int>& solve();

    /// @return the columns' prices v of the last solution: with u[i] = c[i][j] - v[j] on the
    ///         assigned pairs, u[i] + v[j] <= c[i][j] on all pairs
    const std::vector<double>& columnPrices() const { return v; }

private:
    /// The two columns of a row with the smallest reduced costs.
    struct BestTwo {
        double least;
        double second;
        int leastCol;
        int secondCol;  ///< -1 when there is no second column
    };

    const double* costsOf(int row) const;
    void assign(int row, int col);
    void reduceColumns();
    void transferReductions();
    void reduceRows();
    BestTwo findBestTwo(int row) const;
    void augment(int freeRow);
    int findShortestPath(int freeRow);
    int collectNearest();
    int relax(int scanned);

    int n = 0;
    std::vector<double> costs;     ///< row by row
    std::vector<double> v;         ///< column prices
    std::vector<int> columnOf;     ///< column of each row
    std::vector<int> rowOf;        ///< row of each column, -1 while unassigned
    std::vector<int> matches;      ///< columns in which a row is the cheapest
    std::vector<int> freeRows;     ///< rows without a column
    std::vector<int> displaced;    ///< rows that a pass of the row reduction leaves free
    std::vector<double> pathCost;  ///< shortest path from the free row to each column
    std::vector<int> predecessor;  ///< row before each column on that path
    std::vector<int> columns;      ///< search order: scanned, then nearest, then the rest
    int low = 0;                   ///< columns before this position are scanned
    int up = 0;                    ///< columns from low to here are the nearest, at `nearest`
    int last = -1;                 ///< last position whose column gets a new price
    double nearest = 0.0;          ///< path cost of the nearest columns
};

}  // namespace Veskar
