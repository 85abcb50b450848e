// SPDX-License-Identifier: Apache-2.0
// Counts votes for differences of bearing and distance between two sensors.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace Workbench {

/// Overlapping windows over the difference of bearings (up to 6 degrees) and the logarithm of the
/// ratio of distances. Their centres are one step apart (one degree, or 0.1 of the logarithm); each
/// window is three steps wide.
class VoteGrid {
public:
    /// The centre of a window.
    struct Window {
        double bearingError;  ///< radians
        double logRatio;
        /// @return whether these differences lie within the window
        bool holds(double otherBearingError, double otherLogRatio) const;
    };

    /// @param ratioReach windows to either side of the ratio 1
    explicit VoteGrid(int ratioReach);

    /// Votes for all windows that contain the differences.
    /// @param voter number of the voter, from 1; has one vote per window, cast in consecutive calls
    /// @param bearingError radians
    /// @param logRatio of the distances
    void vote(std::uint64_t voter, double bearingError, double logRatio);

    /// @return number of votes for the best window
    std::uint64_t most() const;
    /// @return the window with the most votes
    Window best() const;

    /// Larger differences of bearings are in no window, radians.
    static double bearingLimit();

private:
    int ratioReach_;
    std::vector<std::uint64_t> votes_;
    std::vector<std::uint64_t> lastVoter_;
};

}  // namespace Workbench
