// SPDX-License-Identifier: Apache-2.0
#include "assignment/SparseCosts.h"

#include "arithmetic/Lanes.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numeric>

namespace Veskar {
namespace {

constexpr std::size_t chunkSize = 64;  // as many columns as an integer has bits
constexpr std::size_t blockSize = 8;

/// @return a bit for each of eight columns whose cost is not forbidden, some in each lane
IntLanes findCells(const double* costs) {
    const Lanes forbidden = lanesOf(forbiddenCost);
    const IntLanes a = (loadLanes(costs) != forbidden) & IntLanes{1, 2};
    const IntLanes b = (loadLanes(costs + 2) != forbidden) & IntLanes{4, 8};
    const IntLanes c = (loadLanes(costs + 4) != forbidden) & IntLanes{16, 32};
    const IntLanes d = (loadLanes(costs + 6) != forbidden) & IntLanes{64, 128};
    return (a | b) | (c | d);
}

/// @param count number of columns, at most a chunk
/// @return a bit for each column whose cost is not forbidden
std::uint64_t findCells(const double* costs, std::size_t count) {
    const std::size_t blockEnd = count - count % blockSize;
    IntLanes found = lanesOf(std::int64_t{0});
    for (std::size_t j = 0; j < blockEnd; j += blockSize) {
        found = found | (findCells(costs + j) << static_cast<int>(j));
    }
    auto cells = static_cast<std::uint64_t>(found[0] | found[1]);
    for (std::size_t j = blockEnd; j < count; ++j) {
        cells |= static_cast<std::uint64_t>(costs[j] != forbiddenCost) << j;
    }
    return cells;
}

/// @return whether all costs are; a finite sum has finite terms
bool areFinite(const double* costs, std::size_t count) {
    constexpr std::size_t step = std::size_t{2} * laneCount;
    Lanes a = lanesOf(0.0);
    Lanes b = a;
    std::size_t j = 0;
    for (; j + step <= count; j += step) {
        a = a + loadLanes(costs + j);
        b = b + loadLanes(costs + j + laneCount);
    }
    a = a + b;
    return std::isfinite(std::accumulate(costs + j, costs + count, a[0] + a[1]));
}

}  // namespace

// Which pairs are cells cannot be predicted: bits find them without a branch per pair.
void SparseCosts::addRow(const double* costs, std::size_t count) {
    makeRoom(count);
    Cell* out = cells_.data() + cellCount_;
    for (std::size_t chunk = 0; chunk < count; chunk += chunkSize) {
        const double* from = costs + chunk;
        const std::size_t width = std::min(chunkSize, count - chunk);
        const int firstCol = static_cast<int>(chunk);
        std::uint64_t cells = findCells(from, width);
        if (cells == ~std::uint64_t{0} >> (chunkSize - width) && areFinite(from, width)) {
            for (std::size_t k = 0; k < width; ++k) {
                *out++ = {firstCol + static_cast<int>(k), from[k]};
            }
            continue;
        }
        for (; cells != 0; cells &= cells - 1) {
            const int k = __builtin_ctzll(cells);
            *out = {firstCol + k, from[k]};
            out += static_cast<int>(std::isfinite(from[k]));
        }
    }
    cellCount_ = static_cast<std::size_t>(out - cells_.data());
    endRow();
}

void SparseCosts::setTransposed(const SparseCosts& costs, std::size_t colCount) {
    cellCount_ = 0;
    makeRoom(costs.cellCount());
    cellCount_ = costs.cellCount();
    // Counts first where each row begins; filling it makes that its end.
    rowEnds_.assign(colCount + 1, 0);
    std::size_t* const ends = rowEnds_.data();
    const Cell* cell = costs.cells_.data();
    const Cell* const end = cell + cellCount_;
    for (; cell != end; ++cell) {
        ++ends[cell->col + 1];
    }
    for (std::size_t j = 0; j < colCount; ++j) {
        ends[j + 1] += ends[j];
    }
    Cell* const cells = cells_.data();
    for (std::size_t i = 0; i < costs.rowCount(); ++i) {
        const auto col = static_cast<int>(i);
        for (const Cell& from : costs.row(i)) {
            cells[ends[from.col]++] = {col, from.cost};
        }
    }
    rowEnds_.pop_back();
}

bool SparseCosts::hasEmptyRow() const {
    std::size_t begin = 0;
    for (const std::size_t end : rowEnds_) {
        if (begin == end) {
            return true;
        }
        begin = end;
    }
    return false;
}

/// @param count number of cells to make room for
void SparseCosts::grow(std::size_t count) {
    cells_.resize(std::max(count, 2 * cells_.size()));
}

}  // namespace Veskar
