// SPDX-License-Identifier: Apache-2.0
#include "replay/WriteBehind.h"

#include <utility>

namespace Workbench {
namespace {

constexpr std::size_t framesBehind = 32;

}  // namespace

WriteBehind::WriteBehind(OutputFile& givenOutput, Format givenFormat, Flush givenFlush)
    : output(givenOutput),
      format(std::move(givenFormat)),
      flush(givenFlush),
      queue(framesBehind),
      thread([this] { run(); }) {}

WriteBehind::~WriteBehind() {
    queue.close();
    if (thread.joinable()) {
        thread.join();
    }
}

void WriteBehind::run() {
    try {
        LineText text;
        FrameReading frame;
        while (queue.pop(frame)) {
            text.clear();
            format(text, std::move(frame));
            output.write(text.view());
            if (flush == Flush::EveryFrame) {
                output.flush();
            }
        }
    } catch (...) {
        failure = std::current_exception();
        queue.close(failure);
    }
}

void WriteBehind::write(FrameReading frame) {
    queue.push(std::move(frame));
}

void WriteBehind::finish() {
    queue.close();
    thread.join();
    if (failure) {
        std::rethrow_exception(failure);
    }
}

}  // namespace Workbench
