// SPDX-License-Identifier: Apache-2.0
#include "live/support/LoopUntil.h"
#include "live/transport/RateLimit.h"

#include <chrono>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace std::chrono_literals;
using namespace VeskarTest;
using testing::ElementsAre;
using Veskar::Live::EventLoop;
using Veskar::Live::RateLimit;

TEST(RateLimit, PassesTheFirstAtOnceAndThenTheLatest) {
    EventLoop loop;
    std::vector<std::string> passed;
    std::vector<EventLoop::Clock::time_point> times;
    RateLimit<std::string> limit(loop, 200ms, [&](const std::string& message) {
        passed.emplace_back(message);
        times.push_back(EventLoop::Clock::now());
    });
    for (const char* text : {"1", "2", "3", "4"}) {
        limit.offer(text);
    }
    EXPECT_THAT(passed, ElementsAre("1"));
    EXPECT_EQ(limit.replaced(), 2U);
    EXPECT_TRUE(loopUntil(loop, [&] { return passed.size() == 2; }));
    EXPECT_THAT(passed, ElementsAre("1", "4"));
    limit.offer("5");
    EXPECT_TRUE(loopUntil(loop, [&] { return passed.size() == 3; }));
    EXPECT_THAT(passed, ElementsAre("1", "4", "5"));
    EXPECT_GE(times[1] - times[0], 199ms);
    EXPECT_GE(times[2] - times[1], 199ms);
    EXPECT_EQ(limit.replaced(), 2U);
}

TEST(RateLimit, PassesEverythingWithoutAnInterval) {
    EventLoop loop;
    std::vector<std::string> passed;
    RateLimit<std::string> limit(loop, 0ms,
                                 [&](const std::string& message) { passed.emplace_back(message); });
    for (const char* text : {"1", "2", "3"}) {
        limit.offer(text);
    }
    EXPECT_THAT(passed, ElementsAre("1", "2", "3"));
}

TEST(RateLimit, PassesTheLastAtTheEnd) {
    EventLoop loop;
    std::vector<std::string> passed;
    RateLimit<std::string> limit(loop, 1h,
                                 [&](const std::string& message) { passed.emplace_back(message); });
    limit.offer("1");
    limit.offer("2");
    limit.flush();
    limit.flush();
    EXPECT_THAT(passed, ElementsAre("1", "2"));
}
