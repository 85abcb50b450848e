// SPDX-License-Identifier: Apache-2.0
#include "support/SocketCounter.h"

#include <atomic>

#include <sys/syscall.h>
#include <unistd.h>

namespace {

std::atomic<int> opened{0};

}  // namespace

namespace VeskarTest {

int openedSockets() {
    return opened;
}

}  // namespace VeskarTest

// This definition overrides that of the C library.
// NOLINTNEXTLINE(readability-inconsistent-declaration-parameter-name)
extern "C" int socket(int domain, int type, int protocol) noexcept {
    ++opened;
    return static_cast<int>(syscall(SYS_socket, domain, type, protocol));
}
