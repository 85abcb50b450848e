// SPDX-License-Identifier: Apache-2.0
// How long to wait before the next attempt.
#pragma once

#include "live/transport/EventLoop.h"

#include <random>

namespace Veskar::Live {

/// Waits twice as long after each failure, up to a limit. Each wait is a random part of that, at
/// least half: clients that lost the same broker must not all come back at once.
class Backoff {
public:
    /// @param first the first wait, at most
    /// @param longest the longest one, at most
    /// @param seed of the random part
    Backoff(EventLoop::Duration first, EventLoop::Duration longest,
            unsigned seed = std::random_device()());

    /// @return the wait after one more failure
    EventLoop::Duration next();
    /// Begins anew after a success that has lasted.
    void reset() { wait_ = first_; }

private:
    EventLoop::Duration first_;
    EventLoop::Duration longest_;
    EventLoop::Duration wait_;
    std::minstd_rand random_;
};

}  // namespace Veskar::Live
