// SPDX-License-Identifier: Apache-2.0
// Limits how often one cause is logged.
#pragma once

#include <optional>

namespace Veskar {

/// Lets one cause into the system log at most once a minute.
class LogLimit {
public:
    /// @param now a monotonic clock, seconds
    /// @return whether the cause may be logged now; the caller does so then
    bool allows(double now) {
        constexpr double pause = 60.0;
        if (last_ && now - *last_ < pause) {
            return false;
        }
        last_ = now;
        return true;
    }

private:
    std::optional<double> last_;  ///< when it was logged
};

}  // namespace Veskar
