// SPDX-License-Identifier: Apache-2.0
// The socket to which a device's fusion sends calibration samples.
#pragma once

#include <chrono>
#include <optional>
#include <string>

namespace Workbench {

/// A Unix datagram socket, bound to a path as long as this object lives. A socket that a program
/// has left behind is replaced; anything else at the path stays.
class SampleSocket {
public:
    /// @param path where datagrams are sent
    /// @throw InputError when another program listens there, or the path cannot be bound
    explicit SampleSocket(const std::string& path);
    /// Removes the path.
    ~SampleSocket();
    SampleSocket(const SampleSocket&) = delete;
    SampleSocket& operator=(const SampleSocket&) = delete;

    /// @param deadline when to stop waiting
    /// @return the next datagram; nothing at the deadline
    /// @throw Interrupted when a signal has come
    std::optional<std::string> receive(std::chrono::steady_clock::time_point deadline);

private:
    std::string path_;
    int descriptor_;
};

}  // namespace Workbench
