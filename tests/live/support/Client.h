// SPDX-License-Identifier: Apache-2.0
// Programs that connect to a socket of the host.
#pragma once

#include "src/net/FileDescriptor.h"
#include "support/SystemCall.h"

#include <cstddef>
#include <cstdint>
#include <fstream>
#include <string>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/un.h>

namespace VeskarTest {

/// @return a connection to a Unix stream socket
inline Veskar::FileDescriptor connectTo(const std::string& path) {
    Veskar::FileDescriptor made(
        checked(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0), "socket"));
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    checked(::connect(made.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address),
            "connect");
    return made;
}

/// @return whether a program listens on a Unix socket: from the socket's file on until then,
///         connections are refused. Makes no connection.
inline bool isListening(const std::string& path) {
    std::ifstream sockets("/proc/net/unix");
    const std::string accepts = " 00010000 ";  // its flags, __SO_ACCEPTCON of the kernel
    for (std::string line; std::getline(sockets, line);) {
        const std::size_t name = line.find('/');
        if (name != std::string::npos && line.compare(name, std::string::npos, path) == 0 &&
            line.find(accepts) < name) {
            return true;
        }
    }
    return false;
}

/// @return a connection to a port of 127.0.0.1
inline Veskar::FileDescriptor connectTo(std::uint16_t port, int type = SOCK_STREAM) {
    Veskar::FileDescriptor made(checked(::socket(AF_INET, type | SOCK_CLOEXEC, 0), "socket"));
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    checked(::connect(made.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address),
            "connect");
    return made;
}

/// Lets the connection end with an error at the other side instead of orderly.
inline void breakOff(Veskar::FileDescriptor connection) {
    const linger reset{1, 0};
    ::setsockopt(connection.get(), SOL_SOCKET, SO_LINGER, &reset, sizeof reset);
}

}  // namespace VeskarTest
