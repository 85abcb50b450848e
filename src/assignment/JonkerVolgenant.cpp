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
    n_ = static_cast<int>(size);
    if (forbiddenRow_.size() < size) {
        forbiddenRow_.resize(size, forbiddenCost);
    }
    rows_.assign(size, forbiddenRow_.data());
    v_.resize(size);
    columnOf_.assign(size, none);
    rowOf_.assign(size, none);
    matches_.assign(size, 0);
    freeRows_.clear();
    freeRows_.reserve(size);
    displaced_.reserve(size);
    pathCost_.resize(size);
    predecessor_.resize(size);
    columns_.resize(size);
}

/// @return memory for a row of its own, all forbidden
double* JonkerVolgenant::makeRow(std::size_t row) {
    const std::size_t size = rows_.size();
    if (ownRows_.size() < size * size) {
        ownRows_.resize(size * size);
    }
    double* costs = ownRows_.data() + row * size;
    std::fill_n(costs, size, forbiddenCost);
    rows_[row] = costs;
    return costs;
}

void JonkerVolgenant::setRow(std::size_t row, const double* costs, std::size_t count) {
    if (count == rows_.size() && areFinite(costs, count)) {
        rows_[row] = costs;
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
    columnOf_[row] = col;
    rowOf_[col] = row;
}

const std::vector<int>& JonkerVolgenant::solve() {
    reduceColumns();
    transferReductions();
    reduceRows();
    reduceRows();
    for (const int row : freeRows_) {
        augment(row);
    }
    return columnOf_;
}

/// Prices every column at its least cost and gives it to the row of that cost.
void JonkerVolgenant::reduceColumns() {
    double* prices = v_.data();
    int* cheapestRow = predecessor_.data();
    std::copy_n(rows_[0], n_, prices);
    std::fill_n(cheapestRow, n_, 0);
    for (int i = 1; i < n_; ++i) {
        const double* costs = rows_[i];
        for (int j = 0; j < n_; ++j) {
            if (costs[j] < prices[j]) {
                prices[j] = costs[j];
                cheapestRow[j] = i;
            }
        }
    }
    for (int j = n_ - 1; j >= 0; --j) {
        const int i = cheapestRow[j];
        if (++matches_[i] == 1) {
            assign(i, j);
        }
    }
}

/// Lowers the price of every column whose row has no other column, as far as it remains the
/// cheapest for that row, and lists the rows without a column.
void JonkerVolgenant::transferReductions() {
    const double* prices = v_.data();
    for (int i = 0; i < n_; ++i) {
        if (matches_[i] == 0) {
            freeRows_.push_back(i);
        } else if (matches_[i] == 1) {
            const int own = columnOf_[i];
            const int after = own + 1;
            v_[own] -= std::min(leastReducedCost(rows_[i], prices, own),
                                leastReducedCost(rows_[i] + after, prices + after, n_ - after));
        }
    }
}

JonkerVolgenant::BestTwo JonkerVolgenant::scanBestTwo(int row) const {
    const double* costs = rows_[row];
    const double* prices = v_.data();
    BestTwo best = {costs[0] - prices[0], 0, largest};
    for (int j = 1; j < n_; ++j) {
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
    if (n_ < worthLanes) {
        return scanBestTwo(row);
    }
    const double* costs = rows_[row];
    const double* prices = v_.data();
    const SmallestTwo two = smallestTwoReducedCosts(costs, prices, n_);
    int j = 0;
    while (j < n_ && costs[j] - prices[j] != two.least) {
        ++j;
    }
    const bool overflow = j == n_ || !(two.second < largest);
    return overflow ? scanBestTwo(row) : BestTwo{two.least, j, two.second};
}

/// @return the first column with the second best reduced cost; -1 when there is none
int JonkerVolgenant::findSecondCol(int row, const BestTwo& best) const {
    const double* costs = rows_[row];
    const double* prices = v_.data();
    for (int j = 0; j < n_; ++j) {
        if (costs[j] - prices[j] == best.second && j != best.leastCol) {
            return j;
        }
    }
    return none;
}

/// One pass over the free rows: each takes its best column, at a price at which its second best is
/// as good, and whoever held that column looks for another one.
void JonkerVolgenant::reduceRows() {
    const int stepLimit = 4 * n_ + 100;
    int steps = 0;
    displaced_.clear();
    for (std::size_t k = 0; k < freeRows_.size();) {
        const int row = freeRows_[k];
        ++k;
        ++steps;
        const BestTwo best = findBestTwo(row);
        int col = best.leastCol;
        const double price = v_[col] - (best.second - best.least);
        const bool held = rowOf_[col] != none;
        const bool priceMoves = best.least < best.second && (!held || price != v_[col]);
        if (priceMoves) {
            v_[col] = price;
        } else if (held) {
            const int secondCol = findSecondCol(row, best);
            col = secondCol == none ? col : secondCol;
        }
        const int loser = rowOf_[col];
        assign(row, col);
        if (loser != none) {
            if (priceMoves && steps < stepLimit) {
                freeRows_[--k] = loser;
            } else {
                displaced_.push_back(loser);
            }
        }
    }
    freeRows_.swap(displaced_);
}

/// Gives a free row a column by moving the rows along a shortest alternating path.
void JonkerVolgenant::augment(int freeRow) {
    int col = findShortestPath(freeRow);
    for (int k = 0; k <= last_; ++k) {
        const int j = columns_[k];
        v_[j] = v_[j] + pathCost_[j] - nearest_;
    }
    int row = none;
    while (row != freeRow) {
        row = predecessor_[col];
        rowOf_[col] = row;
        std::swap(columnOf_[row], col);
    }
}

/// @return the first unassigned one of the row's best columns, or -1
int JonkerVolgenant::findNearestUnassigned(int row) const {
    const double* costs = rows_[row];
    const double* prices = v_.data();
    const int* holders = rowOf_.data();
    const double least = leastReducedCost(costs, prices, n_);
    for (int j = 0; j < n_; ++j) {
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
        last_ = none;
        predecessor_[direct] = freeRow;
        return direct;
    }
    const double* costs = rows_[freeRow];
    const double* prices = v_.data();
    double* path = pathCost_.data();
    for (int j = 0; j < n_; ++j) {
        path[j] = costs[j] - prices[j];
    }
    std::fill_n(predecessor_.data(), n_, freeRow);
    std::iota(columns_.begin(), columns_.end(), 0);
    low_ = 0;
    up_ = 0;
    int end = none;
    while (end == none) {
        if (low_ == up_) {
            end = collectNearest();
        } else {
            end = relax(columns_[low_++]);
        }
    }
    return end;
}

/// Brings the nearest columns that are not scanned to the positions from low to up.
/// @return the first unassigned one of them, or -1
int JonkerVolgenant::collectNearest() {
    const double* path = pathCost_.data();
    int* column = columns_.data();
    last_ = low_ - 1;
    double least = path[column[low_]];
    int end = low_ + 1;
    for (int k = end; k < n_; ++k) {
        const double d = path[column[k]];
        if (d <= least) {
            if (d < least) {
                end = low_;
                least = d;
            }
            std::swap(column[k], column[end]);
            ++end;
        }
    }
    nearest_ = least;
    up_ = end;
    const int* found =
        std::find_if(column + low_, column + up_, [this](int j) { return rowOf_[j] == none; });
    return found == column + up_ ? none : *found;
}

/// Shortens paths by going through the row that holds a nearest column.
/// @return an unassigned column that became a nearest one, or -1
int JonkerVolgenant::relax(int scanned) {
    const int row = rowOf_[scanned];
    const double* costs = rows_[row];
    const double* prices = v_.data();
    double* path = pathCost_.data();
    int* column = columns_.data();
    const double h = costs[scanned] - prices[scanned] - nearest_;
    for (int k = up_; k < n_; ++k) {
        const int j = column[k];
        const double d = costs[j] - prices[j] - h;
        if (d < path[j]) {
            predecessor_[j] = row;
            if (d == nearest_) {
                if (rowOf_[j] == none) {
                    return j;
                }
                std::swap(column[k], column[up_]);
                ++up_;
            }
            path[j] = d;
        }
    }
    return none;
}

}  // namespace Veskar
