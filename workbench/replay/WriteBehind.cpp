// SPDX-License-Identifier: Apache-2.0
#include "replay/WriteBehind.h"

#include <utility>

namespace Workbench {
namespace {

constexpr std::size_t framesBehind = 32;

}  // namespace

WriteBehind::WriteBehind(OutputFile& output, Format format, Flush flush)
    : output_(output),
      format_(std::move(format)),
      flush_(flush),
      queue_(framesBehind),
      thread_([this] { run(); }) {}

WriteBehind::~WriteBehind() {
    queue_.close();
    if (thread_.joinable()) {
        thread_.join();
    }
}

void WriteBehind::run() {
    try {
        LineText text;
        FusedFrame frame;
        while (queue_.pop(frame)) {
            text.clear();
            format_(text, frame);
            output_.write(text.view());
            if (flush_ == Flush::EveryFrame) {
                output_.flush();
            }
        }
    } catch (...) {
        failure_ = std::current_exception();
        queue_.close(failure_);
    }
}

void WriteBehind::write(FusedFrame frame) {
    queue_.push(std::move(frame));
}

void WriteBehind::finish() {
    queue_.close();
    thread_.join();
    if (failure_) {
        std::rethrow_exception(failure_);
    }
}

}  // namespace Workbench
