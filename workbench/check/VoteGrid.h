// SPDX-License-Identifier: Apache-2.0
// Votes for windows of differences between two sensors.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace Workbench {

/// Overlapping windows over the difference of bearings (up to 6 degrees) and the logarithm of the
/// ratio of distances. Their middles are a step apart, a degree or a tenth; each is three steps
/// wide.
class VoteGrid {
public:
    /// The middle of a window.
    struct Window {
        double bearingError;  ///< radians
        double logRatio;
        /// @return whether the window holds these differences
        bool holds(double otherBearingError, double otherLogRatio) const;
    };

    /// @param ratioReach windows to either side of the ratio 1
    explicit VoteGrid(int ratioReach);

    /// Votes for all windows that hold the differences.
    /// @param voter who votes, from 1 on; has one vote for each window, cast in a row
    /// @param bearingError radians
    /// @param logRatio of the distances
    void vote(std::uint64_t voter, double bearingError, double logRatio);

    /// @return the votes for the best window
    std::uint64_t most() const;
    /// @return the best window
    Window best() const;

    /// Larger differences of bearings have no window, radians.
    static double bearingLimit();

private:
    int ratioReach_;
    std::vector<std::uint64_t> votes_;
    std::vector<std::uint64_t> lastVoter_;
};

}  // namespace Workbench
