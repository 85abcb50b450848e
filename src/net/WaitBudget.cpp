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
        std::accumulate(waited.begin(), waited.end(), Clock::duration::zero());
    return std::max(whole - sum, Clock::duration::zero());
}

void WaitBudget::spend(Clock::time_point begin, Clock::time_point end) {
    forget(end);
    waited[static_cast<std::size_t>(newest % slots)] += end - begin;
}

void WaitBudget::forget(Clock::time_point now) {
    const std::int64_t slot = now.time_since_epoch() / slotLength;
    newest = std::max(newest, slot - slots);
    while (newest < slot) {
        waited[static_cast<std::size_t>(++newest % slots)] = Clock::duration::zero();
    }
}

}  // namespace Veskar
