// SPDX-License-Identifier: Apache-2.0
// How long frames take through the program.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <vector>

namespace Veskar::Live {

/// The last durations, for their quantiles.
class Latency {
public:
    static constexpr std::size_t remembered = 1024;

    /// @param seconds a duration
    void add(double seconds) {
        seconds_[next_] = seconds;
        next_ = (next_ + 1) % remembered;
        count_ = std::min(count_ + 1, remembered);
    }
    /// @param share of the durations that are not longer; 0.5: the median
    /// @return that quantile, s; 0 before the first duration
    double quantile(double share) const {
        if (count_ == 0) {
            return 0.0;
        }
        std::vector<double> sorted(seconds_.begin(),
                                   seconds_.begin() + static_cast<std::ptrdiff_t>(count_));
        const auto at =
            sorted.begin() + static_cast<std::ptrdiff_t>(share * static_cast<double>(count_ - 1));
        std::nth_element(sorted.begin(), at, sorted.end());
        return *at;
    }

private:
    std::array<double, remembered> seconds_{};
    std::size_t next_ = 0;
    std::size_t count_ = 0;
};

}  // namespace Veskar::Live
