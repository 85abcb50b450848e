// SPDX-License-Identifier: Apache-2.0
// The optimal one-to-one assignment that the metrics use.
#pragma once

#include <cstddef>
#include <utility>
#include <vector>

namespace Workbench {

/// Index pairs (row, column) in ascending row order.
using Pairs = std::vector<std::pair<int, int>>;

/// What assigning a row to a column gains.
struct Gain {
    int row;
    int column;
    double value;
};

/// The one-to-one assignment of rows to columns with the greatest total gain.
///
/// Only pairs with a positive gain are assigned; rows and columns may remain unassigned. The time
/// depends on the number of gains, not on the size of the problem.
///
/// @param rows number of rows
/// @param columns number of columns
/// @param gains finite gains in ascending row order, at most one of a pair; pairs that are missing,
///              or whose gain is not positive, can't be assigned
/// @return the places of the assigned pairs in @p gains, in ascending row order
std::vector<std::size_t> assignWithGreatestGain(std::size_t rows, std::size_t columns,
                                                const std::vector<Gain>& gains);

}  // namespace Workbench
