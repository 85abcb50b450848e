// SPDX-License-Identifier: Apache-2.0
#include "live/Viewers.h"

#include "live/support/Client.h"

#include <array>
#include <stdexcept>
#include <string_view>

#include <poll.h>
#include <sys/socket.h>

namespace VeskarBench {
namespace {

constexpr std::string_view request = "GET /events HTTP/1.1\r\nHost: 127.0.0.1\r\n\r\n";

}  // namespace

Viewers::Viewers(std::uint16_t port, std::size_t number) {
    std::array<char, 4096> greeting{};
    for (std::size_t i = 0; i < number; ++i) {
        connections_.push_back(VeskarTest::connectTo(port));
        const int connection = connections_.back().get();
        if (::send(connection, request.data(), request.size(), MSG_NOSIGNAL) < 0 ||
            ::recv(connection, greeting.data(), greeting.size(), 0) <= 0) {
            throw std::runtime_error("the view does not answer");
        }
    }
    thread_ = std::thread([this] { read(); });
}

Viewers::~Viewers() {
    isEnding_ = true;
    thread_.join();
}

void Viewers::read() {
    constexpr int longestWait = 100;  // ms
    std::array<char, 65536> piece{};
    std::vector<pollfd> watched;
    for (const Veskar::FileDescriptor& connection : connections_) {
        watched.push_back({connection.get(), POLLIN, 0});
    }
    while (!isEnding_) {
        ::poll(watched.data(), watched.size(), longestWait);
        for (const pollfd& one : watched) {
            if (one.revents != 0) {
                const ssize_t count = ::recv(one.fd, piece.data(), piece.size(), 0);
                bytes_ += count > 0 ? static_cast<std::uint64_t>(count) : 0;
            }
        }
    }
}

}  // namespace VeskarBench
