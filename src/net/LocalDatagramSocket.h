// SPDX-License-Identifier: Apache-2.0
// Sends a datagram to a Unix socket on this device.
#pragma once

#include "net/FileDescriptor.h"

#include <string>

namespace Veskar {

/// A connected Unix datagram socket for one message, closed with the object.
///
/// A missing receiver is normal and silent; other failures go to the system log at error priority.
class LocalDatagramSocket {
public:
    /// @param path where the receiver is bound; what goes beyond 107 bytes is cut off
    explicit LocalDatagramSocket(const std::string& path);

    /// @return whether there is a receiver
    bool isConnected() const { return static_cast<bool>(descriptor_); }
    /// Waits a short while for a receiver that does not keep up, then gives up; not at all when the
    /// thread's WaitBudget is used up.
    /// @param text the datagram
    void send(const std::string& text) const;

private:
    FileDescriptor descriptor_;
};

}  // namespace Veskar
