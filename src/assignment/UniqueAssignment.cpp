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
    // Every row that has to stay without a column takes a search: rows are what there is less of.
    isTransposed_ = costs.rowCount() > colCount;
    if (!isTransposed_) {
        return solveRows(costs, colCount);
    }
    transposed_.setTransposed(costs, colCount);
    return solveRows(transposed_, costs.rowCount());
}

bool UniqueAssignment::solveRows(const SparseCosts& costs, std::size_t colCount) {
    start(costs.rowCount(), colCount, costs.cellCount());
    if (!takeFreeMinima(costs) || hasManyTies()) {
        return false;
    }
    return (freeRows_.empty() || assignFreeRows(costs, colCount)) && proof_.holds(costs, solution_);
}

void UniqueAssignment::start(std::size_t rowCount, std::size_t colCount, std::size_t cellCount) {
    solution_.u.resize(rowCount);
    solution_.v.resize(colCount);
    solution_.columnOf.resize(rowCount);
    solution_.rowOf.resize(colCount);
    solution_.doubtful.resize(rowCount);
    std::fill_n(solution_.v.data(), colCount, 0.0);
    std::fill_n(solution_.rowOf.data(), colCount, none);
    freeRows_.clear();
    effort_ = 16 * (rowCount + colCount + cellCount);
}

void UniqueAssignment::startSearches(std::size_t colCount) {
    pathLength_.assign(colCount, infinite);
    predecessor_.resize(colCount);
    scanned_.assign(colCount, 0);
    reached_.clear();
}

/// Counts cells that were looked at.
void UniqueAssignment::spend(const SparseCosts::Row& cells) {
    effort_ -= std::min(effort_, static_cast<std::size_t>(cells.end() - cells.begin()));
}

/// Whether the cheapest cell of most rows is none: a proof that costs much and fails.
bool UniqueAssignment::hasManyTies() const {
    const auto ties = std::count(solution_.doubtful.begin(), solution_.doubtful.end(), 1);
    return 2 * static_cast<std::size_t>(ties) > solution_.doubtful.size() + 1;
}

/// Gives every row its cheapest column, first come, first served.
/// @return whether a proof is possible at all
bool UniqueAssignment::takeFreeMinima(const SparseCosts& costs) {
    const std::size_t rowCount = costs.rowCount();
    double* prices = solution_.u.data();
    int* columnOf = solution_.columnOf.data();
    int* rowOf = solution_.rowOf.data();
    char* doubtful = solution_.doubtful.data();
    for (std::size_t i = 0; i < rowCount; ++i) {
        bool admitted = true;
        double least = forbiddenCost;
        double second = forbiddenCost;
        int col = none;
        for (const SparseCosts::Cell& cell : costs.row(i)) {
            const double cost = cell.cost;
            admitted = admitted & UniquenessProof::isBelowForbidden(cost);
            if (cost < second) {  // seldom
                second = std::max(least, cost);
                col = cost < least ? cell.col : col;
                least = std::min(least, cost);
            }
        }
        if (!admitted || least < -forbiddenCost) {
            return false;
        }
        prices[i] = least;
        columnOf[i] = none;
        doubtful[i] =
            static_cast<char>(col != none && second - least <= UniquenessProof::clearMargin);
        if (col != none && rowOf[col] == none) {
            rowOf[col] = static_cast<int>(i);
            columnOf[i] = col;
        } else if (col != none) {
            freeRows_.push_back(static_cast<int>(i));
        }
    }
    return true;
}

/// @return false when the limit of the effort was reached
bool UniqueAssignment::assignFreeRows(const SparseCosts& costs, std::size_t colCount) {
    displaceAll(costs);
    displaceAll(costs);
    if (!freeRows_.empty()) {
        startSearches(colCount);
    }
    return std::all_of(freeRows_.begin(), freeRows_.end(),
                       [&](int row) { return augment(costs, row); });
}

/// Lets every free row displace others, and lists the rows that have no column at the end.
void UniqueAssignment::displaceAll(const SparseCosts& costs) {
    std::size_t count = 0;
    for (const int freeRow : freeRows_) {
        const int row = displace(costs, freeRow);
        if (row != none) {
            freeRows_[count++] = row;
        }
    }
    freeRows_.resize(count);
}

/// Lets a free row take its best column, at a price at which its second best choice is as good, and
/// the row that loses that column do the same, for a few rows.
/// @return the row that has no column at the end, or -1
int UniqueAssignment::displace(const SparseCosts& costs, int freeRow) {
    constexpr int chainLimit = 16;
    double* prices = solution_.v.data();
    int* rowOf = solution_.rowOf.data();
    int row = freeRow;
    for (int k = 0; k < chainLimit && row != none && effort_ > 0; ++k) {
        const SparseCosts::Row cells = costs.row(row);
        double least = forbiddenCost;
        double second = forbiddenCost;
        int col = none;
        for (const SparseCosts::Cell& cell : cells) {
            const double reduced = cell.cost - prices[cell.col];
            if (reduced < second) {  // seldom
                second = std::max(least, reduced);
                col = reduced < least ? cell.col : col;
                least = std::min(least, reduced);
            }
        }
        spend(cells);
        solution_.u[row] = second;
        solution_.doubtful[row] = 1;
        if (col == none) {
            return none;  // cheaper without a column
        }
        prices[col] -= second - least;
        const int loser = rowOf[col];
        rowOf[col] = row;
        solution_.columnOf[row] = col;
        if (loser != none) {
            solution_.columnOf[loser] = none;
        }
        row = loser;
    }
    return row;
}

/// Gives a free row a column, or leaves out the row for which that is cheapest, by moving rows
/// along a shortest alternating path.
/// @return false when the limit of the effort was reached
bool UniqueAssignment::augment(const SparseCosts& costs, int freeRow) {
    heap_.clear();
    double length = forbiddenCost - solution_.u[freeRow];
    int leftOut = freeRow;
    relax(costs, freeRow, 0.0);
    int end = popNearest();
    while (end != none && pathLength_[end] < length && solution_.rowOf[end] != none) {
        const int row = solution_.rowOf[end];
        const double lengthOut = pathLength_[end] + (forbiddenCost - solution_.u[row]);
        if (lengthOut < length) {
            length = lengthOut;
            leftOut = row;
        }
        scanned_[end] = 1;
        relax(costs, row, pathLength_[end]);
        end = popNearest();
    }
    if (effort_ == 0) {
        return false;
    }
    if (end != none && pathLength_[end] < length) {
        length = pathLength_[end];
    } else {
        end = solution_.columnOf[leftOut];
        solution_.columnOf[leftOut] = none;
    }
    changePrices(freeRow, length);
    flip(end);
    return true;
}

/// Shortens the paths to a row's columns by going through that row.
void UniqueAssignment::relax(const SparseCosts& costs, int row, double length) {
    const SparseCosts::Row cells = costs.row(row);
    const double* prices = solution_.v.data();
    double* lengths = pathLength_.data();
    const double base = length - solution_.u[row];
    for (const SparseCosts::Cell& cell : cells) {
        const int col = cell.col;
        const double newLength = base + (cell.cost - prices[col]);
        if (newLength < lengths[col] && scanned_[col] == 0) {
            if (lengths[col] == infinite) {
                reached_.push_back(col);
            }
            lengths[col] = newLength;
            predecessor_[col] = row;
            heap_.push_back({newLength, col});
            std::push_heap(heap_.begin(), heap_.end(), std::greater<>());
        }
    }
    spend(cells);
}

/// @return the nearest column that is not scanned; -1 without one or at the limit of the effort
int UniqueAssignment::popNearest() {
    while (!heap_.empty() && effort_ > 0) {
        std::pop_heap(heap_.begin(), heap_.end(), std::greater<>());
        const Path nearest = heap_.back();
        heap_.pop_back();
        if (scanned_[nearest.col] == 0 && nearest.length == pathLength_[nearest.col]) {
            return nearest.col;
        }
    }
    return none;
}

/// Changes the prices so that the reduced costs along the shortest path become 0.
void UniqueAssignment::changePrices(int freeRow, double length) {
    solution_.u[freeRow] += length;
    solution_.doubtful[freeRow] = 1;
    for (const int col : reached_) {
        if (scanned_[col] != 0) {
            solution_.u[solution_.rowOf[col]] += length - pathLength_[col];
            solution_.doubtful[solution_.rowOf[col]] = 1;
            solution_.v[col] -= length - pathLength_[col];
            scanned_[col] = 0;
        }
        pathLength_[col] = infinite;
    }
    reached_.clear();
}

/// Moves the rows along the path that ends in a column, back to the row that had none.
void UniqueAssignment::flip(int col) {
    while (col != none) {
        const int row = predecessor_[col];
        solution_.rowOf[col] = row;
        std::swap(solution_.columnOf[row], col);
    }
}

}  // namespace Veskar
