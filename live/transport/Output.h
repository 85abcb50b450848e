// SPDX-License-Identifier: Apache-2.0
// Where messages go.
#pragma once

#include "live/transport/BoundedQueue.h"
#include "live/transport/Counters.h"

#include <string_view>

namespace Veskar::Live {

/// A way out of the host. Sending never waits.
class Output {
public:
    virtual ~Output() = default;
    /// @param message written as it is; lines have their ends
    virtual void send(std::string_view message) = 0;
    /// @return what was counted
    virtual OutputCounters counters() const = 0;
    /// @return whether nothing waits any more, as far as this host is concerned
    bool isDrained() const { return counters().waiting == 0; }
};

}  // namespace Veskar::Live
