// SPDX-License-Identifier: Apache-2.0
// The pairs of an assignment problem that may be assigned, with their costs.
#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

namespace Veskar {

/// Allowed pairs row after row, with ascending columns in each row. All other pairs are forbidden.
class AllowedPairs {
public:
    /// One allowed pair of a row.
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
        cells.clear();
        rowEnds.clear();
    }
    /// Adds a pair to the row that is being filled.
    void add(std::size_t col, double cost) { cells.push_back({static_cast<int>(col), cost}); }
    /// Drops pairs from the row that is being filled.
    /// @param drop which, by column
    template <typename Drop>
    void dropIf(Drop drop) {
        const auto begin = cells.begin() + static_cast<std::ptrdiff_t>(openRowBegin());
        cells.erase(
            std::remove_if(begin, cells.end(), [&drop](const Cell& c) { return drop(c.col); }),
            cells.end());
    }
    /// Ends the row that is being filled.
    void endRow() { rowEnds.push_back(cells.size()); }

    /// @return the row that is being filled
    Row openRow() const { return {cells.data() + openRowBegin(), cells.data() + cells.size()}; }
    /// @param i a row that is filled
    /// @return its pairs
    Row row(std::size_t i) const {
        return {cells.data() + (i == 0 ? 0 : rowEnds[i - 1]), cells.data() + rowEnds[i]};
    }
    std::size_t rowCount() const { return rowEnds.size(); }
    /// @return whether no pair at all is allowed
    bool empty() const { return cells.empty(); }

private:
    std::size_t openRowBegin() const { return rowEnds.empty() ? 0 : rowEnds.back(); }

    std::vector<Cell> cells;
    std::vector<std::size_t> rowEnds;
};

}  // namespace Veskar
