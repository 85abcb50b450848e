// SPDX-License-Identifier: Apache-2.0
// Reads the messages of one publisher.
#pragma once

#include "live/transport/EventLoop.h"
#include "live/transport/Message.h"
#include "live/transport/MessageSplitter.h"
#include "src/net/FileDescriptor.h"

#include <functional>
#include <optional>
#include <string>

namespace Veskar::Live {

/// What the publishers of an input share. It must outlive their readers.
struct StreamContext {
    StreamOptions options;
    Faults& faults;
    Receiver receiver;
    Departure departed;
    InputCounters counters = {};
};

/// @param input with the connection among its counters
/// @return the channel of the last connection
inline std::string channelOf(const StreamContext& input) {
    return input.options.name + "#" + std::to_string(input.counters.connections);
}

/// Reads messages from a descriptor. Publishers take turns: each is read a piece at a time.
class StreamReader {
public:
    /// How the stream ended.
    enum class End {
        Orderly,  ///< closed by the publisher
        Broken,   ///< with an error, or by this side
    };
    /// @param loop runs the reader
    /// @param source read without waiting
    /// @param channel of its messages
    /// @param input what it belongs to
    /// @param ended called once, as the last thing: it may destroy the reader
    /// @param grown called when unfinished messages may occupy more memory, as the last thing: it
    ///              may destroy the reader; may be empty
    StreamReader(EventLoop& loop, FileDescriptor source, std::string channel, StreamContext& input,
                 std::function<void(End, const std::string& reason)> ended,
                 std::function<void()> grown = {});

    /// The stream ends here.
    /// @param isRestWhole whether what stands behind the last end is a message; otherwise it is cut
    void finish(bool isRestWhole);
    /// Ends the stream with an error. May destroy the reader.
    /// @param reason told
    void breakOff(const std::string& reason);

    /// @return bytes of memory that messages occupy
    std::size_t memory() const { return splitter_.memory(); }

private:
    void read();
    void limitTime();
    void stop(End how, const std::string& reason);

    FileDescriptor source_;
    std::string channel_;
    StreamContext& input_;
    std::function<void(End, const std::string&)> ended_;
    std::function<void()> grown_;
    EventLoop::Clock::time_point arrived_;
    MessageSplitter splitter_;
    EventLoop::Watch watch_;
    EventLoop::Timer patience_;
    std::optional<EventLoop::Clock::time_point> unfinishedSince_;  ///< that the timer is set for
};

}  // namespace Veskar::Live
