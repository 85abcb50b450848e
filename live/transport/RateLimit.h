// SPDX-License-Identifier: Apache-2.0
// Keeps messages apart.
#pragma once

#include "live/transport/EventLoop.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <utility>

namespace Veskar::Live {

/// Passes at most one item per interval on: the first at once, and at the end of the interval the
/// last one that came within it.
///
/// @tparam Item a message, or what one is made of
template <typename Item>
class RateLimit {
public:
    /// @param loop runs the delays
    /// @param interval between items; 0: no limit
    /// @param sink receives them
    RateLimit(EventLoop& loop, EventLoop::Duration interval, std::function<void(const Item&)> sink)
        : interval_(interval), sink_(std::move(sink)), timer_(loop.timer([this] { flush(); })) {}

    /// @param item goes on, now or later, or is replaced by a later one
    void offer(Item item) {
        if (delayed_) {
            ++replaced_;
            delayed_ = std::move(item);
        } else if (next_ && EventLoop::Clock::now() < *next_) {
            delayed_ = std::move(item);
            timer_.expireAt(*next_);
        } else {
            pass(item);
        }
    }
    /// Passes on what is delayed, as at the end of the program.
    void flush() {
        if (delayed_) {
            const Item item = std::move(*delayed_);
            delayed_.reset();
            timer_.disarm();
            pass(item);
        }
    }
    /// @return how many were replaced
    std::uint64_t replaced() const { return replaced_; }

private:
    void pass(const Item& item) {
        next_ = EventLoop::Clock::now() + interval_;
        sink_(item);
    }

    EventLoop::Duration interval_;
    std::function<void(const Item&)> sink_;
    EventLoop::Timer timer_;
    std::optional<EventLoop::Clock::time_point> next_;
    std::optional<Item> delayed_;
    std::uint64_t replaced_ = 0;
};

}  // namespace Veskar::Live
