// SPDX-License-Identifier: Apache-2.0
// Messages to the readers that connect to a Unix or TCP socket.
#pragma once

#include "live/transport/Acceptor.h"
#include "live/transport/Output.h"
#include "live/transport/StreamWriter.h"

#include <functional>
#include <list>
#include <optional>
#include <string>

namespace Veskar::Live {

/// Gives every connected reader the messages from its connection on. Each has a queue of its own,
/// so that a slow one costs the others nothing. What readers send is ignored.
class ServerOutput : public Output {
public:
    /// Further readers are turned away.
    static constexpr std::size_t mostReaders = 64;
    /// @return what a reader gets first; empty: nothing
    using Greeting = std::function<std::string()>;

    /// @param loop runs the output
    /// @param listening where readers connect
    /// @param name for faults, as "output tracks"
    /// @param limits of what waits for each reader
    /// @param faults receives the faults of connections
    /// @param greeting what a reader gets first; may be empty
    ServerOutput(EventLoop& loop, ListeningSocket listening, std::string name, QueueLimits limits,
                 Faults& faults, Greeting greeting = {});

    void send(std::string_view message) override;
    OutputCounters counters() const override;
    /// @return the port of a TCP socket
    std::uint16_t port() const { return acceptor_.port(); }

private:
    /// A connection has two descriptors, since the loop watches each for one purpose.
    struct Reader {
        FileDescriptor connection;
        std::optional<StreamWriter> writer;
        EventLoop::Watch input;  ///< tells the end of a reader that sends nothing
    };

    void add(FileDescriptor connection);
    void remove(std::list<Reader>::iterator reader);

    EventLoop& loop_;
    std::string name_;
    QueueLimits limits_;
    Faults& faults_;
    Greeting greeting_;
    OutputCounters gone_;  ///< of readers that have gone
    std::list<Reader> readers_;
    Acceptor acceptor_;
};

}  // namespace Veskar::Live
