// SPDX-License-Identifier: Apache-2.0
// Receives the datagrams that the library sends to a Unix socket.
#pragma once

#include <string>
#include <vector>

namespace VeskarTest {

/// Reserves a Unix socket path for this test, also against test programs that run at the same time,
/// and removes leftovers.
class SocketPath {
public:
    explicit SocketPath(const std::string& path);
    ~SocketPath();
    SocketPath(const SocketPath&) = delete;
    SocketPath& operator=(const SocketPath&) = delete;

    const std::string& get() const { return path_; }

private:
    std::string path_;
    int lock_;
};

/// A Unix datagram socket bound to a path.
class DatagramReceiver {
public:
    explicit DatagramReceiver(const std::string& path);
    ~DatagramReceiver();
    DatagramReceiver(const DatagramReceiver&) = delete;
    DatagramReceiver& operator=(const DatagramReceiver&) = delete;

    /// @return the datagrams received since the last call; sent datagrams arrive immediately
    std::vector<std::string> receive();

private:
    int descriptor_;
};

}  // namespace VeskarTest
