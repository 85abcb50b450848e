// SPDX-License-Identifier: Apache-2.0
#include "live/transport/Acceptor.h"

#include "live/transport/Descriptor.h"
#include "live/transport/KeepAlive.h"

#include <cerrno>
#include <utility>

#include <sys/socket.h>

namespace Veskar::Live {
namespace {

/// @return whether accept4 fails for want of descriptors or memory: the connection waits on
bool isForWantOfRoom(int fault) {
    return fault == EMFILE || fault == ENFILE || fault == ENOBUFS || fault == ENOMEM;
}

}  // namespace

Acceptor::Acceptor(EventLoop& loop, ListeningSocket listening, std::string name, Faults& faults,
                   std::function<void(FileDescriptor)> accepted)
    : listening_(std::move(listening)),
      name_(std::move(name)),
      faults_(faults),
      accepted_(std::move(accepted)),
      watch_(loop.watch(listening_.get(), EPOLLIN, [this](std::uint32_t) { accept(); })),
      rest_(loop.timer([this] { watch_.setEvents(EPOLLIN); })) {}

void Acceptor::accept() {
    FileDescriptor connection(
        ::accept4(listening_.get(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
    if (connection) {
        askWhenSilent(connection.get());
        accepted_(std::move(connection));
        return;
    }
    if (const int fault = errno; isForWantOfRoom(fault)) {
        faults_.report(name_ + ": cannot accept a connection", textOf(fault));
        watch_.setEvents(0);
        rest_.expireAfter(std::chrono::seconds(1));
    }
}

}  // namespace Veskar::Live
