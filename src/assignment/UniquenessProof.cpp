// SPDX-License-Identifier: Apache-2.0
#include "assignment/UniquenessProof.h"

namespace Veskar {
namespace {

constexpr int none = PricedAssignment::none;

/// Rounding error that the optimality conditions tolerate.
constexpr double tolerance = 1e-10;

}  // namespace

bool UniquenessProof::holds(const SparseCosts& costs, const PricedAssignment& solved) {
    moves_.clear();
    firstMove_.clear();
    bool optimal = columnPricesAreOptimal(solved);
    for (std::size_t i = 0; i < solved.u.size() && optimal; ++i) {
        firstMove_.push_back(moves_.size());
        optimal = inspectRow(costs.row(i), solved, i);
    }
    return optimal && !hasTightCycle(solved);
}

bool UniquenessProof::columnPricesAreOptimal(const PricedAssignment& solved) {
    bool optimal = true;
    for (std::size_t j = 0; j < solved.v.size(); ++j) {
        const bool leftOver = solved.rowOf[j] == none;
        optimal = optimal && solved.v[j] <= tolerance && (!leftOver || solved.v[j] >= -tolerance);
    }
    return optimal;
}

/// Collects the moves of a row whose slack is within the margin.
/// @return whether price and pairs of the row meet the optimality conditions
bool UniquenessProof::inspectRow(const SparseCosts::Row& cells, const PricedAssignment& solved,
                                 std::size_t row) {
    const std::size_t leftOver = solved.u.size();
    const int own = solved.columnOf[row];
    const double price = solved.u[row];
    const double* prices = solved.v.data();
    const double slackOut = forbiddenCost - price;
    bool optimal = slackOut >= -tolerance && (own != none || slackOut <= tolerance);
    if (own != none && slackOut <= clearMargin) {
        moves_.push_back(leftOver);
    }
    for (const SparseCosts::Cell& cell : cells) {
        const double slack = cell.cost - price - prices[cell.col];
        optimal = optimal && admits(cell.cost) && slack >= -tolerance;
        if (cell.col == own) {
            optimal = optimal && slack <= tolerance;
        } else if (slack <= clearMargin) {
            const int holder = solved.rowOf[cell.col];
            moves_.push_back(holder == none ? leftOver : static_cast<std::size_t>(holder));
        }
    }
    return optimal;
}

/// Whether the moves with a slack within the margin form a cycle: removes the rows that no move
/// leads to (topological sorting) until none is left or only cycles are.
bool UniquenessProof::hasTightCycle(const PricedAssignment& solved) {
    if (moves_.empty()) {
        return false;
    }
    const std::size_t leftOver = solved.u.size();
    firstMove_.push_back(moves_.size());
    for (std::size_t i = 0; i < leftOver; ++i) {
        const int col = solved.columnOf[i];
        if (col == none || solved.v[col] >= -clearMargin) {
            moves_.push_back(i);
        }
    }
    firstMove_.push_back(moves_.size());
    movesInto_.assign(leftOver + 1, 0);
    for (const std::size_t to : moves_) {
        ++movesInto_[to];
    }
    settled_.clear();
    for (std::size_t i = 0; i <= leftOver; ++i) {
        if (movesInto_[i] == 0) {
            settled_.push_back(i);
        }
    }
    for (std::size_t k = 0; k < settled_.size(); ++k) {
        for (std::size_t m = firstMove_[settled_[k]]; m < firstMove_[settled_[k] + 1]; ++m) {
            if (--movesInto_[moves_[m]] == 0) {
                settled_.push_back(moves_[m]);
            }
        }
    }
    return settled_.size() <= leftOver;
}

}  // namespace Veskar
