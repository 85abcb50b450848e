// SPDX-License-Identifier: Apache-2.0
// Messages that arrive as UDP datagrams.
#pragma once

#include "live/transport/Faults.h"
#include "live/transport/ListeningSocket.h"
#include "live/transport/StreamReader.h"

#include <vector>

namespace Veskar::Live {

/// The messages of a UDP socket. A datagram holds whole messages, one or several; what is
/// unfinished at its end is a message, too. The system drops datagrams that nobody reads in time.
/// All that arrive count as those of one publisher.
class DatagramInput {
public:
    /// @param loop runs the input
    /// @param bound where datagrams arrive
    /// @param options how they are read
    /// @param faults receives read errors
    /// @param receiver receives the messages
    DatagramInput(EventLoop& loop, ListeningSocket bound, StreamOptions options, Faults& faults,
                  Receiver receiver);

    /// @return what was counted
    const InputCounters& counters() const { return counters_; }
    /// @return the port
    std::uint16_t port() const { return bound_.port(); }

private:
    void read();

    ListeningSocket bound_;
    StreamOptions options_;
    Faults& faults_;
    Receiver receiver_;
    InputCounters counters_;
    std::vector<char> datagram_;
    EventLoop::Clock::time_point arrived_;
    MessageSplitter splitter_;
    EventLoop::Watch watch_;
};

}  // namespace Veskar::Live
