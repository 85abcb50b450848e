// SPDX-License-Identifier: Apache-2.0
// The optimal one-to-one assignment that the metrics rest on.
#pragma once

#include <utility>
#include <vector>

#include <Eigen/Core>

namespace Workbench {

/// Index pairs (row, column) in ascending row order.
using Pairs = std::vector<std::pair<int, int>>;

/// The one-to-one assignment of rows to columns with the greatest total gain.
///
/// Only pairs with a gain above zero are made; rows and columns may stay alone. Groups of rows and
/// columns that share no positive gain are solved apart.
///
/// @param gain finite gains; values up to zero stand for "no pair"
/// @return the pairs
Pairs assignWithGreatestGain(const Eigen::MatrixXd& gain);

}  // namespace Workbench
