// SPDX-License-Identifier: Apache-2.0
#include "live/transport/DatagramInput.h"

#include "live/transport/Descriptor.h"

#include <cerrno>
#include <utility>

#include <sys/socket.h>

namespace Veskar::Live {
namespace {

constexpr std::size_t longestDatagram = std::size_t{64} << 10;

}  // namespace

DatagramInput::DatagramInput(EventLoop& loop, ListeningSocket bound, StreamOptions options,
                             Faults& faults, Receiver receiver)
    : bound_(std::move(bound)),
      options_(std::move(options)),
      faults_(faults),
      receiver_(std::move(receiver)),
      datagram_(longestDatagram),
      splitter_(options_, counters_, faults_,
                [this](std::string_view bytes) {
                    receiver_({options_.name, bytes, arrived_});
                }),
      watch_(loop.watch(bound_.get(), EPOLLIN, [this](std::uint32_t) { read(); })) {}

void DatagramInput::read() {
    const ssize_t count = ::recv(bound_.get(), datagram_.data(), datagram_.size(), 0);
    if (count < 0) {
        if (const int fault = errno; fault != EAGAIN && fault != EINTR) {
            faults_.report("input " + options_.name, textOf(fault));
        }
        return;
    }
    arrived_ = EventLoop::Clock::now();
    splitter_.feed({datagram_.data(), static_cast<std::size_t>(count)}, arrived_);
    splitter_.end();
}

}  // namespace Veskar::Live
