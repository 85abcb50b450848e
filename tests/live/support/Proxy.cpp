// SPDX-License-Identifier: Apache-2.0
#include "live/support/Proxy.h"

#include "support/Pipe.h"

#include <utility>

namespace VeskarTest {
namespace {

/// @return how many bytes were passed; 0 at the end
std::size_t pass(int from, int to) {
    const std::string bytes = readSome(from);
    std::size_t passed = 0;
    while (passed < bytes.size()) {
        const ssize_t count = ::write(to, bytes.data() + passed, bytes.size() - passed);
        if (count < 0 && errno != EAGAIN) {
            return 0;
        }
        passed += count > 0 ? static_cast<std::size_t>(count) : 0;
    }
    return passed;
}

}  // namespace

Proxy::Proxy(Veskar::Live::EventLoop& loop, std::uint16_t server)
    : loop_(loop),
      server_(server),
      acceptor_(loop, Veskar::Live::ListeningSocket::tcp({"127.0.0.1", 0}), "proxy", faults_,
                [this](Veskar::FileDescriptor client) { add(std::move(client)); }) {}

void Proxy::add(Veskar::FileDescriptor client) {
    const auto added = connections_.emplace(connections_.end());
    added->client = std::move(client);
    added->server = connectTo(server_);
    added->fromClient = loop_.watch(added->client.get(), EPOLLIN, [this, added](std::uint32_t) {
        const std::size_t count = pass(added->client.get(), added->server.get());
        sent_ += count;
        if (count == 0) {
            connections_.erase(added);
        }
    });
    added->fromServer = loop_.watch(added->server.get(), EPOLLIN, [this, added](std::uint32_t) {
        const std::size_t count = pass(added->server.get(), added->client.get());
        received_ += count;
        if (count == 0) {
            connections_.erase(added);
        }
    });
}

}  // namespace VeskarTest
