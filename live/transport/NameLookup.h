// SPDX-License-Identifier: Apache-2.0
// Asks for a host's addresses without keeping the loop waiting.
#pragma once

#include "live/transport/EventLoop.h"

#include <functional>
#include <memory>
#include <string>

namespace Veskar::Live {

/// Finds out whether a host's name has an address. The system's lookup waits for name servers, for
/// half a minute when they are away; it therefore runs on a thread of its own, which ends by
/// itself. When the lookup succeeds here, the next one is a matter of milliseconds.
class NameLookup {
public:
    /// @param loop runs the callback
    /// @param host name or address; addresses and "localhost" are known without asking
    /// @param done called once, never within this constructor, unless the object is destroyed
    /// before
    ///             that; receives why there is no address, or nothing when there is one. It may
    ///             destroy the object.
    NameLookup(EventLoop& loop, const std::string& host,
               std::function<void(const std::string& fault)> done);

private:
    struct Answer;

    std::shared_ptr<Answer> answer_;
    EventLoop::Watch watch_;
};

}  // namespace Veskar::Live
