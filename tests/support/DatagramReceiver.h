// SPDX-License-Identifier: Apache-2.0
// Receives the datagrams that the library sends to a Unix socket.
#pragma once

#include <string>
#include <vector>

namespace VeskarTest {

/// Keeps a path of a Unix socket to this test, also against test programs that run beside it, and
/// free of leftovers.
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

    /// @return what has arrived since the last call; a sent datagram arrives at once
    std::vector<std::string> receive();

private:
    int descriptor_;
};

}  // namespace VeskarTest
