// SPDX-License-Identifier: Apache-2.0
// Keeps a cause from filling the system log.
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
        if (last && now - *last < pause) {
            return false;
        }
        last = now;
        return true;
    }

private:
    std::optional<double> last;  ///< when it was logged
};

}  // namespace Veskar
