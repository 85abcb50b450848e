// SPDX-License-Identifier: Apache-2.0
#include "assignment/JonkerVolgenant.h"

#include "arithmetic/Lanes.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <numeric>
#include <utility>

namespace Veskar {
namespace {

constexpr int none = -1;
constexpr double largest = std::numeric_limits<double>::max();
constexpr double infinite = std::numeric_limits<double>::infinity();

double finiteCost(double cost) {
    return std::isfinite(cost) ? cost : forbiddenCost;
}

/// Two reduced costs at once.
Lanes reducedCosts(const double* costs, const double* prices) {
    return loadLanes(costs) - loadLanes(prices);
}

double leastReducedCost(const double* costs, const double* prices, int count) {
    Lanes a = lanesOf(largest);
    Lanes b = a;
    int j = 0;
    for (; j + 2 * laneCount <= count; j += 2 * laneCount) {
        a = minOf(reducedCosts(costs + j, prices + j), a);
        b = minOf(reducedCosts(costs + j + laneCount, prices + j + laneCount), b);
    }
    double least = leastOf(minOf(a, b));
    for (; j < count; ++j) {
        least = std::min(least, costs[j] - prices[j]);
    }
    return least;
}

/// Lowers two prices to costs, where those are lower, and notes the row of the costs.
void lowerPrices(Lanes costs, IntLanes row, double* prices, std::int64_t* cheapestRow) {
    const Lanes before = loadLanes(prices);
    const IntLanes cheaper = costs < before;
    storeLanes(prices, select(cheaper, costs, before));
    storeLanes(cheapestRow, select(cheaper, row, loadLanes(cheapestRow)));
}

/// The smallest number and the one after it.
struct SmallestTwo {
    double least = largest;
    double second = largest;

    /// @return whether the number is the smallest so far
    bool see(double h) {
        const bool isLeast = h < least;
        second = std::min(second, std::max(least, h));
        least = std::min(least, h);
        return isLeast;
    }
};

/// The same lane by lane.
struct SmallestTwoLanes {
    Lanes least = lanesOf(largest);
    Lanes second = least;

    void see(Lanes h) {
        second = minOf(maxOf(least, h), second);
        least = minOf(h, least);
    }
};

SmallestTwo smallestTwoOf(const SmallestTwoLanes& a, const SmallestTwoLanes& b) {
    const Lanes least = minOf(a.least, b.least);
    const Lanes second = minOf(minOf(a.second, b.second), maxOf(a.least, b.least));
    const double larger = least[0] < least[1] ? least[1] : least[0];
    return {leastOf(least), std::min(leastOf(second), larger)};
}

SmallestTwo smallestTwoReducedCosts(const double* costs, const double* prices, int count) {
    SmallestTwoLanes a;
    SmallestTwoLanes b;
    int j = 0;
    for (; j + 2 * laneCount <= count; j += 2 * laneCount) {
        a.see(reducedCosts(costs + j, prices + j));
        b.see(reducedCosts(costs + j + laneCount, prices + j + laneCount));
    }
    SmallestTwo two = smallestTwoOf(a, b);
    for (; j < count; ++j) {
        two.see(costs[j] - prices[j]);
    }
    return two;
}

}  // namespace

void JonkerVolgenant::start(std::size_t size) {
    n_ = static_cast<int>(size);
    if (forbiddenRow_.size() < size) {
        forbiddenRow_.resize(size, forbiddenCost);
        v_.resize(size);
        cheapestRow_.resize(size);
        rowOf_.resize(size);
        matches_.resize(size);
        freeRows_.reserve(size);
        displaced_.reserve(size);
        pathCost_.resize(size);
        predecessor_.resize(size);
        columns_.resize(size);
    }
    rows_.resize(size);
    columnOf_.resize(size);
    freeRows_.clear();
    std::fill_n(rows_.data(), size, forbiddenRow_.data());
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
    if (count == rows_.size()) {
        rows_[row] = costs;
    } else {
        copyRow(row, costs, count);
    }
}

void JonkerVolgenant::copyRow(std::size_t row, const double* costs, std::size_t count) {
    std::transform(costs, costs + count, makeRow(row), finiteCost);
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
    if (!priceColumns()) {
        copyRowsThatAreNotFinite();
        priceColumns();
    }
    if (!assignCheapestRows()) {
        transferReductions();
        reduceRows();
        reduceRows();
        for (const int row : freeRows_) {
            augment(row);
        }
    }
    return columnOf_;
}

/// Prices every column at its least cost.
/// @return whether all costs are finite; otherwise the prices are useless
bool JonkerVolgenant::priceColumns() {
    std::fill_n(v_.data(), n_, infinite);
    std::fill_n(cheapestRow_.data(), n_, 0);
    double sum = 0.0;
    for (int i = 0; i < n_; ++i) {
        sum += priceColumns(i);
    }
    // A finite sum has finite terms; another one may be of finite costs that are huge.
    return std::isfinite(sum) || areRowsFinite();
}

/// Lowers prices to the costs of a row.
/// @return a sum of these, so that they are read once only
double JonkerVolgenant::priceColumns(int i) {
    constexpr int blockSize = 4 * laneCount;
    constexpr std::ptrdiff_t second = laneCount;
    constexpr std::ptrdiff_t third = second + laneCount;
    constexpr std::ptrdiff_t fourth = third + laneCount;
    const double* costs = rows_[i];
    double* prices = v_.data();
    std::int64_t* cheapestRow = cheapestRow_.data();
    const IntLanes row = lanesOf(std::int64_t{i});
    Lanes sum = lanesOf(0.0);
    int j = 0;
    for (; j + blockSize <= n_; j += blockSize) {
        const Lanes a = loadLanes(costs + j);
        const Lanes b = loadLanes(costs + j + second);
        const Lanes c = loadLanes(costs + j + third);
        const Lanes d = loadLanes(costs + j + fourth);
        sum = sum + ((a + b) + (c + d));
        // The later the row, the more seldom it has a least cost: blocks without one are left.
        const IntLanes cheaper =
            (a < loadLanes(prices + j)) | (b < loadLanes(prices + j + second)) |
            (c < loadLanes(prices + j + third)) | (d < loadLanes(prices + j + fourth));
        if (anyOf(cheaper)) {
            for (int k = j; k < j + blockSize; k += laneCount) {
                lowerPrices(loadLanes(costs + k), row, prices + k, cheapestRow + k);
            }
        }
    }
    double total = sum[0] + sum[1];
    for (; j < n_; ++j) {
        total += costs[j];
        if (costs[j] < prices[j]) {
            prices[j] = costs[j];
            cheapestRow[j] = i;
        }
    }
    return total;
}

bool JonkerVolgenant::isRowFinite(int row) const {
    return std::all_of(rows_[row], rows_[row] + n_,
                       [](double cost) { return std::isfinite(cost); });
}

bool JonkerVolgenant::areRowsFinite() const {
    for (int i = 0; i < n_; ++i) {
        if (!isRowFinite(i)) {
            return false;
        }
    }
    return true;
}

void JonkerVolgenant::copyRowsThatAreNotFinite() {
    for (int i = 0; i < n_; ++i) {
        if (!isRowFinite(i)) {
            copyRow(static_cast<std::size_t>(i), rows_[i], rows_.size());
        }
    }
}

/// Gives every column to the row that has its least cost, unless that row has got one already.
/// @return whether all rows have got one, which is the assignment then
bool JonkerVolgenant::assignCheapestRows() {
    std::fill_n(columnOf_.data(), n_, none);
    std::fill_n(rowOf_.data(), n_, none);
    std::fill_n(matches_.data(), n_, 0);
    int* matches = matches_.data();
    int assigned = 0;
    for (int j = n_ - 1; j >= 0; --j) {
        const auto i = static_cast<int>(cheapestRow_[static_cast<std::size_t>(j)]);
        if (++matches[i] == 1) {
            assign(i, j);
            ++assigned;
        }
    }
    return assigned == n_;
}

/// Lowers the price of every column whose row has no other column, as far as it remains the
/// cheapest for that row, and lists the rows without a column.
void JonkerVolgenant::transferReductions() {
    const double* prices = v_.data();
    for (int i = 0; i < n_; ++i) {
        if (matches_[i] == 0) {
            freeRows_.push_back(i);
        } else if (matches_[i] == 1) {
            double& own = v_[columnOf_[i]];
            const double price = own;
            own = -infinite;  // leaves the column out of the search
            own = price - leastReducedCost(rows_[i], prices, n_);
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
    // The least of each block takes half as many instructions as the two smallest numbers, which
    // have to be found in the block of the smallest alone.
    constexpr int blockSize = 32;
    const double* costs = rows_[row];
    const double* prices = v_.data();
    SmallestTwo ofBlocks;
    int best = 0;
    // No reduced cost is below zero: two zeros end the search.
    for (int block = 0; block < n_ && n_ > blockSize && ofBlocks.second > 0.0; block += blockSize) {
        const int count = std::min(blockSize, n_ - block);
        best = ofBlocks.see(leastReducedCost(costs + block, prices + block, count)) ? block : best;
    }
    const SmallestTwo inBlock =
        smallestTwoReducedCosts(costs + best, prices + best, std::min(blockSize, n_ - best));
    int col = best;
    while (col < n_ && costs[col] - prices[col] != inBlock.least) {
        ++col;
    }
    const double second = std::min(inBlock.second, ofBlocks.second);
    const bool overflow = col == n_ || !(second < largest);
    return overflow ? scanBestTwo(row) : BestTwo{inBlock.least, col, second};
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
