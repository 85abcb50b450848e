// SPDX-License-Identifier: Apache-2.0
// A connection that can be cut.
#pragma once

#include "live/support/Client.h"
#include "live/transport/Acceptor.h"
#include "live/transport/EventLoop.h"
#include "live/transport/Faults.h"

#include <cstdint>
#include <list>

namespace VeskarTest {

/// Passes bytes between its clients and a server on the same loop.
class Proxy {
public:
    Proxy(Veskar::Live::EventLoop& loop, std::uint16_t server);

    /// @return where clients connect
    std::uint16_t port() const { return acceptor_.port(); }
    /// @return bytes that clients have sent
    std::size_t sent() const { return sent_; }
    /// @return bytes that the server has sent
    std::size_t received() const { return received_; }
    /// Ends all connections, without passing on what waits.
    void cut() { connections_.clear(); }

private:
    struct Connection {
        Veskar::FileDescriptor client;
        Veskar::FileDescriptor server;
        Veskar::Live::EventLoop::Watch fromClient;
        Veskar::Live::EventLoop::Watch fromServer;
    };

    void add(Veskar::FileDescriptor client);

    Veskar::Live::EventLoop& loop_;
    std::uint16_t server_;
    std::size_t sent_ = 0;
    std::size_t received_ = 0;
    Veskar::Live::Faults faults_{[](const std::string&) {}};
    std::list<Connection> connections_;
    Veskar::Live::Acceptor acceptor_;
};

}  // namespace VeskarTest
