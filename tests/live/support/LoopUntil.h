// SPDX-License-Identifier: Apache-2.0
// Runs an event loop until something has happened.
#pragma once

#include "live/transport/EventLoop.h"

#include <chrono>
#include <functional>

namespace VeskarTest {

/// Runs the loop until a condition holds, checking after each event.
/// @return false when it does not hold within a very long time
inline bool loopUntil(Veskar::Live::EventLoop& loop, const std::function<bool()>& condition) {
    using Clock = Veskar::Live::EventLoop::Clock;
    const Clock::time_point end = Clock::now() + std::chrono::seconds(60);
    while (!condition()) {
        if (Clock::now() > end) {
            return false;
        }
        // Short: another thread or process may let the condition hold without an event here.
        loop.turn(std::chrono::milliseconds(5));
    }
    return true;
}

/// Runs the loop until nothing happens for a while.
inline void loopUntilIdle(Veskar::Live::EventLoop& loop) {
    while (loop.turn(std::chrono::milliseconds(20))) {
    }
}

}  // namespace VeskarTest
