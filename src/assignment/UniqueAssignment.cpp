// SPDX-License-Identifier: Apache-2.0
#include "assignment/UniqueAssignment.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>

namespace Veskar {
namespace {

constexpr int none = PricedAssignment::none;
constexpr double infinite = std::numeric_limits<double>::infinity();

}  // namespace

bool UniqueAssignment::solve(const SparseCosts& costs, std::size_t colCount) {
    start(costs.rowCount(), colCount, costs.cellCount());
    if (!takeFreeMinima(costs)) {
        return false;
    }
    for (const int freeRow : freeRows) {
        const int row = displace(costs, freeRow);
        if (row != none && !augment(costs, row)) {
            return false;
        }
    }
    return proof.holds(costs, solution);
}

void UniqueAssignment::start(std::size_t rowCount, std::size_t colCount, std::size_t cellCount) {
    solution.u.assign(rowCount, forbiddenCost);
    solution.v.assign(colCount, 0.0);
    solution.columnOf.assign(rowCount, none);
    solution.rowOf.assign(colCount, none);
    pathLength.assign(colCount, infinite);
    predecessor.resize(colCount);
    scanned.assign(colCount, 0);
    freeRows.clear();
    effort = 16 * (rowCount + colCount + cellCount);
}

/// Gives every row its cheapest column, first come, first served.
/// @return whether a proof is possible at all
bool UniqueAssignment::takeFreeMinima(const SparseCosts& costs) {
    for (std::size_t i = 0; i < solution.columnOf.size(); ++i) {
        int col = none;
        for (const SparseCosts::Cell& cell : costs.row(i)) {
            if (!UniquenessProof::admits(cell.cost)) {
                return false;
            }
            if (cell.cost < solution.u[i]) {
                solution.u[i] = cell.cost;
                col = cell.col;
            }
        }
        if (col != none && solution.rowOf[col] == none) {
            solution.rowOf[col] = static_cast<int>(i);
            solution.columnOf[i] = col;
        } else if (col != none) {
            freeRows.push_back(static_cast<int>(i));
        }
    }
    return true;
}

/// Lets a free row take its best column, at a price at which its second best choice is as good, and
/// the row that loses that column do the same, for a few rows.
/// @return the row that has no column at the end, or -1
int UniqueAssignment::displace(const SparseCosts& costs, int freeRow) {
    constexpr int chainLimit = 8;
    int row = freeRow;
    for (int k = 0; k < chainLimit && row != none; ++k) {
        double least = forbiddenCost;
        double second = forbiddenCost;
        int col = none;
        for (const SparseCosts::Cell& cell : costs.row(row)) {
            const double reduced = cell.cost - solution.v[cell.col];
            if (reduced < least) {
                second = least;
                least = reduced;
                col = cell.col;
            } else {
                second = std::min(second, reduced);
            }
        }
        solution.u[row] = second;
        if (col == none) {
            return none;  // better left out
        }
        solution.v[col] -= second - least;
        const int loser = solution.rowOf[col];
        solution.rowOf[col] = row;
        solution.columnOf[row] = col;
        if (loser != none) {
            solution.columnOf[loser] = none;
        }
        row = loser;
    }
    return row;
}

/// Gives a free row a column, or leaves out the row for which that is cheapest, by moving rows
/// along a shortest alternating path.
/// @return whether that was possible at bearable effort
bool UniqueAssignment::augment(const SparseCosts& costs, int freeRow) {
    heap.clear();
    reached.clear();
    double length = forbiddenCost - solution.u[freeRow];
    int leftOut = freeRow;
    relax(costs, freeRow, 0.0);
    int end = popNearest();
    while (end != none && pathLength[end] < length && solution.rowOf[end] != none) {
        const int row = solution.rowOf[end];
        const double lengthOut = pathLength[end] + (forbiddenCost - solution.u[row]);
        if (lengthOut < length) {
            length = lengthOut;
            leftOut = row;
        }
        scanned[end] = 1;
        relax(costs, row, pathLength[end]);
        end = popNearest();
    }
    if (effort == 0) {
        return false;
    }
    if (end != none && pathLength[end] < length) {
        length = pathLength[end];
    } else {
        end = solution.columnOf[leftOut];
        solution.columnOf[leftOut] = none;
    }
    changePrices(freeRow, length);
    flip(end);
    return true;
}

/// Shortens the paths to a row's columns by going through that row.
void UniqueAssignment::relax(const SparseCosts& costs, int row, double length) {
    const SparseCosts::Row cells = costs.row(row);
    const double* prices = solution.v.data();
    double* lengths = pathLength.data();
    const double base = length - solution.u[row];
    for (const SparseCosts::Cell& cell : cells) {
        const int col = cell.col;
        const double newLength = base + (cell.cost - prices[col]);
        if (newLength < lengths[col] && scanned[col] == 0) {
            if (lengths[col] == infinite) {
                reached.push_back(col);
            }
            lengths[col] = newLength;
            predecessor[col] = row;
            heap.push_back({newLength, col});
            std::push_heap(heap.begin(), heap.end(), std::greater<>());
        }
    }
    effort -= std::min(effort, static_cast<std::size_t>(cells.end() - cells.begin()));
}

/// @return the nearest column that is not scanned; -1 when there is none or the effort is too much
int UniqueAssignment::popNearest() {
    while (!heap.empty() && effort > 0) {
        std::pop_heap(heap.begin(), heap.end(), std::greater<>());
        const Path nearest = heap.back();
        heap.pop_back();
        if (scanned[nearest.col] == 0 && nearest.length == pathLength[nearest.col]) {
            return nearest.col;
        }
    }
    return none;
}

/// Makes the moves along the shortest path free.
void UniqueAssignment::changePrices(int freeRow, double length) {
    solution.u[freeRow] += length;
    for (const int col : reached) {
        if (scanned[col] != 0) {
            solution.u[solution.rowOf[col]] += length - pathLength[col];
            solution.v[col] -= length - pathLength[col];
            scanned[col] = 0;
        }
        pathLength[col] = infinite;
    }
}

/// Moves the rows along the path that ends in a column, back to the row that had none.
void UniqueAssignment::flip(int col) {
    while (col != none) {
        const int row = predecessor[col];
        solution.rowOf[col] = row;
        std::swap(solution.columnOf[row], col);
    }
}

}  // namespace Veskar
