// SPDX-License-Identifier: Apache-2.0
// Documents from the metadata track of an RTSP server.
#pragma once

#include "live/rtsp/RtspMailbox.h"
#include "live/rtsp/RtspOptions.h"
#include "live/rtsp/RtspSession.h"
#include "live/transport/Backoff.h"

#include <memory>

namespace Veskar::Live {

/// The documents of a camera's metadata track. Connects again whenever a session ends. What waits
/// for the server happens beside the loop, which gets whole documents.
class RtspInput {
public:
    /// Begins to connect when the loop runs.
    /// @param loop runs the input
    /// @param options how the server is read
    /// @param faults receives the faults of sessions
    /// @param receiver receives the documents
    /// @throw InputError when GStreamer lacks a plugin, or the credentials cannot be read
    RtspInput(EventLoop& loop, RtspOptions options, Faults& faults, Receiver receiver);

    /// @return what was counted
    const InputCounters& counters() const { return counters_; }

private:
    void connect();
    void receive();
    void ended(const std::string& reason);

    RtspOptions options_;
    Faults& faults_;
    Receiver receiver_;
    std::string name_;
    InputCounters counters_;
    std::uint64_t messagesBefore_ = 0;  ///< of earlier sessions
    Backoff backoff_;
    EventLoop::Timer retry_;
    RtspMailbox mailbox_;
    EventLoop::Watch watch_;
    std::unique_ptr<RtspSession> session_;
};

}  // namespace Veskar::Live
