// SPDX-License-Identifier: Apache-2.0
#include "net/LocalDatagramSocket.h"

#include "net/WaitBudget.h"

#include <cerrno>
#include <chrono>
#include <system_error>

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <syslog.h>

namespace Veskar {
namespace {

/// A receiver that hangs with a full queue must not stop the fusion thread.
constexpr std::chrono::milliseconds longestWait(20);

std::string textOf(int errorNumber) {
    return std::generic_category().message(errorNumber);
}

}  // namespace

LocalDatagramSocket::LocalDatagramSocket(const std::string& path)
    : descriptor_(::socket(AF_UNIX, SOCK_DGRAM, 0)) {
    if (!descriptor_) {
        syslog(LOG_ERR, "Failed to create socket: %s\n", textOf(errno).c_str());
        return;
    }
    fcntl(descriptor_.get(), F_SETFD, FD_CLOEXEC);
    const timeval timeout{0, std::chrono::microseconds(longestWait).count()};
    setsockopt(descriptor_.get(), SOL_SOCKET, SO_SNDTIMEO, &timeout, sizeof(timeout));
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof(address.sun_path) - 1);
    if (connect(descriptor_.get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)) <
        0) {
        descriptor_.reset();
    }
}

void LocalDatagramSocket::send(const std::string& text) const {
    WaitBudget& budget = WaitBudget::ofThisThread();
    const auto begin = WaitBudget::Clock::now();
    const bool mayWait = budget.left(begin) >= longestWait;
    if (::send(descriptor_.get(), text.data(), text.size(),
               MSG_NOSIGNAL | (mayWait ? 0 : MSG_DONTWAIT)) < 0) {
        syslog(LOG_ERR, "Failed to send message: %s\n", textOf(errno).c_str());
    }
    budget.spend(begin, WaitBudget::Clock::now());
}

}  // namespace Veskar
