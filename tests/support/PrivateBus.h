// SPDX-License-Identifier: Apache-2.0
// A private system bus.
#pragma once

#include <string>

#include <sys/types.h>

namespace VeskarTest {

/// Runs a dbus-daemon on a Unix socket in its own directory and makes it the system bus of this
/// process, without access restrictions.
class PrivateBus {
public:
    /// Returns when the daemon listens.
    /// @param extraConfiguration elements to add to the daemon's configuration
    explicit PrivateBus(const std::string& extraConfiguration = {});
    ~PrivateBus();
    PrivateBus(const PrivateBus&) = delete;
    PrivateBus& operator=(const PrivateBus&) = delete;

    /// Kills the daemon.
    void kill();
    /// Stops the daemon: it keeps its connections but no longer responds.
    void stop();

private:
    std::string directory_;
    pid_t daemon_ = -1;
};

/// Sets the system bus of this process to an address where nothing listens.
void leaveSystemBus();

}  // namespace VeskarTest
