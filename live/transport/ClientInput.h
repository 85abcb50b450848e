// SPDX-License-Identifier: Apache-2.0
// Messages from a server that the host connects to.
#pragma once

#include "live/transport/Backoff.h"
#include "live/transport/NameLookup.h"
#include "live/transport/StreamReader.h"

#include <memory>
#include <optional>
#include <string>

namespace Veskar::Live {

/// The messages of a TCP server, such as a sensor that listens itself. Connects again whenever the
/// connection ends; what was unfinished then is cut. It ends the connection itself when a message
/// takes too long. Each connection is a channel.
class ClientInput {
public:
    /// Where the server is, and how patient the input is.
    struct Options {
        std::string host;  ///< name or address
        std::uint16_t port = 0;
        StreamOptions stream;
        EventLoop::Duration answerWithin = std::chrono::seconds(10);      ///< of an attempt
        EventLoop::Duration firstRetry = std::chrono::milliseconds(250);  ///< wait after a failure
        EventLoop::Duration longestRetry = std::chrono::seconds(30);      ///< after many of them
    };

    /// Begins to connect when the loop runs.
    /// @param loop runs the input
    /// @param options where the server is
    /// @param faults receives the faults of connections
    /// @param receiver receives the messages
    /// @param departed told the channel of each connection that has ended
    ClientInput(EventLoop& loop, Options options, Faults& faults, Receiver receiver,
                Departure departed = {});

    /// @return what was counted
    const InputCounters& counters() const { return input_.counters; }

private:
    void lookUp();
    void connect();
    void finishConnecting();
    void fail(const std::string& reason);
    void ended(StreamReader::End how, const std::string& reason);

    EventLoop& loop_;
    Options options_;
    StreamContext input_;
    std::string name_;
    std::uint64_t messagesBefore_ = 0;  ///< of earlier connections
    Backoff backoff_;
    EventLoop::Timer retry_;
    EventLoop::Timer patience_;
    std::optional<NameLookup> lookup_;
    FileDescriptor connecting_;
    EventLoop::Watch watch_;
    std::unique_ptr<StreamReader> reader_;
};

}  // namespace Veskar::Live
