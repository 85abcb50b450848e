// SPDX-License-Identifier: Apache-2.0
// Delay until new objects have a confirmed track.
#pragma once

#include "evaluate/metrics/Assignment.h"
#include "evaluate/metrics/Instant.h"

#include <optional>
#include <vector>

namespace Workbench {

/// Time from the first instant of a true object to its first match with a confirmed track.
class ConfirmationDelay {
public:
    /// @param pairs matches of @p instant, (true object, track)
    void add(const Instant& instant, const Pairs& pairs);

    /// NaN when no object was ever matched.
    struct Result {
        double mean = 0.0;     ///< s, over the objects that were ever matched
        double longest = 0.0;  ///< s, of the same
        int objectsFound = 0;
        int objectsNeverFound = 0;
    };
    Result result() const;

private:
    struct ObjectTimes {
        int id = 0;
        double appeared = 0.0;
        std::optional<double> found;
    };
    std::vector<std::optional<ObjectTimes>> objects_;  ///< by number
};

}  // namespace Workbench
