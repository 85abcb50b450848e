// SPDX-License-Identifier: Apache-2.0
#include "evaluate/Instants.h"
#include "evaluate/metrics/ConfirmationDelay.h"

#include <cmath>

#include <gtest/gtest.h>

namespace Workbench {
namespace {

TEST(ConfirmationDelay, CountsFromTheObjectsFirstMoment) {
    ConfirmationDelay metric;
    metric.add(instantOf(10.0, {{1, 0}}, {}), {});
    metric.add(instantOf(10.5, {{1, 0}, {2, 9}, {3, 50}}, {{7, 0}}), {{0, 0}});
    metric.add(instantOf(12.0, {{1, 0}, {2, 9}, {3, 50}}, {{7, 0}, {8, 9}}), {{0, 0}, {1, 1}});
    // Object 1 after 0.5 s, object 2 after 1.5 s, object 3 never.
    const ConfirmationDelay::Result result = metric.result();
    EXPECT_DOUBLE_EQ(result.mean, 1.0);
    EXPECT_DOUBLE_EQ(result.longest, 1.5);
    EXPECT_EQ(result.objectsFound, 2);
    EXPECT_EQ(result.objectsNeverFound, 1);
}

TEST(ConfirmationDelay, LaterMatchesDoNotCount) {
    ConfirmationDelay metric;
    metric.add(instantOf(0.0, {{1, 0}}, {{7, 0}}), {{0, 0}});
    metric.add(instantOf(9.0, {{1, 0}}, {{8, 0}}), {{0, 0}});
    EXPECT_EQ(metric.result().mean, 0.0);
    EXPECT_EQ(metric.result().longest, 0.0);
}

TEST(ConfirmationDelay, OfObjectsThatWereNeverFoundThereIsNone) {
    ConfirmationDelay metric;
    metric.add(instantOf(0.0, {{1, 0}}, {}), {});
    EXPECT_TRUE(std::isnan(metric.result().mean));
    EXPECT_TRUE(std::isnan(metric.result().longest));
    EXPECT_EQ(metric.result().objectsNeverFound, 1);
}

}  // namespace
}  // namespace Workbench
