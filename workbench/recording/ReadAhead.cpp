// SPDX-License-Identifier: Apache-2.0
#include "recording/ReadAhead.h"

#include <utility>

namespace Workbench {
namespace {

constexpr std::size_t linesInAdvance = 64;

}  // namespace

ReadAhead::ReadAhead(RecordingReader& reader)
    : reader_(reader), queue_(linesInAdvance), thread_([this] { read(); }) {}

ReadAhead::~ReadAhead() {
    queue_.close();
    reader_.stop();
    thread_.join();
}

void ReadAhead::read() {
    try {
        while (auto line = reader_.next()) {
            if (!queue_.push({std::move(*line), reader_.input().fractionRead()})) {
                return;
            }
        }
        queue_.close();
    } catch (...) {
        queue_.close(std::current_exception());
    }
}

std::optional<RecordingLine> ReadAhead::next() {
    Item item;
    if (!queue_.pop(item)) {
        return std::nullopt;
    }
    fraction_ = item.fraction;
    return std::move(item.line);
}

}  // namespace Workbench
