// SPDX-License-Identifier: Apache-2.0
// Tells whether a tracked video detection has really moved in the image.
#pragma once

#include <veskar/Config.h>
#include <veskar/Export.h>

#include <deque>
#include <map>
#include <utility>

namespace Veskar {

/// Keeps a short history of image positions per tracked detection. At most 1000 histories are kept;
/// beyond that the one with the lowest id goes. Not thread-safe.
class VESKAR_EXPORT TrackedOdMotionAnalyzer {
public:
    /// @param config copied; its three "trackedOdMotionAnalyzer" keys count
    explicit TrackedOdMotionAnalyzer(const Config& config);

    /// Records a position and compares the oldest with the newest one that is kept.
    ///
    /// @param id id of the tracked detection
    /// @param u first image coordinate
    /// @param v second image coordinate, in the same unit
    /// @return whether they lie further apart than the threshold; false for the first position and
    ///         while the history is shorter than the minimum
    bool updateAndCheckMotion(int id, double u, double v);

private:
    using History = std::deque<std::pair<double, double>>;

    Config config_;
    std::map<int, History> histories_;
    int maxHistories_ = 1000;
};

}  // namespace Veskar
