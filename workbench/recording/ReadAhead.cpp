// SPDX-License-Identifier: Apache-2.0
#include "recording/ReadAhead.h"

#include <utility>

namespace Workbench {
namespace {

constexpr std::size_t linesInAdvance = 64;

}  // namespace

ReadAhead::ReadAhead(RecordingReader& givenReader)
    : reader(givenReader), queue(linesInAdvance), thread([this] { read(); }) {}

ReadAhead::~ReadAhead() {
    queue.close();
    reader.stop();
    thread.join();
}

void ReadAhead::read() {
    try {
        while (auto line = reader.next()) {
            if (!queue.push({std::move(*line), reader.input().fractionRead()})) {
                return;
            }
        }
        queue.close();
    } catch (...) {
        queue.close(std::current_exception());
    }
}

std::optional<RecordingLine> ReadAhead::next() {
    Item item;
    if (!queue.pop(item)) {
        return std::nullopt;
    }
    fraction = item.fraction;
    return std::move(item.line);
}

}  // namespace Workbench
