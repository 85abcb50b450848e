// SPDX-License-Identifier: Apache-2.0
#include "association/JonkerVolgenant.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <utility>

namespace Veskar {
namespace {

constexpr int none = -1;
constexpr double largest = std::numeric_limits<double>::max();

std::size_t index(int i) {
    return static_cast<std::size_t>(i);
}

}  // namespace

void JonkerVolgenant::reset(int size) {
    n = size;
    const std::size_t m = index(size);
    costs.assign(m * m, forbiddenCost);
    v.resize(m);
    columnOf.assign(m, none);
    rowOf.assign(m, none);
    matches.assign(m, 0);
    freeRows.clear();
    freeRows.reserve(m);
    displaced.reserve(m);
    pathCost.resize(m);
    predecessor.resize(m);
    columns.resize(m);
}

void JonkerVolgenant::setCost(int row, int col, double cost) {
    costs[index(row) * index(n) + index(col)] = std::isfinite(cost) ? cost : forbiddenCost;
}

const double* JonkerVolgenant::costsOf(int row) const {
    return &costs[index(row) * index(n)];
}

void JonkerVolgenant::assign(int row, int col) {
    columnOf[index(row)] = col;
    rowOf[index(col)] = row;
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
    std::vector<int>& cheapestRow = predecessor;
    std::copy_n(costsOf(0), n, v.begin());
    std::fill(cheapestRow.begin(), cheapestRow.end(), 0);
    for (int i = 1; i < n; ++i) {
        const double* c = costsOf(i);
        for (int j = 0; j < n; ++j) {
            if (c[j] < v[index(j)]) {
                v[index(j)] = c[j];
                cheapestRow[index(j)] = i;
            }
        }
    }
    for (int j = n - 1; j >= 0; --j) {
        const int i = cheapestRow[index(j)];
        if (++matches[index(i)] == 1) {
            assign(i, j);
        }
    }
}

/// Lowers the price of every column whose row has no other column, as far as that row stays
/// content with it, and lists the rows without a column.
void JonkerVolgenant::transferReductions() {
    for (int i = 0; i < n; ++i) {
        if (matches[index(i)] == 0) {
            freeRows.push_back(i);
        } else if (matches[index(i)] == 1) {
            const double* c = costsOf(i);
            const int own = columnOf[index(i)];
            double least = largest;
            for (int j = 0; j < n; ++j) {
                if (j != own) {
                    least = std::min(least, c[j] - v[index(j)]);
                }
            }
            v[index(own)] -= least;
        }
    }
}

JonkerVolgenant::BestTwo JonkerVolgenant::findBestTwo(int row) const {
    const double* c = costsOf(row);
    BestTwo best = {c[0] - v[0], largest, 0, none};
    for (int j = 1; j < n; ++j) {
        const double h = c[j] - v[index(j)];
        if (h < best.second) {
            if (h >= best.least) {
                best.second = h;
                best.secondCol = j;
            } else {
                best = {h, best.least, j, best.leastCol};
            }
        }
    }
    return best;
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
        const double price = v[index(col)] - (best.second - best.least);
        const bool held = rowOf[index(col)] != none;
        const bool priceMoves = best.least < best.second && (!held || price != v[index(col)]);
        if (priceMoves) {
            v[index(col)] = price;
        } else if (held && best.secondCol != none) {
            col = best.secondCol;
        }
        const int loser = rowOf[index(col)];
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
        const std::size_t j = index(columns[index(k)]);
        v[j] = v[j] + pathCost[j] - nearest;
    }
    int row = none;
    while (row != freeRow) {
        row = predecessor[index(col)];
        rowOf[index(col)] = row;
        std::swap(columnOf[index(row)], col);
    }
}

/// Dijkstra's search over the reduced costs.
/// @return the unassigned column at the end of the path
int JonkerVolgenant::findShortestPath(int freeRow) {
    const double* c = costsOf(freeRow);
    for (int j = 0; j < n; ++j) {
        pathCost[index(j)] = c[j] - v[index(j)];
    }
    std::fill(predecessor.begin(), predecessor.end(), freeRow);
    std::iota(columns.begin(), columns.end(), 0);
    low = 0;
    up = 0;
    int end = none;
    while (end == none) {
        if (low == up) {
            end = collectNearest();
        } else {
            end = relax(columns[index(low++)]);
        }
    }
    return end;
}

/// Brings the nearest columns that are not scanned to the positions from low to up.
/// @return the first unassigned one of them, or -1
int JonkerVolgenant::collectNearest() {
    last = low - 1;
    nearest = pathCost[index(columns[index(up)])];
    ++up;
    for (int k = up; k < n; ++k) {
        const double d = pathCost[index(columns[index(k)])];
        if (d <= nearest) {
            if (d < nearest) {
                up = low;
                nearest = d;
            }
            std::swap(columns[index(k)], columns[index(up)]);
            ++up;
        }
    }
    const auto begin = columns.begin() + low;
    const auto end = columns.begin() + up;
    const auto found = std::find_if(begin, end, [this](int j) { return rowOf[index(j)] == none; });
    return found == end ? none : *found;
}

/// Shortens paths by going through the row that holds a nearest column.
/// @return an unassigned column that became a nearest one, or -1
int JonkerVolgenant::relax(int scanned) {
    const int row = rowOf[index(scanned)];
    const double* c = costsOf(row);
    const double h = c[scanned] - v[index(scanned)] - nearest;
    for (int k = up; k < n; ++k) {
        const int j = columns[index(k)];
        const double d = c[j] - v[index(j)] - h;
        if (d < pathCost[index(j)]) {
            predecessor[index(j)] = row;
            if (d == nearest) {
                if (rowOf[index(j)] == none) {
                    return j;
                }
                std::swap(columns[index(k)], columns[index(up)]);
                ++up;
            }
            pathCost[index(j)] = d;
        }
    }
    return none;
}

}  // namespace Veskar
