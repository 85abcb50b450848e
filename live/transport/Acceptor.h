// SPDX-License-Identifier: Apache-2.0
// Takes the connections of a listening socket.
#pragma once

#include "live/transport/EventLoop.h"
#include "live/transport/Faults.h"
#include "live/transport/ListeningSocket.h"

#include <functional>
#include <string>

namespace Veskar::Live {

/// Accepts connections. When the system has no room for one more, it rests for a second.
class Acceptor {
public:
    /// @param loop runs the acceptor
    /// @param listening where connections come
    /// @param name for faults, as "input radar"
    /// @param faults receives what the system refuses
    /// @param accepted receives connections, which do not wait
    Acceptor(EventLoop& loop, ListeningSocket listening, std::string name, Faults& faults,
             std::function<void(FileDescriptor)> accepted);

    /// @return the port of a TCP socket
    std::uint16_t port() const { return listening_.port(); }

private:
    void accept();

    ListeningSocket listening_;
    std::string name_;
    Faults& faults_;
    std::function<void(FileDescriptor)> accepted_;
    EventLoop::Watch watch_;
    EventLoop::Timer rest_;
};

}  // namespace Veskar::Live
