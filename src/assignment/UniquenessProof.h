// SPDX-License-Identifier: Apache-2.0
// Proves that an assignment is the only good one.
#pragma once

#include "assignment/IntIndexed.h"
#include "assignment/SparseCosts.h"

#include <cstddef>
#include <vector>

namespace Veskar {

/// A solved assignment problem. Only pairs that are not forbidden are listed; all other rows and
/// columns are left over, and forbidden pairs complete the assignment.
struct PricedAssignment {
    static constexpr int none = -1;

    IntIndexed<double> u;      ///< row prices
    IntIndexed<double> v;      ///< column prices
    IntIndexed<int> columnOf;  ///< column of each row or none
    IntIndexed<int> rowOf;     ///< row of each column or none
    /// Rows to look at. All others keep the price of their cheapest cell, which they have, or the
    /// forbidden cost without any, and no other cell of theirs is within the margin of it: as no
    /// column price is above 0, no slack of theirs is, either.
    IntIndexed<char> doubtful = {};
};

/// Proves that every other assignment is clearly worse, so that any solver has to find this one,
/// however it breaks ties.
///
/// With prices u <= forbidden and v <= 0 such that u[i] + v[j] <= c[i][j], with equality on the
/// assignment, u = forbidden for rows and v = 0 for columns that are left over, the cost of any
/// other assignment exceeds that of this one by the sum of its slacks, c[i][j] - u[i] - v[j]
/// (complementary slackness). It differs from this one by cycles of moves; if each cycle has a move
/// whose slack exceeds the margin below, all others are clearly worse.
/// The proof does not depend on how prices and assignment were found.
class UniquenessProof {
public:
    /// How much worse every other assignment has to be. Half a million times the rounding unit of
    /// the forbidden cost, so that no order of additions in a solver can hide the difference.
    static constexpr double clearMargin = 1e-6;

    /// @param cost cost of a pair that is not forbidden
    /// @return whether the proof covers it: clearly better than forbidden, and of a size at which
    ///         the margin exceeds the rounding error
    static bool admits(double cost) { return cost >= -forbiddenCost && isBelowForbidden(cost); }
    /// @return the part of that which concerns the forbidden cost
    static bool isBelowForbidden(double cost) { return cost <= forbiddenCost - clearMargin; }

    /// @param costs the problem
    /// @param solved its assignment and prices
    /// @return whether the proof holds
    bool holds(const SparseCosts& costs, const PricedAssignment& solved);

private:
    static bool columnPricesAreOptimal(const PricedAssignment& solved);
    bool inspectRow(const SparseCosts::Row& cells, const PricedAssignment& solved, std::size_t row);
    void collectLeftOver(const PricedAssignment& solved);
    void endMover(std::size_t row, std::size_t first);
    bool hasTightCycle();
    bool closesFrom(std::size_t start);

    enum State : char { Done, Unvisited, OnPath };
    struct Step {
        std::size_t node;
        std::size_t nextMove;
    };

    /// Moves with a slack within the margin, row after row: a row takes the column of the named
    /// row, which has to move in turn. All that is left over is one more node: through it rows
    /// leave the assignment and columns become free.
    std::vector<std::size_t> moves_;
    std::vector<std::size_t> movers_;     ///< rows that have such moves, and what is left over
    std::vector<std::size_t> firstMove_;  ///< of each row in `moves_`, if it has any
    std::vector<std::size_t> lastMove_;   ///< behind those
    std::vector<State> state_;            ///< of each row in the search for a cycle
    std::vector<Step> path_;              ///< the rows that are being visited
    bool reachesLeftOver_ = false;        ///< whether some move leads to what is left over
};

}  // namespace Veskar
