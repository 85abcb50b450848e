// SPDX-License-Identifier: Apache-2.0
#include "live/rtsp/RtspMailbox.h"

#include <cerrno>
#include <system_error>
#include <utility>

#include <sys/eventfd.h>

namespace Veskar::Live {

RtspMailbox::RtspMailbox(StreamOptions options, QueueLimits limits, Faults& faults)
    : options_(std::move(options)),
      arrived_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)),
      documents_(limits),
      packets_(options_, counters_, faults, [this](std::string_view text) {
          documents_.push({std::string(text), Clock::now()}, text.size());
      }) {
    if (!arrived_) {
        throw std::system_error(errno, std::generic_category(), "eventfd");
    }
}

void RtspMailbox::wake() const {
    ::eventfd_write(arrived_.get(), 1);
}

void RtspMailbox::start() {
    const std::lock_guard<std::mutex> lock(mutex_);
    noteStart();
}

void RtspMailbox::noteStart() {
    if (!std::exchange(isPlaying_, true)) {
        hasStarted_ = true;
        wake();
    }
}

void RtspMailbox::add(const RtpDocuments::Packet& packet) {
    const std::lock_guard<std::mutex> lock(mutex_);
    noteStart();
    const bool wasEmpty = documents_.isEmpty();
    packets_.add(packet);
    if (wasEmpty && !documents_.isEmpty()) {
        wake();
    }
}

void RtspMailbox::end(const std::string& reason) {
    const std::lock_guard<std::mutex> lock(mutex_);
    packets_.restart();
    isPlaying_ = false;
    end_ = reason;
    wake();
}

RtspMailbox::News RtspMailbox::take() {
    const std::lock_guard<std::mutex> lock(mutex_);
    News news;
    news.hasStarted = std::exchange(hasStarted_, false);
    if (!documents_.isEmpty()) {
        // The descriptor stays readable: the loop comes back when others have had their turn.
        news.document = documents_.pop();
    } else {
        eventfd_t count = 0;
        ::eventfd_read(arrived_.get(), &count);
        news.end = std::exchange(end_, std::nullopt);
    }
    news.lost = counters_;
    news.lost.overflowed = documents_.dropped();
    return news;
}

}  // namespace Veskar::Live
