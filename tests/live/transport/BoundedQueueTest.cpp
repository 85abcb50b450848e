// SPDX-License-Identifier: Apache-2.0
#include "live/transport/BoundedQueue.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::ElementsAre;
using testing::IsEmpty;
using Veskar::Live::BoundedQueue;

namespace {

std::vector<std::string> contents(BoundedQueue<std::string>& queue) {
    std::vector<std::string> items;
    while (!queue.isEmpty()) {
        items.push_back(queue.pop());
    }
    return items;
}

}  // namespace

TEST(LiveBoundedQueue, DropsTheOldestMessagesAndCountsThem) {
    BoundedQueue<std::string> queue({3, 1000});
    for (const char* text : {"1", "2", "3", "4", "5"}) {
        queue.push(text, 1);
    }
    EXPECT_EQ(queue.dropped(), 2U);
    EXPECT_EQ(queue.size(), 3U);
    EXPECT_THAT(contents(queue), ElementsAre("3", "4", "5"));
}

TEST(LiveBoundedQueue, DropsTheOldestUntilTheBytesFit) {
    BoundedQueue<std::string> queue({100, 10});
    queue.push("a", 4);
    queue.push("b", 4);
    queue.push("c", 2);
    EXPECT_EQ(queue.dropped(), 0U);
    EXPECT_EQ(queue.bytes(), 10U);
    queue.push("d", 5);
    EXPECT_EQ(queue.dropped(), 2U);
    EXPECT_EQ(queue.bytes(), 7U);
    EXPECT_THAT(contents(queue), ElementsAre("c", "d"));
    EXPECT_EQ(queue.bytes(), 0U);
}

TEST(LiveBoundedQueue, DropsAMessageThatCanNeverFit) {
    BoundedQueue<std::string> queue({100, 10});
    queue.push("long", 11);
    EXPECT_EQ(queue.dropped(), 1U);
    EXPECT_THAT(contents(queue), IsEmpty());
}

TEST(LiveBoundedQueue, TakesBackTheOldestWhereItStood) {
    BoundedQueue<std::string> queue({2, 100});
    queue.push("1", 1);
    queue.push("2", 1);
    std::string first = queue.pop();
    queue.putBack(first, 1);
    EXPECT_EQ(queue.dropped(), 0U);
    first = queue.pop();
    queue.push("3", 1);
    queue.putBack(first, 1);
    EXPECT_EQ(queue.dropped(), 1U) << "there are three for two places, and it is the oldest";
    EXPECT_THAT(contents(queue), ElementsAre("2", "3"));
}

TEST(LiveBoundedQueue, CountsWhatIsClearedAway) {
    BoundedQueue<std::string> queue({10, 100});
    queue.push("1", 1);
    queue.push("2", 1);
    queue.clear();
    EXPECT_EQ(queue.dropped(), 2U);
    EXPECT_EQ(queue.bytes(), 0U);
    EXPECT_TRUE(queue.isEmpty());
}
