// SPDX-License-Identifier: Apache-2.0
#include "check/FrameStatistics.h"

#include <algorithm>
#include <cmath>

namespace Workbench {
namespace {

/// Longer intervals are counted as this one, which bounds the memory: a minute in milliseconds.
constexpr double longestCounted = 60000.0;

}  // namespace

void FrameStatistics::add(const SensorFrame& frame, std::uint64_t line) {
    if (count_ > 0) {
        const double interval = frame.time - last_;
        ++intervals_[std::llround(std::clamp(1000.0 * interval, 0.0, longestCounted))];
        if (!longest_ || interval > longest_->length) {
            longest_ = Gap{line, last_, interval};
        }
    }
    last_ = frame.time;
    ++count_;
    empty_ += frame.tracks.empty() ? 1 : 0;
    trackCount_ += frame.tracks.size();
    const double delay = frame.received - frame.time;
    delaySum_ += delay;
    mostDelay_ = std::max(mostDelay_, delay);
}

double FrameStatistics::medianInterval() const {
    std::uint64_t seen = 0;
    for (const auto& [milliseconds, frames] : intervals_) {
        seen += frames;
        if (2 * seen >= count_ - 1) {
            return static_cast<double>(milliseconds) / 1000.0;
        }
    }
    return 0.0;
}

std::uint64_t FrameStatistics::gapsLongerThan(double limit) const {
    std::uint64_t sum = 0;
    for (auto interval = intervals_.upper_bound(std::llround(1000.0 * limit));
         interval != intervals_.end(); ++interval) {
        sum += interval->second;
    }
    return sum;
}

}  // namespace Workbench
