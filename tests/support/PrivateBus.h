// SPDX-License-Identifier: Apache-2.0
// A system bus of the test's own.
#pragma once

#include <string>

#include <sys/types.h>

namespace VeskarTest {

/// Runs a dbus-daemon on a Unix socket in a directory of its own and makes it the system bus of
/// this process, where everybody may do everything.
class PrivateBus {
public:
    /// Returns when the daemon listens.
    /// @param extraConfiguration elements to add to the daemon's configuration
    explicit PrivateBus(const std::string& extraConfiguration = {});
    ~PrivateBus();
    PrivateBus(const PrivateBus&) = delete;
    PrivateBus& operator=(const PrivateBus&) = delete;

    /// Ends the daemon without a goodbye.
    void kill();
    /// Stops the daemon: it stays there and does nothing any more.
    void stop();

private:
    std::string directory_;
    pid_t daemon_ = -1;
};

/// Makes an address where nobody listens the system bus of this process.
void leaveSystemBus();

}  // namespace VeskarTest
