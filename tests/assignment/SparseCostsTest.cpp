// SPDX-License-Identifier: Apache-2.0
#include "assignment/SparseCosts.h"
#include "support/Constants.h"

#include <vector>

#include <gtest/gtest.h>

using Veskar::SparseCosts;

namespace {

using VeskarTest::F;
using VeskarTest::infinite;
using VeskarTest::nan;

std::vector<std::pair<int, double>> contentOf(const SparseCosts::Row& row) {
    std::vector<std::pair<int, double>> content;
    for (const SparseCosts::Cell& cell : row) {
        content.emplace_back(cell.col, cell.cost);
    }
    return content;
}

using Content = std::vector<std::pair<int, double>>;

TEST(SparseCosts, KeepsRowAfterRow) {
    SparseCosts costs;
    costs.add(3, 1.5);
    costs.add(7, 0.5);
    costs.endRows(3);
    costs.add(0, 2.5);
    costs.endRows(1);
    EXPECT_EQ(costs.rowCount(), 4u);
    EXPECT_EQ(costs.cellCount(), 3u);
    EXPECT_EQ(contentOf(costs.row(0)), (Content{{3, 1.5}, {7, 0.5}}));
    EXPECT_TRUE(costs.row(1).empty());
    EXPECT_TRUE(costs.row(2).empty());
    EXPECT_EQ(contentOf(costs.row(3)), (Content{{0, 2.5}}));
    costs.clear();
    EXPECT_EQ(costs.rowCount(), 0u);
    EXPECT_EQ(costs.cellCount(), 0u);
}

TEST(SparseCosts, FindsCellsByRowAndColumn) {
    SparseCosts costs;
    costs.endRows(1);
    costs.add(3, 1.5);
    costs.add(7, 0.5);
    costs.endRows(1);
    EXPECT_EQ(costs.find(0, 3), nullptr);
    EXPECT_EQ(costs.find(1, 4), nullptr);
    EXPECT_EQ(costs.find(1, 8), nullptr);
    EXPECT_EQ(costs.find(1, -1), nullptr);
    ASSERT_NE(costs.find(1, 7), nullptr);
    EXPECT_EQ(costs.find(1, 7)->cost, 0.5);
}

TEST(SparseCosts, DropsFromTheOpenRowAlone) {
    SparseCosts costs;
    costs.add(1, 1.0);
    costs.endRows(1);
    costs.add(1, 2.0);
    costs.add(2, 3.0);
    costs.add(3, 4.0);
    costs.dropIf([](int col) { return col != 2; });
    EXPECT_EQ(contentOf(costs.openRow()), (Content{{2, 3.0}}));
    costs.endRows(1);
    EXPECT_EQ(contentOf(costs.row(0)), (Content{{1, 1.0}}));
    EXPECT_EQ(contentOf(costs.row(1)), (Content{{2, 3.0}}));
}

TEST(SparseCosts, ReadsOfARowWhatIsNeitherForbiddenNorWithoutValue) {
    SparseCosts costs;
    for (const std::vector<double>& row : {std::vector<double>{F, F, 1.0, F, F},
                                           {nan, 2.0, infinite, -infinite, 0.0},
                                           {},
                                           {F},
                                           {-0.0, 9999.5, F, nan, -1e300, 3.0}}) {
        costs.addRow(row.data(), row.size());
    }
    ASSERT_EQ(costs.rowCount(), 5u);
    EXPECT_EQ(contentOf(costs.row(0)), (Content{{2, 1.0}}));
    EXPECT_EQ(contentOf(costs.row(1)), (Content{{1, 2.0}, {4, 0.0}}));
    EXPECT_TRUE(costs.row(2).empty());
    EXPECT_TRUE(costs.row(3).empty());
    EXPECT_EQ(contentOf(costs.row(4)), (Content{{0, 0.0}, {1, 9999.5}, {4, -1e300}, {5, 3.0}}));
}

}  // namespace
