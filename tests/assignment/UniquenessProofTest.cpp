// SPDX-License-Identifier: Apache-2.0
#include "assignment/UniquenessProof.h"
#include "support/Constants.h"

#include <gtest/gtest.h>

using Veskar::PricedAssignment;
using Veskar::SparseCosts;
using Veskar::UniquenessProof;

namespace {

using VeskarTest::F;

bool holds(const SparseCosts& costs, PricedAssignment solved) {
    solved.doubtful.assign(solved.u.size(), 1);
    return UniquenessProof().holds(costs, solved);
}

/// Rows 0 and 1 are assigned to columns 0 and 1; row 2 and column 2 are unassigned, although row 2
/// allows column 1.
class ThreeRows : public testing::Test {
protected:
    ThreeRows() {
        costs.add(0, 1.0);
        costs.add(1, 3.0);
        costs.endRows(1);
        costs.add(0, 2.0);
        costs.add(1, 2.5);
        costs.endRows(1);
        costs.add(1, 8.0);
        costs.endRows(1);
        price(-9994.0, -9993.0);
    }

    /// Sets column prices, and the row prices that make the assigned pairs tight.
    void price(double first, double second) {
        solved = {{1.0 - first, 2.5 - second, F}, {first, second, 0.0}, {0, 1, -1}, {0, 1, -1}};
    }

    SparseCosts costs;
    PricedAssignment solved;
};

TEST_F(ThreeRows, AreProvenByPricesWithClearDifferences) {
    EXPECT_TRUE(holds(costs, solved));
}

TEST_F(ThreeRows, AreNotProvenWhenSomePairIsCheaperThanItsPrices) {
    price(-9992.5, -9990.9);  // row 2 in column 1
    EXPECT_FALSE(holds(costs, solved));
    price(-9993.2, -9993.0);  // row 1 in column 0
    EXPECT_FALSE(holds(costs, solved));
}

TEST_F(ThreeRows, AreNotProvenWhenAnAssignedPairIsDearerThanItsPrices) {
    solved.u[0] -= 0.1;
    EXPECT_FALSE(holds(costs, solved));
}

// Rows that are not in doubt are not looked at: their price is that of their cheapest cell.
TEST_F(ThreeRows, AreLookedAtWhereTheyAreInDoubt) {
    price(-9992.5, -9990.9);  // row 2 in column 1
    solved.doubtful = {1, 1, 0};
    EXPECT_TRUE(UniquenessProof().holds(costs, solved));
    solved.doubtful = {0, 0, 1};
    EXPECT_FALSE(UniquenessProof().holds(costs, solved));
}

// Other optimal prices: a tight move is no counterexample as long as tight moves form no closed
// chain.
TEST_F(ThreeRows, AreProvenDespiteATightMove) {
    price(-9992.0, -9991.0);  // row 2 into column 1
    EXPECT_TRUE(holds(costs, solved));
    price(-9992.5, -9992.0);  // row 1 into column 0
    EXPECT_TRUE(holds(costs, solved));
}

TEST(UniquenessProof, FailsWhenTightMovesClose) {
    SparseCosts costs;
    costs.add(0, 1.0);
    costs.add(1, 3.0);
    costs.endRows(1);
    costs.add(0, 2.0);
    costs.add(1, 4.0);
    costs.endRows(1);
    EXPECT_FALSE(holds(costs, {{3.0, 4.0}, {-2.0, 0.0}, {0, 1}, {0, 1}}));
}

TEST(UniquenessProof, FailsWhenTightMovesCloseThroughWhatIsLeftOver) {
    SparseCosts costs;  // one row, two columns at the same cost
    costs.add(0, 1.0);
    costs.add(1, 1.0);
    costs.endRows(1);
    EXPECT_FALSE(holds(costs, {{1.0}, {0.0, 0.0}, {0}, {0, -1}}));
}

/// One row with one column, and another column.
class OneRow : public testing::Test {
protected:
    OneRow() {
        costs.add(0, 1.0);
        costs.endRows(1);
    }

    bool holdsFor(double u, double v, double leftOver) {
        return holds(costs, {{u}, {v, leftOver}, {0}, {0, -1}});
    }

    SparseCosts costs;
};

TEST_F(OneRow, IsProvenByAnyPricesThatKeepTheRelations) {
    EXPECT_TRUE(holdsFor(1.0, 0.0, 0.0));
    EXPECT_TRUE(holdsFor(501.0, -500.0, 0.0));
}

TEST_F(OneRow, IsNotProvenByPricesThatBreakThem) {
    EXPECT_FALSE(holdsFor(F + 1.0, -F, 0.0));  // costs more than leaving both unassigned
    EXPECT_FALSE(holdsFor(0.5, 0.5, 0.0));     // a positive column price
    EXPECT_FALSE(holdsFor(1.0, 0.0, -0.1));    // the free column has a price
    EXPECT_FALSE(holdsFor(1.0, 0.0, 0.1));
}

TEST(UniquenessProof, DemandsTheForbiddenCostOfWhatIsLeftOver) {
    SparseCosts costs;
    costs.endRows(1);
    EXPECT_TRUE(holds(costs, {{F}, {0.0}, {-1}, {-1}}));
    EXPECT_FALSE(holds(costs, {{F - 0.1}, {0.0}, {-1}, {-1}}));
}

TEST(UniquenessProof, AdmitsCostsThatAreClearlyBetterThanForbidden) {
    EXPECT_TRUE(UniquenessProof::admits(0.0));
    EXPECT_TRUE(UniquenessProof::admits(-F));
    EXPECT_FALSE(UniquenessProof::admits(-F - 1.0));
    EXPECT_FALSE(UniquenessProof::admits(F));
    EXPECT_FALSE(UniquenessProof::admits(F - 0.9 * UniquenessProof::clearMargin));
    EXPECT_TRUE(UniquenessProof::admits(F - 1.1 * UniquenessProof::clearMargin));
}

}  // namespace
