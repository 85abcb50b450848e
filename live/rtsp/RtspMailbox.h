// SPDX-License-Identifier: Apache-2.0
// Between the threads that read a metadata track and the event loop.
#pragma once

#include "live/rtsp/RtpDocuments.h"
#include "live/transport/BoundedQueue.h"
#include "live/transport/EventLoop.h"
#include "src/net/FileDescriptor.h"

#include <mutex>
#include <optional>
#include <string>

namespace Veskar::Live {

/// Makes documents of packets on the threads of a session, and keeps them until the loop takes
/// them. When too many wait, the oldest are dropped.
class RtspMailbox {
public:
    using Clock = EventLoop::Clock;

    /// A document.
    struct Document {
        std::string text;
        Clock::time_point arrived;  ///< its last packet
    };
    /// What the loop learns at a time.
    struct News {
        bool hasStarted = false;           ///< the server plays
        std::optional<Document> document;  ///< the oldest one
        std::optional<std::string> end;    ///< why the session has ended; behind its last document
        InputCounters lost;                ///< what was dropped since construction
    };

    /// @param options of the documents
    /// @param limits of what waits
    /// @param faults receives what is dropped; must outlive the mailbox
    /// @throw std::system_error
    RtspMailbox(StreamOptions options, QueueLimits limits, Faults& faults);
    RtspMailbox(const RtspMailbox&) = delete;
    RtspMailbox& operator=(const RtspMailbox&) = delete;

    /// Any thread: what a session has to tell. It has started with its first packet at the latest.
    void start();
    void add(const RtpDocuments::Packet& packet);
    void end(const std::string& reason);

    /// @return what is readable while there are news
    int descriptor() const { return arrived_.get(); }
    /// @return the news, for the thread of the loop: one document at a time, and then the end
    News take();

private:
    void wake() const;
    void noteStart();

    const StreamOptions options_;
    const FileDescriptor arrived_;
    std::mutex mutex_;  // guards what follows
    BoundedQueue<Document> documents_;
    InputCounters counters_;
    RtpDocuments packets_;
    bool isPlaying_ = false;
    bool hasStarted_ = false;
    std::optional<std::string> end_;
};

}  // namespace Veskar::Live
