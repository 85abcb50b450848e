// SPDX-License-Identifier: Apache-2.0
// Answers Prometheus.
#pragma once

#include "live/transport/Acceptor.h"

#include <functional>
#include <list>
#include <string>

namespace Veskar::Live {

/// An HTTP server with one page: whatever is asked for with GET, the answer is the text, and the
/// connection ends. Meant for the loopback interface.
class MetricsServer {
public:
    /// Further clients are turned away, and so are those that do not ask within a few seconds.
    static constexpr std::size_t mostClients = 16;
    static constexpr std::size_t longestRequest = 8192;  ///< bytes
    static constexpr EventLoop::Duration patience = std::chrono::seconds(5);

    /// @param loop runs the server
    /// @param place where it listens
    /// @param faults receives the faults of connections
    /// @param text makes the text
    MetricsServer(EventLoop& loop, const NetworkPlace& place, Faults& faults,
                  std::function<std::string()> text);

    /// @return the port
    std::uint16_t port() const { return acceptor_.port(); }

private:
    struct Client {
        FileDescriptor connection;
        std::string request;
        std::string answer;
        std::size_t written = 0;
        EventLoop::Watch watch;
        EventLoop::Timer patience;
    };

    void add(FileDescriptor connection);
    void read(std::list<Client>::iterator client);
    void write(std::list<Client>::iterator client);

    EventLoop& loop_;
    std::function<std::string()> text_;
    std::list<Client> clients_;
    Acceptor acceptor_;
};

}  // namespace Veskar::Live
