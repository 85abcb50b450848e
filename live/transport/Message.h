// SPDX-License-Identifier: Apache-2.0
// What an input hands on.
#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

namespace Veskar::Live {

/// Longer messages are dropped: no sensor sends them, and they would fill the memory.
constexpr std::size_t longestMessage = std::size_t{16} << 20;

/// A message of any publisher of an input. Valid during the call that hands it over.
struct Message {
    /// Who sent it: the MQTT topic; the name of the input, where there is but one publisher;
    /// "NAME#K" for the connection number K of the input.
    const std::string& channel;
    std::string_view bytes;  ///< the text; a line has lost its end
    std::chrono::steady_clock::time_point arrived;
};

/// Receives the messages of an input on the loop's thread. It must not destroy the input. What it
/// throws reaches the caller of EventLoop::run; the input goes on with the next message.
using Receiver = std::function<void(const Message&)>;

/// Called behind the last message of a channel that never returns, such as a connection. May be
/// empty. Must not destroy the input.
using Departure = std::function<void(const std::string& channel)>;

}  // namespace Veskar::Live
