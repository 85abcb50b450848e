// SPDX-License-Identifier: Apache-2.0
// Rates, gaps and delays of one sensor's frames.
#pragma once

#include "recording/Recording.h"

#include <cstdint>
#include <map>
#include <optional>

namespace Workbench {

/// Collects statistics of one sensor's frames in constant memory.
class FrameStatistics {
public:
    /// A long interval between two frames.
    struct Gap {
        std::uint64_t line = 0;  ///< of the frame after it
        double after = 0.0;      ///< time of the frame before it, s
        double length = 0.0;     ///< s
    };

    /// @param frame the next frame
    /// @param line its line in the recording
    void add(const SensorFrame& frame, std::uint64_t line);

    std::uint64_t frames() const { return count_; }
    std::uint64_t emptyFrames() const { return empty_; }
    std::uint64_t tracks() const { return trackCount_; }
    /// @return median time between frames, s, to a millisecond
    double medianInterval() const;
    /// @return mean time from measurement to arrival, s
    double meanDelay() const { return count_ > 0 ? delaySum_ / static_cast<double>(count_) : 0.0; }
    double longestDelay() const { return mostDelay_; }
    /// @return the longest interval; nothing with fewer than two frames
    const std::optional<Gap>& longestGap() const { return longest_; }
    /// @return number of intervals longer than @p limit seconds
    std::uint64_t gapsLongerThan(double limit) const;

private:
    std::uint64_t count_ = 0;
    std::uint64_t empty_ = 0;
    std::uint64_t trackCount_ = 0;
    double last_ = 0.0;
    double delaySum_ = 0.0;
    double mostDelay_ = 0.0;
    std::optional<Gap> longest_;
    std::map<std::int64_t, std::uint64_t> intervals_;  ///< frames by interval in milliseconds
};

}  // namespace Workbench
