// SPDX-License-Identifier: Apache-2.0
#include "live/transport/Backoff.h"

#include <algorithm>

namespace Veskar::Live {

Backoff::Backoff(EventLoop::Duration first, EventLoop::Duration longest, unsigned seed)
    : first_(first), longest_(longest), wait_(first), random_(seed) {}

EventLoop::Duration Backoff::next() {
    std::uniform_int_distribution<EventLoop::Duration::rep> part(wait_.count() / 2, wait_.count());
    const EventLoop::Duration wait(part(random_));
    wait_ = std::min(2 * wait_, longest_);
    return wait;
}

}  // namespace Veskar::Live
