// SPDX-License-Identifier: Apache-2.0
// The optimal one-to-one assignment that the metrics use.
#pragma once

#include <utility>
#include <vector>

#include <Eigen/Core>

namespace Workbench {

/// Index pairs (row, column) in ascending row order.
using Pairs = std::vector<std::pair<int, int>>;

/// The one-to-one assignment of rows to columns with the greatest total gain.
///
/// Only pairs with a positive gain are assigned; rows and columns may remain unassigned. Groups of
/// rows and columns without common positive gains are solved separately.
///
/// @param gain finite gains; values up to zero mean "no pair"
/// @return the pairs
Pairs assignWithGreatestGain(const Eigen::MatrixXd& gain);

}  // namespace Workbench
