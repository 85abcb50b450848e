// SPDX-License-Identifier: Apache-2.0
#include "io/BoundedQueue.h"

#include <atomic>
#include <chrono>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

using Workbench::BoundedQueue;

namespace {

std::exception_ptr fault(const char* text) {
    return std::make_exception_ptr(std::runtime_error(text));
}

std::optional<int> next(BoundedQueue<int>& queue) {
    int item = 0;
    return queue.pop(item) ? std::optional<int>(item) : std::nullopt;
}

}  // namespace

TEST(BoundedQueue, HandsOverEveryItemInItsOrder) {
    constexpr int count = 10000;
    BoundedQueue<int> queue(8);
    std::thread producer([&] {
        for (int i = 0; i < count; ++i) {
            queue.push(i);
        }
        queue.close();
    });
    std::vector<int> received;
    while (const auto item = next(queue)) {
        received.push_back(*item);
    }
    producer.join();
    ASSERT_EQ(received.size(), std::size_t{count});
    for (int i = 0; i < count; ++i) {
        ASSERT_EQ(received[static_cast<std::size_t>(i)], i);
    }
}

TEST(BoundedQueue, HoldsNoMoreThanItsCapacity) {
    BoundedQueue<int> queue(2);
    EXPECT_TRUE(queue.push(1));
    EXPECT_TRUE(queue.push(2));
    std::atomic<bool> isThirdIn = false;
    std::thread producer([&] {
        queue.push(3);
        isThirdIn = true;
    });
    // Longer than the interval at which waiting threads check the queue.
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    EXPECT_FALSE(isThirdIn);
    EXPECT_EQ(next(queue), 1);
    producer.join();
    EXPECT_EQ(next(queue), 2);
    EXPECT_EQ(next(queue), 3);
}

TEST(BoundedQueue, GivesWhatWaitsBeforeItSaysThatItIsClosed) {
    BoundedQueue<int> queue(2);
    queue.push(1);
    queue.close();
    EXPECT_FALSE(queue.push(2));
    EXPECT_EQ(next(queue), 1);
    EXPECT_EQ(next(queue), std::nullopt);
}

TEST(BoundedQueue, TellsTheConsumerWhyItWasClosedOnceItIsEmpty) {
    BoundedQueue<int> queue(2);
    queue.push(1);
    queue.close(fault("line 2 is wrong"));
    queue.close(fault("a later reason"));
    EXPECT_EQ(next(queue), 1);
    try {
        next(queue);
        FAIL();
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "line 2 is wrong");
    }
}

TEST(BoundedQueue, TellsTheProducerWhyItWasClosedAtOnce) {
    BoundedQueue<int> queue(2);
    queue.push(1);
    queue.close(fault("disk full"));
    EXPECT_THROW(queue.push(2), std::runtime_error);
}

TEST(BoundedQueue, ClosingWakesAProducerThatWaits) {
    BoundedQueue<int> queue(1);
    queue.push(1);
    bool isTaken = true;
    std::thread producer([&] { isTaken = queue.push(2); });
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    queue.close();
    producer.join();
    EXPECT_FALSE(isTaken);
}
