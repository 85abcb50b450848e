// SPDX-License-Identifier: Apache-2.0
// The assignment algorithm written down step by step, as slowly as it reads: the oracle.
#pragma once

#include <utility>
#include <vector>

namespace VeskarTest {

using Costs = std::vector<std::vector<double>>;
using Allowed = std::vector<std::vector<bool>>;
using Pairs = std::vector<std::pair<int, int>>;

/// What the literal solver did.
struct LiteralSolution {
    std::vector<int> columnOfRow;
    int longestPass = 0;          ///< most steps that a pass of the row reduction took
    bool endingRuleUsed = false;  ///< whether a rule that makes the row reduction end has acted
};

/// @param input square cost matrix; what is not finite counts as 9999
LiteralSolution solveLiterally(const Costs& input);

/// Pads the top-left rows x cols block to a square, solves it and keeps the allowed pairs.
Pairs runLiterally(int rows, int cols, const Costs& cost, const Allowed& allowed);

}  // namespace VeskarTest
