// SPDX-License-Identifier: Apache-2.0
#include "assignment/JonkerVolgenant.h"

#include <cmath>
#include <limits>
#include <numeric>
#include <utility>

#include <Eigen/Core>

namespace Veskar {
namespace {

constexpr int none = -1;
constexpr double largest = std::numeric_limits<double>::max();

double finiteCost(double cost) {
    return std::isfinite(cost) ? cost : forbiddenCost;
}

bool areFinite(const double* costs, std::size_t count) {
    // The sum of x - x is 0 for finite x and NaN for all others.
    double sum = 0.0;
    for (std::size_t j = 0; j < count; ++j) {
        sum += costs[j] - costs[j];
    }
    return sum == 0.0;
}

/// Four reduced costs at once, in whatever vector registers the processor has.
using Lanes = Eigen::Array<double, 4, 1>;
constexpr int laneCount = 4;

Lanes reducedCosts(const double* costs, const double* prices) {
    return Eigen::Map<const Lanes>(costs) - Eigen::Map<const Lanes>(prices);
}

double leastReducedCost(const double* costs, const double* prices, int count) {
    Lanes lanes = Lanes::Constant(largest);
    int j = 0;
    for (; j + laneCount <= count; j += laneCount) {
        lanes = lanes.min(reducedCosts(costs + j, prices + j));
    }
    double least = lanes.minCoeff();
    for (; j < count; ++j) {
        least = std::min(least, costs[j] - prices[j]);
    }
    return least;
}

/// The smallest number and the one after it.
struct SmallestTwo {
    double least;
    double second;
};

SmallestTwo smallestTwoOf(const Lanes& least, const Lanes& second) {
    using Half = Eigen::Array<double, laneCount / 2, 1>;
    const Half a = least.head<laneCount / 2>();
    const Half b = least.tail<laneCount / 2>();
    const Half halfLeast = a.min(b);
    const Half halfSecond =
        second.head<laneCount / 2>().min(second.tail<laneCount / 2>()).min(a.max(b));
    return {halfLeast.minCoeff(), std::min(halfSecond.minCoeff(), halfLeast.maxCoeff())};
}

SmallestTwo smallestTwoReducedCosts(const double* costs, const double* prices, int count) {
    Lanes least = Lanes::Constant(largest);
    Lanes second = least;
    int j = 0;
    while (j + laneCount <= count) {
        const Lanes h = reducedCosts(costs + j, prices + j);
        second = second.min(least.max(h));
        least = least.min(h);
        j += laneCount;
        // No reduced cost is below zero: two zeros end the search.
        if (j % 32 == 0 && second.minCoeff() == 0.0) {
            return {0.0, 0.0};
        }
    }
    SmallestTwo two = smallestTwoOf(least, second);
    for (; j < count; ++j) {
        const double h = costs[j] - prices[j];
        two.second = std::min(two.second, std::max(two.least, h));
        two.least = std::min(two.least, h);
    }
    return two;
}

}  // namespace

void JonkerVolgenant::start(std::size_t size) {
    n = static_cast<int>(size);
    if (forbiddenRow.size() < size) {
        forbiddenRow.resize(size, forbiddenCost);
    }
    rows.assign(size, forbiddenRow.data());
    v.resize(size);
    columnOf.assign(size, none);
    rowOf.assign(size, none);
    matches.assign(size, 0);
    freeRows.clear();
    freeRows.reserve(size);
    displaced.reserve(size);
    pathCost.resize(size);
    predecessor.resize(size);
    columns.resize(size);
}

/// @return memory for a row of its own, all forbidden
double* JonkerVolgenant::makeRow(std::size_t row) {
    const std::size_t size = rows.size();
    if (ownRows.size() < size * size) {
        ownRows.resize(size * size);
    }
    double* costs = ownRows.data() + row * size;
    std::fill_n(costs, size, forbiddenCost);
    rows[row] = costs;
    return costs;
}

void JonkerVolgenant::setRow(std::size_t row, const double* costs, std::size_t count) {
    if (count == rows.size() && areFinite(costs, count)) {
        rows[row] = costs;
    } else {
        std::transform(costs, costs + count, makeRow(row), finiteCost);
    }
}

void JonkerVolgenant::setRow(std::size_t row, const SparseCosts::Row& cells) {
    if (cells.empty()) {
        return;
    }
    double* costs = makeRow(row);
    for (const SparseCosts::Cell& cell : cells) {
        costs[cell.col] = finiteCost(cell.cost);
    }
}

void JonkerVolgenant::assign(int row, int col) {
    columnOf[row] = col;
    rowOf[col] = row;
}

const std::vector<int>& JonkerVolgenant::solve() {
    reduceColumns();
    transferReductions();
    reduceRows();
    reduceRows();
    for (const int row : freeRows) {
        augment(row);
    }
    return columnOf;
}

/// Prices every column at its least cost and gives it to the row of that cost.
void JonkerVolgenant::reduceColumns() {
    double* prices = v.data();
    int* cheapestRow = predecessor.data();
    std::copy_n(rows[0], n, prices);
    std::fill_n(cheapestRow, n, 0);
    for (int i = 1; i < n; ++i) {
        const double* costs = rows[i];
        for (int j = 0; j < n; ++j) {
            if (costs[j] < prices[j]) {
                prices[j] = costs[j];
                cheapestRow[j] = i;
            }
        }
    }
    for (int j = n - 1; j >= 0; --j) {
        const int i = cheapestRow[j];
        if (++matches[i] == 1) {
            assign(i, j);
        }
    }
}

/// Lowers the price of every column whose row has no other column, as far as that row stays
/// content with it, and lists the rows without a column.
void JonkerVolgenant::transferReductions() {
    const double* prices = v.data();
    for (int i = 0; i < n; ++i) {
        if (matches[i] == 0) {
            freeRows.push_back(i);
        } else if (matches[i] == 1) {
            const int own = columnOf[i];
            const int after = own + 1;
            v[own] -= std::min(leastReducedCost(rows[i], prices, own),
                               leastReducedCost(rows[i] + after, prices + after, n - after));
        }
    }
}

JonkerVolgenant::BestTwo JonkerVolgenant::scanBestTwo(int row) const {
    const double* costs = rows[row];
    const double* prices = v.data();
    BestTwo best = {costs[0] - prices[0], 0, largest};
    for (int j = 1; j < n; ++j) {
        const double h = costs[j] - prices[j];
        if (h < best.second) {
            if (h >= best.least) {
                best.second = h;
            } else {
                best = {h, j, best.least};
            }
        }
    }
    return best;
}

JonkerVolgenant::BestTwo JonkerVolgenant::findBestTwo(int row) const {
    constexpr int worthLanes = 16;
    if (n < worthLanes) {
        return scanBestTwo(row);
    }
    const double* costs = rows[row];
    const double* prices = v.data();
    const SmallestTwo two = smallestTwoReducedCosts(costs, prices, n);
    int j = 0;
    while (j < n && costs[j] - prices[j] != two.least) {
        ++j;
    }
    const bool overflow = j == n || !(two.second < largest);
    return overflow ? scanBestTwo(row) : BestTwo{two.least, j, two.second};
}

/// @return the first column with the second best reduced cost; -1 when there is none
int JonkerVolgenant::findSecondCol(int row, const BestTwo& best) const {
    const double* costs = rows[row];
    const double* prices = v.data();
    for (int j = 0; j < n; ++j) {
        if (costs[j] - prices[j] == best.second && j != best.leastCol) {
            return j;
        }
    }
    return none;
}

/// One pass over the free rows: each takes its best column, at a price at which its second best is
/// as good, and whoever held that column looks for another one.
void JonkerVolgenant::reduceRows() {
    const int stepLimit = 4 * n + 100;
    int steps = 0;
    displaced.clear();
    for (std::size_t k = 0; k < freeRows.size();) {
        const int row = freeRows[k];
        ++k;
        ++steps;
        const BestTwo best = findBestTwo(row);
        int col = best.leastCol;
        const double price = v[col] - (best.second - best.least);
        const bool held = rowOf[col] != none;
        const bool priceMoves = best.least < best.second && (!held || price != v[col]);
        if (priceMoves) {
            v[col] = price;
        } else if (held) {
            const int secondCol = findSecondCol(row, best);
            col = secondCol == none ? col : secondCol;
        }
        const int loser = rowOf[col];
        assign(row, col);
        if (loser != none) {
            if (priceMoves && steps < stepLimit) {
                freeRows[--k] = loser;
            } else {
                displaced.push_back(loser);
            }
        }
    }
    freeRows.swap(displaced);
}

/// Gives a free row a column by moving the rows along a shortest alternating path.
void JonkerVolgenant::augment(int freeRow) {
    int col = findShortestPath(freeRow);
    for (int k = 0; k <= last; ++k) {
        const int j = columns[k];
        v[j] = v[j] + pathCost[j] - nearest;
    }
    int row = none;
    while (row != freeRow) {
        row = predecessor[col];
        rowOf[col] = row;
        std::swap(columnOf[row], col);
    }
}

/// @return the first unassigned one of the row's best columns, or -1
int JonkerVolgenant::findNearestUnassigned(int row) const {
    const double* costs = rows[row];
    const double* prices = v.data();
    const int* holders = rowOf.data();
    const double least = leastReducedCost(costs, prices, n);
    for (int j = 0; j < n; ++j) {
        if (holders[j] == none && costs[j] - prices[j] == least) {
            return j;
        }
    }
    return none;
}

/// Dijkstra's search over the reduced costs.
/// @return the unassigned column at the end of the path
int JonkerVolgenant::findShortestPath(int freeRow) {
    const int direct = findNearestUnassigned(freeRow);
    if (direct != none) {
        last = none;
        predecessor[direct] = freeRow;
        return direct;
    }
    const double* costs = rows[freeRow];
    const double* prices = v.data();
    double* path = pathCost.data();
    for (int j = 0; j < n; ++j) {
        path[j] = costs[j] - prices[j];
    }
    std::fill_n(predecessor.data(), n, freeRow);
    std::iota(columns.begin(), columns.end(), 0);
    low = 0;
    up = 0;
    int end = none;
    while (end == none) {
        if (low == up) {
            end = collectNearest();
        } else {
            end = relax(columns[low++]);
        }
    }
    return end;
}

/// Brings the nearest columns that are not scanned to the positions from low to up.
/// @return the first unassigned one of them, or -1
int JonkerVolgenant::collectNearest() {
    const double* path = pathCost.data();
    int* column = columns.data();
    last = low - 1;
    double least = path[column[low]];
    int end = low + 1;
    for (int k = end; k < n; ++k) {
        const double d = path[column[k]];
        if (d <= least) {
            if (d < least) {
                end = low;
                least = d;
            }
            std::swap(column[k], column[end]);
            ++end;
        }
    }
    nearest = least;
    up = end;
    const int* found =
        std::find_if(column + low, column + up, [this](int j) { return rowOf[j] == none; });
    return found == column + up ? none : *found;
}

/// Shortens paths by going through the row that holds a nearest column.
/// @return an unassigned column that became a nearest one, or -1
int JonkerVolgenant::relax(int scanned) {
    const int row = rowOf[scanned];
    const double* costs = rows[row];
    const double* prices = v.data();
    double* path = pathCost.data();
    int* column = columns.data();
    const double h = costs[scanned] - prices[scanned] - nearest;
    for (int k = up; k < n; ++k) {
        const int j = column[k];
        const double d = costs[j] - prices[j] - h;
        if (d < path[j]) {
            predecessor[j] = row;
            if (d == nearest) {
                if (rowOf[j] == none) {
                    return j;
                }
                std::swap(column[k], column[up]);
                ++up;
            }
            path[j] = d;
        }
    }
    return none;
}

}  // namespace Veskar
