// SPDX-License-Identifier: Apache-2.0
// Ports for servers that tests start.
#pragma once

#include "src/net/FileDescriptor.h"
#include "support/SystemCall.h"

#include <cstdint>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>

namespace VeskarTest {

/// @return a port of 127.0.0.1 that was free a moment ago
inline std::uint16_t freePort() {
    const Veskar::FileDescriptor probe(
        checked(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0), "socket"));
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    checked(::bind(probe.get(), reinterpret_cast<const sockaddr*>(&address), length), "bind");
    checked(::getsockname(probe.get(), reinterpret_cast<sockaddr*>(&address), &length),
            "getsockname");
    return ntohs(address.sin_port);
}

}  // namespace VeskarTest
