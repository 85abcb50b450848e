// SPDX-License-Identifier: Apache-2.0
#include "net/WaitBudget.h"

#include <algorithm>
#include <chrono>
#include <random>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

using std::chrono::hours;
using std::chrono::milliseconds;
using std::chrono::seconds;
using Veskar::WaitBudget;

namespace {

using Duration = WaitBudget::Clock::duration;
using Time = WaitBudget::Clock::time_point;

constexpr Time start{hours(5)};

}  // namespace

TEST(WaitBudget, IsThreeTenthsOfASecond) {
    WaitBudget budget;
    EXPECT_EQ(budget.left(start), milliseconds(300));
}

TEST(WaitBudget, ShrinksByEachWait) {
    WaitBudget budget;
    budget.spend(start, start + milliseconds(250));
    EXPECT_EQ(budget.left(start + milliseconds(250)), milliseconds(50));
    budget.spend(start + milliseconds(250), start + milliseconds(290));
    EXPECT_EQ(budget.left(start + milliseconds(290)), milliseconds(10));
    budget.spend(start + milliseconds(290), start + milliseconds(500));
    EXPECT_EQ(budget.left(start + milliseconds(500)), Duration::zero()) << "never negative";
}

TEST(WaitBudget, ForgetsAWaitAfterASecondAndATenth) {
    WaitBudget budget;
    const Time end = start + milliseconds(250);
    budget.spend(start, end);
    EXPECT_EQ(budget.left(end + seconds(1)), milliseconds(50));
    EXPECT_EQ(budget.left(end + milliseconds(1100)), milliseconds(300));
}

TEST(WaitBudget, IsWholeAgainAfterALongTime) {
    WaitBudget budget;
    for (int i = 0; i < 30; ++i) {
        const Time now = start + milliseconds(100 * i);
        budget.spend(now, now + milliseconds(25));
    }
    EXPECT_EQ(budget.left(start + hours(1)), milliseconds(300));
}

TEST(WaitBudget, LetsASteadyUserWaitForAQuarterOfItsTime) {
    WaitBudget budget;
    for (int i = 0; i < 100; ++i) {
        const Time now = start + milliseconds(100 * i);
        EXPECT_GE(budget.left(now), milliseconds(25)) << i;
        budget.spend(now, now + milliseconds(25));
    }
}

// A thread that never exceeds its remaining budget waits at most 300 ms in any second.
TEST(WaitBudget, HoldsForEverySecondOfAHungryUser) {
    struct Wait {
        Time begin, end;
    };
    std::mt19937 random(7);
    std::uniform_int_distribution<int> pause(0, 80);
    std::uniform_int_distribution<int> wish(1, 250);
    WaitBudget budget;
    std::vector<Wait> waits;
    Time now = start;
    for (int i = 0; i < 3000; ++i) {
        const Time end = now + std::min<Duration>(milliseconds(wish(random)), budget.left(now));
        budget.spend(now, end);
        waits.push_back({now, end});
        now = end + milliseconds(pause(random));
    }
    std::size_t first = 0;
    for (std::size_t last = 0; last < waits.size(); ++last) {
        const Time from = waits[last].end - seconds(1);
        while (waits[first].end <= from) {
            ++first;
        }
        Duration sum = Duration::zero();
        for (std::size_t i = first; i <= last; ++i) {
            sum += waits[i].end - std::max(waits[i].begin, from);
        }
        ASSERT_LE(sum, milliseconds(300)) << "the second before wait " << last;
    }
}

TEST(WaitBudget, BelongsToOneThread) {
    WaitBudget::ofThisThread() = {};
    WaitBudget::ofThisThread().spend(start, start + milliseconds(100));
    std::thread other([] {
        EXPECT_EQ(WaitBudget::ofThisThread().left(start + milliseconds(100)), milliseconds(300));
    });
    other.join();
    EXPECT_EQ(WaitBudget::ofThisThread().left(start + milliseconds(100)), milliseconds(200));
    WaitBudget::ofThisThread() = {};
}
