// SPDX-License-Identifier: Apache-2.0
// How long a thread may wait for other processes.
#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>

namespace Veskar {

/// What the waits of one thread may come to, however many services it asks and whichever of them
/// are silent: 300 ms within any second. So no frame of the fusion is held for longer.
class WaitBudget {
public:
    using Clock = std::chrono::steady_clock;
    static constexpr Clock::duration whole = std::chrono::milliseconds(300);

    /// @return the calling thread's own
    static WaitBudget& ofThisThread();

    /// @return how long a wait that begins at a time may last
    Clock::duration left(Clock::time_point now);
    /// Counts a wait; times must not go back from call to call.
    void spend(Clock::time_point begin, Clock::time_point end);

private:
    // A second in slots, and the slot that has begun. A wait counts in the slot of its end.
    static constexpr Clock::duration slotLength = std::chrono::milliseconds(100);
    static constexpr std::int64_t slots = std::chrono::seconds(1) / slotLength + 1;

    void forget(Clock::time_point now);

    std::array<Clock::duration, static_cast<std::size_t>(slots)> waited_{};
    std::int64_t newest_ = 0;
};

}  // namespace Veskar
