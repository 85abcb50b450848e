// SPDX-License-Identifier: Apache-2.0
#include "net/LocalDatagramSocket.h"

#include <cerrno>
#include <system_error>

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <syslog.h>
#include <unistd.h>

namespace Veskar {
namespace {

/// A receiver that hangs with a full queue must not stop the fusion thread.
constexpr timeval longestWait{0, 20000};

std::string textOf(int errorNumber) {
    return std::generic_category().message(errorNumber);
}

}  // namespace

LocalDatagramSocket::LocalDatagramSocket(const std::string& path)
    : descriptor(::socket(AF_UNIX, SOCK_DGRAM, 0)) {
    if (descriptor < 0) {
        syslog(LOG_ERR, "Failed to create socket: %s\n", textOf(errno).c_str());
        return;
    }
    fcntl(descriptor, F_SETFD, FD_CLOEXEC);
    setsockopt(descriptor, SOL_SOCKET, SO_SNDTIMEO, &longestWait, sizeof(longestWait));
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof(address.sun_path) - 1);
    if (connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) < 0) {
        close();
    }
}

LocalDatagramSocket::~LocalDatagramSocket() {
    close();
}

void LocalDatagramSocket::send(const std::string& text) const {
    if (::send(descriptor, text.data(), text.size(), MSG_NOSIGNAL) < 0) {
        syslog(LOG_ERR, "Failed to send message: %s\n", textOf(errno).c_str());
    }
}

void LocalDatagramSocket::close() {
    if (descriptor >= 0) {
        ::close(descriptor);
        descriptor = -1;
    }
}

}  // namespace Veskar
