// SPDX-License-Identifier: Apache-2.0
#include "live/transport/StreamReader.h"

#include "live/transport/Descriptor.h"

#include <array>
#include <cerrno>
#include <utility>

#include <unistd.h>

namespace Veskar::Live {

StreamReader::StreamReader(EventLoop& loop, FileDescriptor source, std::string channel,
                           StreamContext& input, std::function<void(End, const std::string&)> ended,
                           std::function<void()> grown)
    : source_(std::move(source)),
      channel_(std::move(channel)),
      input_(input),
      ended_(std::move(ended)),
      grown_(std::move(grown)),
      splitter_(input.options, input.counters, input.faults,
                [this](std::string_view bytes) {
                    input_.receiver({channel_, bytes, arrived_});
                }),
      watch_(loop.watch(source_.get(), EPOLLIN, [this](std::uint32_t) { read(); })),
      patience_(loop.timer([this] { breakOff("a message took too long to arrive"); })) {}

void StreamReader::read() {
    static thread_local std::array<char, std::size_t{64} << 10> piece;
    const ssize_t count = ::read(source_.get(), piece.data(), piece.size());
    if (count > 0) {
        arrived_ = EventLoop::Clock::now();
        splitter_.feed({piece.data(), static_cast<std::size_t>(count)}, arrived_);
        limitTime();
        if (const auto grown = grown_) {
            grown();
        }
        return;
    }
    const int fault = errno;
    if (count < 0 && (fault == EAGAIN || fault == EINTR)) {
        return;
    }
    arrived_ = EventLoop::Clock::now();
    if (count == 0) {
        stop(End::Orderly, "closed");
    } else {
        stop(End::Broken, textOf(fault));
    }
}

void StreamReader::limitTime() {
    const auto since = splitter_.unfinishedSince();
    // A timer that is set anew at each piece would never expire while pieces keep coming.
    if (since == unfinishedSince_) {
        return;
    }
    unfinishedSince_ = since;
    if (since && input_.options.finishWithin) {
        patience_.expireAt(*since + *input_.options.finishWithin);
    } else {
        patience_.disarm();
    }
}

void StreamReader::breakOff(const std::string& reason) {
    splitter_.cut(reason);
    stop(End::Broken, reason);
}

void StreamReader::stop(End how, const std::string& reason) {
    watch_ = {};
    patience_.disarm();
    // May destroy this reader.
    const auto ended = std::move(ended_);
    ended(how, reason);
}

void StreamReader::finish(bool isRestWhole) {
    if (isRestWhole) {
        splitter_.end();
    } else {
        splitter_.cut("its publisher broke it off");
    }
    if (input_.departed) {
        input_.departed(channel_);
    }
}

}  // namespace Veskar::Live
