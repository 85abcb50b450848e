// SPDX-License-Identifier: Apache-2.0
// A part of a recording.
#pragma once

#include <limits>

namespace Workbench {

/// A span of time, in s since the first sensor frame of a recording was received: from the start up
/// to, not including, the end.
struct Excerpt {
    double start = 0.0;
    double end = std::numeric_limits<double>::infinity();

    /// @return whether that is a whole recording
    bool isAll() const { return start == 0.0 && end == std::numeric_limits<double>::infinity(); }
};

}  // namespace Workbench
