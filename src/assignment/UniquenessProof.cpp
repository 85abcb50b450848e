// SPDX-License-Identifier: Apache-2.0
#include "assignment/UniquenessProof.h"

#include <algorithm>

namespace Veskar {
namespace {

constexpr int none = PricedAssignment::none;

/// Rounding error that the optimality conditions tolerate.
constexpr double tolerance = 1e-10;

}  // namespace

bool UniquenessProof::holds(const SparseCosts& costs, const PricedAssignment& solved) {
    const std::size_t rowCount = solved.u.size();
    if (std::find(solved.doubtful.begin(), solved.doubtful.end(), 1) == solved.doubtful.end()) {
        return true;
    }
    moves_.clear();
    movers_.clear();
    firstMove_.resize(rowCount + 1);
    lastMove_.resize(rowCount + 1);
    state_.assign(rowCount + 1, Done);
    reachesLeftOver_ = false;
    if (!columnPricesAreOptimal(solved)) {
        return false;
    }
    for (std::size_t i = 0; i < rowCount; ++i) {
        if (solved.doubtful[i] != 0 && !inspectRow(costs.row(i), solved, i)) {
            return false;
        }
    }
    if (reachesLeftOver_) {
        collectLeftOver(solved);
    }
    return !hasTightCycle();
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
    const int* rowOf = solved.rowOf.data();
    const double slackOut = forbiddenCost - price;
    bool optimal = slackOut >= -tolerance && (own != none || slackOut <= tolerance);
    const std::size_t first = moves_.size();
    const auto addMove = [&](int holder) {
        reachesLeftOver_ = reachesLeftOver_ || holder == none;
        moves_.push_back(holder == none ? leftOver : static_cast<std::size_t>(holder));
    };
    if (own != none && slackOut <= clearMargin) {
        addMove(none);
    }
    bool holdsOwn = own == none;
    for (const SparseCosts::Cell& cell : cells) {
        const double slack = cell.cost - price - prices[cell.col];
        if (slack <= clearMargin) {  // seldom
            optimal = optimal && slack >= -tolerance;
            if (cell.col != own) {
                addMove(rowOf[cell.col]);
            } else {
                holdsOwn = slack <= tolerance;
            }
        }
    }
    endMover(row, first);
    return optimal && holdsOwn;
}

/// Collects the moves that what is left over offers: a row may get a column again, or one whose
/// price is 0 may do without its row.
void UniquenessProof::collectLeftOver(const PricedAssignment& solved) {
    const std::size_t leftOver = solved.u.size();
    const std::size_t first = moves_.size();
    for (std::size_t i = 0; i < leftOver; ++i) {
        const int col = solved.columnOf[i];
        if (col == none || solved.v[col] >= -clearMargin) {
            moves_.push_back(i);
        }
    }
    endMover(leftOver, first);
}

void UniquenessProof::endMover(std::size_t row, std::size_t first) {
    if (moves_.size() > first) {
        movers_.push_back(row);
        firstMove_[row] = first;
        lastMove_[row] = moves_.size();
        state_[row] = Unvisited;
    }
}

/// Whether the moves with a slack within the margin form a cycle.
bool UniquenessProof::hasTightCycle() {
    return std::any_of(movers_.begin(), movers_.end(),
                       [this](std::size_t row) { return closesFrom(row); });
}

/// Follows the moves from a row, depth first, as far as they are new.
/// @return whether they lead back to a row on their way
bool UniquenessProof::closesFrom(std::size_t start) {
    if (state_[start] == Done) {
        return false;
    }
    path_.clear();
    const auto visit = [this](std::size_t node) {
        state_[node] = OnPath;
        path_.push_back({node, firstMove_[node]});
    };
    visit(start);
    while (!path_.empty()) {
        Step& step = path_.back();
        if (step.nextMove == lastMove_[step.node]) {
            state_[step.node] = Done;
            path_.pop_back();
            continue;
        }
        const std::size_t to = moves_[step.nextMove++];
        if (state_[to] == OnPath) {
            return true;
        }
        if (state_[to] == Unvisited) {
            visit(to);
        }
    }
    return false;
}

}  // namespace Veskar
