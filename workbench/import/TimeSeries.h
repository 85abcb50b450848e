// SPDX-License-Identifier: Apache-2.0
// A position sampled over time.
#pragma once

#include <map>

#include <Eigen/Core>

namespace Workbench {

/// Samples of a position, interpolated linearly, and constant beyond both ends.
class TimeSeries {
public:
    /// @param time seconds; a second sample of one time replaces the first
    /// @param position the position at that time
    void add(double time, const Eigen::Vector2d& position) { samples_[time] = position; }

    /// @return whether there is no sample
    bool empty() const { return samples_.empty(); }
    /// @return time of the first sample
    double begin() const { return samples_.begin()->first; }
    /// @return time of the last sample
    double end() const { return samples_.rbegin()->first; }
    /// @param time seconds
    /// @return the position; there must be a sample
    Eigen::Vector2d at(double time) const;
    /// @param time seconds
    /// @param reach half the interval over which the difference is taken, s
    /// @return rate of change
    Eigen::Vector2d rate(double time, double reach) const;

private:
    std::map<double, Eigen::Vector2d> samples_;
};

}  // namespace Workbench
