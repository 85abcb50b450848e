// SPDX-License-Identifier: Apache-2.0
// One connection to an RTSP server.
#pragma once

#include "live/rtsp/RtspMailbox.h"
#include "live/rtsp/RtspOptions.h"
#include "live/transport/Credentials.h"

#include <memory>
#include <optional>
#include <thread>

namespace Veskar::Live {

/// An attempt to read the metadata track of a server, from its connection to its end, on a thread
/// of its own and those of GStreamer: requests wait for the server's answers.
class RtspSession {
public:
    /// @param options how the server is read
    /// @param credentials user and password, if there are any
    /// @param mailbox receives packets and, when all is closed, why the session has ended; must
    ///                outlive the session
    /// @throw InputError when GStreamer cannot do it
    RtspSession(const RtspOptions& options, const std::optional<Credentials>& credentials,
                RtspMailbox& mailbox);
    /// Ends the session. Waits at most about 0.1 s: servers have few sessions, and are told.
    ~RtspSession();
    RtspSession(const RtspSession&) = delete;
    RtspSession& operator=(const RtspSession&) = delete;

private:
    class Pipeline;

    std::unique_ptr<Pipeline> pipeline_;
    std::thread thread_;
};

}  // namespace Veskar::Live
