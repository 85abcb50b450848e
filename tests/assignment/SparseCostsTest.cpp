// SPDX-License-Identifier: Apache-2.0
#include "assignment/SparseCosts.h"
#include "support/Constants.h"
#include "support/RandomEstimates.h"

#include <vector>

#include <gtest/gtest.h>

using Veskar::SparseCosts;

namespace {

using VeskarTest::F;
using VeskarTest::infinite;
using VeskarTest::nan;
using VeskarTest::RandomEstimates;

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

// Rows are read in chunks of 64 columns and blocks of 8.
TEST(SparseCosts, ReadsRowsOfAnyLength) {
    RandomEstimates random(41);
    for (std::size_t count = 1; count < 200; ++count) {
        for (const double density : {0.05, 0.5, 1.0}) {
            std::vector<double> row(count, F);
            Content expected;
            for (std::size_t j = 0; j < count; ++j) {
                if (random.uniform(0.0, 1.0) < density) {
                    row[j] = random.uniform(0.0, 5.0);
                    expected.emplace_back(j, row[j]);
                }
            }
            SparseCosts costs;
            costs.addRow(row.data(), count);
            ASSERT_EQ(contentOf(costs.row(0)), expected) << count << " columns";
        }
    }
}

TEST(SparseCosts, LeavesOutWhatIsNotFiniteAmongManyCells) {
    for (const double other : {nan, infinite, -infinite}) {
        std::vector<double> row(130, 1.0);
        row[17] = other;
        row[64] = other;
        SparseCosts costs;
        costs.addRow(row.data(), row.size());
        EXPECT_EQ(costs.cellCount(), 128u);
        EXPECT_EQ(costs.find(0, 17), nullptr);
        EXPECT_EQ(costs.find(0, 64), nullptr);
    }
    SparseCosts huge;  // finite, although their sum is not
    huge.addRow(std::vector<double>(64, 1e308).data(), 64);
    EXPECT_EQ(huge.cellCount(), 64u);
}

TEST(SparseCosts, ExchangesRowsAndColumns) {
    SparseCosts costs;
    costs.add(1, 1.5);
    costs.add(2, 2.5);
    costs.endRow();
    costs.endRow();
    costs.add(1, 0.5);
    costs.endRow();
    SparseCosts exchanged;
    exchanged.setTransposed(costs, 4);
    ASSERT_EQ(exchanged.rowCount(), 4u);
    EXPECT_EQ(exchanged.cellCount(), 3u);
    EXPECT_TRUE(exchanged.row(0).empty());
    EXPECT_EQ(contentOf(exchanged.row(1)), (Content{{0, 1.5}, {2, 0.5}}));
    EXPECT_EQ(contentOf(exchanged.row(2)), (Content{{0, 2.5}}));
    EXPECT_TRUE(exchanged.row(3).empty());
}

TEST(SparseCosts, KnowsWhetherARowIsEmpty) {
    SparseCosts costs;
    EXPECT_FALSE(costs.hasEmptyRow());
    costs.add(1, 1.5);
    costs.endRow();
    EXPECT_FALSE(costs.hasEmptyRow());
    costs.endRow();
    EXPECT_TRUE(costs.hasEmptyRow());
}

}  // namespace
