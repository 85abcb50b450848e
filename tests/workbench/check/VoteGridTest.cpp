// SPDX-License-Identifier: Apache-2.0
// Voting for differences between two sensors.
#include <veskar-host/Projection.h>

#include "check/VoteGrid.h"

#include <gtest/gtest.h>

using Veskar::Host::radians;

namespace Workbench {
namespace {

TEST(VoteGrid, FindsTheDifferenceThatMostPairsHave) {
    VoteGrid grid(30);
    for (std::uint64_t voter = 1; voter <= 10; ++voter) {
        const auto x = static_cast<double>(voter);
        grid.vote(voter, radians(3.0 + 0.02 * x), 1.2 + 0.002 * x);
        grid.vote(voter, radians(-5.0 + x), -2.0 + 0.3 * x);
    }
    EXPECT_EQ(grid.most(), 10U);
    EXPECT_TRUE(grid.best().holds(radians(3.1), 1.21));
    EXPECT_FALSE(grid.best().holds(radians(-3.0), 1.21));
    EXPECT_FALSE(grid.best().holds(radians(3.1), 0.0));
}

TEST(VoteGrid, GivesEverybodyOneVoteForAWindow) {
    VoteGrid grid(3);
    for (int i = 0; i < 5; ++i) {
        grid.vote(1, radians(0.1 * i), 0.01 * i);
    }
    EXPECT_EQ(grid.most(), 1U);
    grid.vote(2, 0.0, 0.0);
    EXPECT_EQ(grid.most(), 2U);
}

TEST(VoteGrid, LeavesOutWhatIsTooFarOff) {
    VoteGrid grid(3);
    grid.vote(1, radians(30.0), 0.0);
    grid.vote(2, 0.0, 1e9);
    grid.vote(3, 0.0, -0.5);
    EXPECT_EQ(grid.most(), 0U);
}

}  // namespace
}  // namespace Workbench
