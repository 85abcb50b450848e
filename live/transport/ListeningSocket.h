// SPDX-License-Identifier: Apache-2.0
// Sockets at which programs on this machine or in its networks report.
#pragma once

#include "src/net/FileDescriptor.h"

#include <cstdint>
#include <string>

#include <sys/stat.h>
#include <sys/types.h>

namespace Veskar::Live {

/// Where a TCP or UDP socket listens. Never everywhere by omission: the host is an address of this
/// machine or the name of a network interface.
struct NetworkPlace {
    std::string host;        ///< "127.0.0.1", "::1", "localhost", "eth0"
    std::uint16_t port = 0;  ///< 0: one that is free, for tests

    /// @param text "HOST:PORT", with a numeric IPv6 address in brackets
    /// @return its parts
    /// @throw InputError when it has no host or port
    static NetworkPlace parse(const std::string& text);
};

/// A socket that listens, and does not wait.
class ListeningSocket {
public:
    /// A Unix stream socket. What a program that has ended left at the path is replaced; anything
    /// else there, and a socket that a program listens on, is an error.
    /// @param path the file system's name of it, at most 107 bytes
    /// @param permissions of the file, as 0660
    /// @throw InputError
    static ListeningSocket atPath(const std::string& path, mode_t permissions);
    /// @throw InputError
    static ListeningSocket tcp(const NetworkPlace& place);
    /// Bound for datagrams; nothing to accept.
    /// @throw InputError
    static ListeningSocket udp(const NetworkPlace& place);

    ListeningSocket(ListeningSocket&&) = default;
    ListeningSocket& operator=(ListeningSocket&&) = delete;
    /// Removes the path, if it still is this socket's.
    ~ListeningSocket();

    /// @return the descriptor
    int get() const { return socket_.get(); }
    /// @return the port of a TCP or UDP socket
    std::uint16_t port() const;

private:
    explicit ListeningSocket(FileDescriptor listening) : socket_(std::move(listening)) {}

    FileDescriptor socket_;
    std::string path_;
    dev_t device_ = 0;
    ino_t inode_ = 0;
};

}  // namespace Veskar::Live
