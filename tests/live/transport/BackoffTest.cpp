// SPDX-License-Identifier: Apache-2.0
#include "live/transport/Backoff.h"

#include <chrono>
#include <set>

#include <gtest/gtest.h>

using namespace std::chrono_literals;
using Veskar::Live::Backoff;
using Veskar::Live::EventLoop;

TEST(Backoff, WaitsTwiceAsLongEachTimeUpToALimit) {
    for (unsigned seed = 1; seed <= 100; ++seed) {
        Backoff backoff(100ms, 1s, seed);
        for (const EventLoop::Duration most : {100ms, 200ms, 400ms, 800ms, 1000ms, 1000ms}) {
            const EventLoop::Duration wait = backoff.next();
            EXPECT_LE(wait, most);
            EXPECT_GE(wait, most / 2);
        }
        backoff.reset();
        EXPECT_LE(backoff.next(), 100ms);
    }
}

TEST(Backoff, KeepsClientsApart) {
    std::set<EventLoop::Duration> waits;
    for (unsigned seed = 1; seed <= 100; ++seed) {
        waits.insert(Backoff(100ms, 1s, seed).next());
    }
    EXPECT_GT(waits.size(), 90U);
}
