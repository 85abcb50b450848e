// SPDX-License-Identifier: Apache-2.0
#include "association/UniqueAssignment.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>

namespace Veskar {
namespace {

constexpr int none = -1;
constexpr double infinite = std::numeric_limits<double>::infinity();

/// How much worse every other assignment has to be. Half a million times the rounding unit of the
/// forbidden cost, so that no order of additions in another solver can hide the difference.
constexpr double clearMargin = 1e-6;
/// How far rounding may move the prices of this solver off the relations that prove the optimum.
constexpr double priceTolerance = 1e-10;

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
    return pricesAreOptimal(costs) && !hasTightCycle();
}

void UniqueAssignment::start(std::size_t rowCount, std::size_t colCount, std::size_t cellCount) {
    u.assign(rowCount, forbiddenCost);
    v.assign(colCount, 0.0);
    columnOf.assign(rowCount, none);
    rowOf.assign(colCount, none);
    pathLength.assign(colCount, infinite);
    predecessor.resize(colCount);
    scanned.assign(colCount, 0);
    freeRows.clear();
    effort = 16 * (rowCount + colCount + cellCount);
}

/// Gives every row its cheapest column, first come, first served.
/// @return whether every cell is clearly better than a forbidden pair, and of a size at which the
///         margin stands above the rounding
bool UniqueAssignment::takeFreeMinima(const SparseCosts& costs) {
    for (std::size_t i = 0; i < columnOf.size(); ++i) {
        int col = none;
        for (const SparseCosts::Cell& cell : costs.row(i)) {
            if (!(cell.cost >= -forbiddenCost && cell.cost <= forbiddenCost - clearMargin)) {
                return false;
            }
            if (cell.cost < u[i]) {
                u[i] = cell.cost;
                col = cell.col;
            }
        }
        if (col != none && rowOf[col] == none) {
            rowOf[col] = static_cast<int>(i);
            columnOf[i] = col;
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
            const double reduced = cell.cost - v[cell.col];
            if (reduced < least) {
                second = least;
                least = reduced;
                col = cell.col;
            } else {
                second = std::min(second, reduced);
            }
        }
        u[row] = second;
        if (col == none) {
            return none;  // better left out
        }
        v[col] -= second - least;
        const int loser = rowOf[col];
        rowOf[col] = row;
        columnOf[row] = col;
        if (loser != none) {
            columnOf[loser] = none;
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
    double length = forbiddenCost - u[freeRow];
    int leftOut = freeRow;
    relax(costs, freeRow, 0.0);
    int end = popNearest();
    while (end != none && pathLength[end] < length && rowOf[end] != none) {
        const int row = rowOf[end];
        const double lengthOut = pathLength[end] + (forbiddenCost - u[row]);
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
        end = columnOf[leftOut];
        columnOf[leftOut] = none;
    }
    changePrices(freeRow, length);
    flip(end);
    return true;
}

/// Shortens the paths to a row's columns by going through that row.
void UniqueAssignment::relax(const SparseCosts& costs, int row, double length) {
    const SparseCosts::Row cells = costs.row(row);
    const double* prices = v.data();
    double* lengths = pathLength.data();
    const double base = length - u[row];
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
    u[freeRow] += length;
    for (const int col : reached) {
        if (scanned[col] != 0) {
            u[rowOf[col]] += length - pathLength[col];
            v[col] -= length - pathLength[col];
            scanned[col] = 0;
        }
        pathLength[col] = infinite;
    }
}

/// Moves the rows along the path that ends in a column, back to the row that had none.
void UniqueAssignment::flip(int col) {
    while (col != none) {
        const int row = predecessor[col];
        rowOf[col] = row;
        std::swap(columnOf[row], col);
    }
}

/// Whether the prices prove, up to rounding, that no assignment is better. Gathers the moves that
/// make it hardly worse.
bool UniqueAssignment::pricesAreOptimal(const SparseCosts& costs) {
    moves.clear();
    firstMove.clear();
    for (std::size_t i = 0; i < columnOf.size(); ++i) {
        firstMove.push_back(moves.size());
        if (!rowPriceIsOptimal(costs.row(i), i)) {
            return false;
        }
    }
    return columnPricesAreOptimal();
}

bool UniqueAssignment::rowPriceIsOptimal(const SparseCosts::Row& cells, std::size_t row) {
    const std::size_t leftOver = columnOf.size();
    const int own = columnOf[row];
    const double price = u[row];
    const double* prices = v.data();
    const double gainOut = forbiddenCost - price;
    bool optimal = gainOut >= -priceTolerance && (own != none || gainOut <= priceTolerance);
    if (own != none && gainOut <= clearMargin) {
        moves.push_back(leftOver);
    }
    for (const SparseCosts::Cell& cell : cells) {
        const double slack = cell.cost - price - prices[cell.col];
        optimal = optimal && slack >= -priceTolerance;
        if (cell.col == own) {
            optimal = optimal && slack <= priceTolerance;
        } else if (slack <= clearMargin) {
            const int holder = rowOf[cell.col];
            moves.push_back(holder == none ? leftOver : static_cast<std::size_t>(holder));
        }
    }
    return optimal;
}

bool UniqueAssignment::columnPricesAreOptimal() const {
    for (std::size_t j = 0; j < rowOf.size(); ++j) {
        if (v[j] > priceTolerance || (rowOf[j] == none && v[j] < -priceTolerance)) {
            return false;
        }
    }
    return true;
}

/// Whether some closed chain of moves is nearly free.
bool UniqueAssignment::hasTightCycle() {
    if (moves.empty()) {
        return false;
    }
    const std::size_t leftOver = columnOf.size();
    firstMove.push_back(moves.size());
    for (std::size_t i = 0; i < leftOver; ++i) {
        if (columnOf[i] == none || v[columnOf[i]] >= -clearMargin) {
            moves.push_back(i);
        }
    }
    firstMove.push_back(moves.size());
    movesInto.assign(leftOver + 1, 0);
    for (const std::size_t to : moves) {
        ++movesInto[to];
    }
    settled.clear();
    for (std::size_t i = 0; i <= leftOver; ++i) {
        if (movesInto[i] == 0) {
            settled.push_back(i);
        }
    }
    for (std::size_t k = 0; k < settled.size(); ++k) {
        for (std::size_t m = firstMove[settled[k]]; m < firstMove[settled[k] + 1]; ++m) {
            if (--movesInto[moves[m]] == 0) {
                settled.push_back(moves[m]);
            }
        }
    }
    return settled.size() <= leftOver;
}

}  // namespace Veskar
