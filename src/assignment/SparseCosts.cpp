// SPDX-License-Identifier: Apache-2.0
#include "assignment/SparseCosts.h"

#include <cmath>
#include <cstdint>
#include <cstring>

namespace Veskar {
namespace {

std::uint64_t bitsOf(double x) {
    static_assert(sizeof(double) == sizeof(std::uint64_t));
    std::uint64_t bits = 0;
    std::memcpy(&bits, &x, sizeof bits);
    return bits;
}

/// Writes a cell and advances past it unless it is forbidden. Free of branches, because which pairs
/// are cells cannot be predicted.
void appendCell(const double* costs, std::size_t col, SparseCosts::Cell*& out) {
    const double cost = costs[col];
    *out = {static_cast<int>(col), cost};
    const bool isCell = cost != forbiddenCost;
    out += static_cast<int>(isCell) & static_cast<int>(std::isfinite(cost));
}

}  // namespace

void SparseCosts::addRow(const double* costs, std::size_t count) {
    if (scratch_.size() <= count) {
        scratch_.resize(count + 1);  // one place is written beyond the last cell
    }
    const std::uint64_t forbidden = bitsOf(forbiddenCost);
    Cell* out = scratch_.data();
    std::size_t j = 0;
    for (; j + 2 <= count; j += 2) {
        // Most pairs of columns are forbidden.
        if (((bitsOf(costs[j]) ^ forbidden) | (bitsOf(costs[j + 1]) ^ forbidden)) != 0) {
            appendCell(costs, j, out);
            appendCell(costs, j + 1, out);
        }
    }
    if (j < count) {
        appendCell(costs, j, out);
    }
    cells_.insert(cells_.end(), scratch_.data(), out);
    endRows(1);
}

}  // namespace Veskar
