// SPDX-License-Identifier: Apache-2.0
#include "live/transport/StreamWriter.h"

#include "live/transport/Descriptor.h"

#include <array>
#include <cerrno>
#include <utility>

#include <sys/socket.h>
#include <unistd.h>

namespace Veskar::Live {

StreamWriter::StreamWriter(EventLoop& loop, FileDescriptor target, QueueLimits limits,
                           Events events)
    : target_(std::move(target)),
      events_(std::move(events)),
      queue_(limits),
      retry_(loop.timer([this] {
          isResting_ = false;
          write();
      })),
      tellClosed_(loop.deferral([this] {
          const auto tell = events_.closed;
          tell(closed_);
      })),
      // Without further events: the end of a pipe or a socket is reported always.
      watch_(loop.watch(target_.get(), 0, [this](std::uint32_t occurred) { ready(occurred); })) {}

void StreamWriter::send(Text message) {
    ++counters_.accepted;
    if (!closed_.empty()) {
        ++counters_.failed;
        return;
    }
    const std::size_t bytes = message->size();
    queue_.push(std::move(message), bytes);
    if (!isResting_) {
        write();
    }
}

void StreamWriter::ready(std::uint32_t events) {
    if ((events & EPOLLOUT) != 0) {
        write();
    } else if ((events & (EPOLLERR | EPOLLHUP)) != 0) {
        close("closed by the reader");
    }
}

void StreamWriter::write() {
    while (current_ || !queue_.isEmpty()) {
        if (!current_) {
            current_ = queue_.pop();
            written_ = 0;
        }
        if (!writeCurrent()) {
            break;
        }
    }
    watch();
}

/// @return whether the next message may be written
bool StreamWriter::writeCurrent() {
    while (written_ < current_->size()) {
        const ssize_t count =
            ::write(target_.get(), current_->data() + written_, current_->size() - written_);
        if (count >= 0) {
            written_ += static_cast<std::size_t>(count);
            continue;
        }
        const int fault = errno;
        if (fault == EINTR) {
            continue;
        }
        if (fault == EAGAIN) {
            return false;
        }
        if (fault == EPIPE || fault == ECONNRESET) {
            close("closed by the reader");
            return false;
        }
        // A full disk, for example. What was begun must be finished some time, or the next message
        // would stand in the middle of it.
        if (written_ == 0) {
            ++counters_.failed;
            current_.reset();
        }
        isResting_ = true;
        retry_.expireAfter(std::chrono::seconds(1));
        events_.failed(textOf(fault));
        return false;
    }
    ++counters_.written;
    current_.reset();
    return true;
}

void StreamWriter::close(const std::string& reason) {
    watch_ = {};
    retry_.disarm();
    counters_.failed += queue_.size() + (current_ ? 1 : 0);
    while (!queue_.isEmpty()) {
        queue_.pop();
    }
    current_.reset();
    closed_ = reason;
    tellClosed_.request();
}

void StreamWriter::watch() {
    if (watch_) {
        watch_.setEvents(current_ && !isResting_ ? std::uint32_t{EPOLLOUT} : 0U);
    }
}

OutputCounters StreamWriter::counters() const {
    OutputCounters counters = counters_;
    counters.dropped = queue_.dropped();
    counters.waiting = queue_.size() + (current_ ? 1 : 0);
    counters.waitingBytes = queue_.bytes() + (current_ ? current_->size() - written_ : 0);
    return counters;
}

}  // namespace Veskar::Live
