// SPDX-License-Identifier: Apache-2.0
// Messages from the publishers that connect to a Unix or TCP socket.
#pragma once

#include "live/transport/Acceptor.h"
#include "live/transport/StreamReader.h"

#include <list>

namespace Veskar::Live {

/// The messages of all publishers of a listening socket; each connection is a channel. What a
/// publisher leaves unfinished when it goes is cut and counted, whether it ended orderly or not: a
/// message that was cut by a crash could not be told from a whole one. The connection of a
/// publisher that takes too long over a message is closed, and, while unfinished messages together
/// occupy too much memory, that of the publisher whose messages occupy most.
class ServerInput {
public:
    /// Further publishers are turned away.
    static constexpr std::size_t mostPublishers = 64;
    /// Bytes that the messages of all publishers may occupy together.
    static constexpr std::size_t mostMemory = std::size_t{64} << 20;

    /// @param loop runs the input
    /// @param listening where publishers connect
    /// @param options how they are read
    /// @param faults receives the faults of connections
    /// @param receiver receives the messages
    /// @param departed told the channel of each connection that has ended
    ServerInput(EventLoop& loop, ListeningSocket listening, StreamOptions options, Faults& faults,
                Receiver receiver, Departure departed = {});

    /// @return what was counted
    const InputCounters& counters() const { return input_.counters; }
    /// @return bytes that messages occupy
    std::size_t memory() const;
    /// @return the port of a TCP socket
    std::uint16_t port() const { return acceptor_.port(); }

private:
    using Publishers = std::list<std::unique_ptr<StreamReader>>;

    void add(FileDescriptor connection);
    void remove(Publishers::iterator place, StreamReader::End how, const std::string& reason);
    void limitMemory();

    EventLoop& loop_;
    StreamContext input_;
    Publishers publishers_;
    Acceptor acceptor_;
};

}  // namespace Veskar::Live
