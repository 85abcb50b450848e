// SPDX-License-Identifier: Apache-2.0
#include "live/transport/KeepAlive.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

namespace Veskar::Live {

void askWhenSilent(int connection) {
    const int yes = 1;
    const int silence = 10;  // s
    const int interval = 5;  // s
    const int questions = 3;
    ::setsockopt(connection, SOL_SOCKET, SO_KEEPALIVE, &yes, sizeof yes);
    ::setsockopt(connection, IPPROTO_TCP, TCP_KEEPIDLE, &silence, sizeof silence);
    ::setsockopt(connection, IPPROTO_TCP, TCP_KEEPINTVL, &interval, sizeof interval);
    ::setsockopt(connection, IPPROTO_TCP, TCP_KEEPCNT, &questions, sizeof questions);
}

}  // namespace Veskar::Live
