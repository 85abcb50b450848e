// SPDX-License-Identifier: Apache-2.0
#include "net/WaitBudget.h"

#include <algorithm>
#include <numeric>

namespace Veskar {

WaitBudget& WaitBudget::ofThisThread() {
    thread_local WaitBudget budget;
    return budget;
}

WaitBudget::Clock::duration WaitBudget::left(Clock::time_point now) {
    forget(now);
    const Clock::duration sum =
        std::accumulate(waited_.begin(), waited_.end(), Clock::duration::zero());
    return std::max(whole - sum, Clock::duration::zero());
}

void WaitBudget::spend(Clock::time_point begin, Clock::time_point end) {
    forget(end);
    waited_[static_cast<std::size_t>(newest_ % slots)] += end - begin;
}

void WaitBudget::forget(Clock::time_point now) {
    const std::int64_t slot = now.time_since_epoch() / slotLength;
    newest_ = std::max(newest_, slot - slots);
    while (newest_ < slot) {
        waited_[static_cast<std::size_t>(++newest_ % slots)] = Clock::duration::zero();
    }
}

}  // namespace Veskar
