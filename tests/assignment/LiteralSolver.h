// SPDX-License-Identifier: Apache-2.0
// Test oracle: the assignment algorithm as in the textbook, step by step, without optimisation.
#pragma once

#include <utility>
#include <vector>

namespace VeskarTest {

using Costs = std::vector<std::vector<double>>;
using Allowed = std::vector<std::vector<bool>>;
using Pairs = std::vector<std::pair<int, int>>;

/// Result of the literal solver.
struct LiteralSolution {
    std::vector<int> columnOfRow;
    int longestPass = 0;          ///< largest number of steps in a row reduction pass
    bool endingRuleUsed = false;  ///< whether a rule that terminates the row reduction applied
};

/// @param input square cost matrix; values that are not finite count as 9999
LiteralSolution solveLiterally(const Costs& input);

/// Pads the top-left rows x cols block to a square, solves it and keeps the allowed pairs.
Pairs runLiterally(int rows, int cols, const Costs& cost, const Allowed& allowed);

}  // namespace VeskarTest
