// SPDX-License-Identifier: Apache-2.0
// The cost matrix of an assignment problem in which most pairs are forbidden.
#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

namespace Veskar {

/// Cost of a pair that must not be assigned. An ordinary number: where nothing else is left, a
/// solver takes such a pair, and its user has to drop it.
constexpr double forbiddenCost = 9999.0;

/// Keeps the pairs that have a cost of their own, row after row, with ascending columns in each
/// row. All other pairs are forbidden.
class SparseCosts {
public:
    /// One pair of a row.
    struct Cell {
        int col;
        double cost;
    };
    /// The cells of one row, for range-based loops.
    struct Row {
        const Cell* first;
        const Cell* last;
        const Cell* begin() const { return first; }
        const Cell* end() const { return last; }
        bool empty() const { return first == last; }
    };

    void clear() {
        cellCount_ = 0;
        rowEnds_.clear();
    }
    /// Adds a whole row: the costs that are finite and not forbidden.
    ///
    /// @param costs the costs
    /// @param count number of columns
    void addRow(const double* costs, std::size_t count);
    /// Adds a pair to the row that is being filled.
    void add(std::size_t col, double cost) {
        makeRoom(1);
        cells_[cellCount_++] = {static_cast<int>(col), cost};
    }
    /// Drops pairs from the row that is being filled.
    /// @param drop which, by column
    template <typename Drop>
    void dropIf(Drop drop) {
        Cell* const cells = cells_.data();
        const Cell* const end = std::remove_if(cells + openRowBegin(), cells + cellCount_,
                                               [&drop](const Cell& c) { return drop(c.col); });
        cellCount_ = static_cast<std::size_t>(end - cells);
    }
    /// Ends the row that is being filled.
    /// @param count how many rows end here; all but the first are empty
    void endRows(std::size_t count) { rowEnds_.insert(rowEnds_.end(), count, cellCount_); }
    void endRow() { rowEnds_.push_back(cellCount_); }

    /// Takes over the pairs of a problem with rows and columns exchanged.
    ///
    /// @param costs the problem
    /// @param colCount its number of columns
    void setTransposed(const SparseCosts& costs, std::size_t colCount);

    /// @return the row that is being filled
    Row openRow() const { return {cells_.data() + openRowBegin(), cells_.data() + cellCount_}; }
    /// @param i a row that is filled
    /// @return its pairs
    Row row(std::size_t i) const {
        return {cells_.data() + (i == 0 ? 0 : rowEnds_[i - 1]), cells_.data() + rowEnds_[i]};
    }
    Row row(int i) const { return row(static_cast<std::size_t>(i)); }
    /// @param i a row that is filled
    /// @param col a column
    /// @return the cell of that pair; null when it is forbidden
    const Cell* find(std::size_t i, int col) const {
        const Row cellsOfRow = row(i);
        const Cell* found =
            std::lower_bound(cellsOfRow.begin(), cellsOfRow.end(), col,
                             [](const Cell& cell, int wanted) { return cell.col < wanted; });
        return found != cellsOfRow.end() && found->col == col ? found : nullptr;
    }
    bool hasEmptyRow() const;
    std::size_t rowCount() const { return rowEnds_.size(); }
    std::size_t cellCount() const { return cellCount_; }

private:
    std::size_t openRowBegin() const { return rowEnds_.empty() ? 0 : rowEnds_.back(); }

    /// Makes room for further cells.
    void makeRoom(std::size_t count) {
        if (cells_.size() < cellCount_ + count) {
            grow(cellCount_ + count);
        }
    }
    void grow(std::size_t count);

    std::vector<Cell> cells_;  ///< those of all rows, then room for more
    std::size_t cellCount_ = 0;
    std::vector<std::size_t> rowEnds_;
};

}  // namespace Veskar
