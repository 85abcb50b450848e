// SPDX-License-Identifier: Apache-2.0
// Writes messages to one reader.
#pragma once

#include "live/transport/BoundedQueue.h"
#include "live/transport/Counters.h"
#include "live/transport/EventLoop.h"
#include "src/net/FileDescriptor.h"

#include <functional>
#include <memory>
#include <string>

namespace Veskar::Live {

/// Writes whole messages to a descriptor as fast as its reader reads. One that has begun is
/// finished before the next; what waits behind it is bounded.
class StreamWriter {
public:
    using Text = std::shared_ptr<const std::string>;

    /// What the owner learns.
    struct Events {
        /// The reader is gone; called once, never within send. It may destroy the writer.
        std::function<void(const std::string& reason)> closed;
        /// A message could not be written, the disk being full for example.
        std::function<void(const std::string& reason)> failed;
    };

    /// @param loop runs the writer
    /// @param target written without waiting
    /// @param limits of what waits
    /// @param events what the owner learns
    StreamWriter(EventLoop& loop, FileDescriptor target, QueueLimits limits, Events events);

    /// @param message written now or later
    void send(Text message);
    /// @return what was counted; of connections nothing
    OutputCounters counters() const;

private:
    void ready(std::uint32_t events);
    void write();
    bool writeCurrent();
    void close(const std::string& reason);
    void watch();

    FileDescriptor target_;
    Events events_;
    BoundedQueue<Text> queue_;
    Text current_;             ///< being written
    std::size_t written_ = 0;  ///< bytes of it
    OutputCounters counters_;
    std::string closed_;  ///< reason, once the reader is gone
    EventLoop::Timer retry_;
    bool isResting_ = false;
    EventLoop::Deferral tellClosed_;
    EventLoop::Watch watch_;
};

}  // namespace Veskar::Live
