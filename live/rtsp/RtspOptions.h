// SPDX-License-Identifier: Apache-2.0
// How an RTSP server is read.
#pragma once

#include "live/transport/EventLoop.h"
#include "live/transport/Message.h"

#include <chrono>
#include <cstddef>
#include <string>

namespace Veskar::Live {

/// How RTP packets come.
enum class RtspTransport {
    Tcp,  ///< within the connection
    Udp,  ///< from port to port; those that are late or lost are missing
};

/// How an RTSP server is read.
struct RtspOptions {
    std::string channel;      ///< name of the input, in its messages and in faults
    std::string url;          ///< without user and password
    std::string credentials;  ///< file as of Credentials::read; empty: none
    RtspTransport transport = RtspTransport::Tcp;
    std::size_t longest = longestMessage;                    ///< bytes of a document
    std::chrono::seconds answerWithin{10};                   ///< of each request
    EventLoop::Duration silence = std::chrono::seconds(30);  ///< after which a server is gone
    EventLoop::Duration reordering = std::chrono::milliseconds(100);  ///< UDP: wait for a packet
    EventLoop::Duration firstRetry = std::chrono::milliseconds(250);  ///< wait after a failure
    EventLoop::Duration longestRetry = std::chrono::seconds(30);      ///< after many of them
};

}  // namespace Veskar::Live
