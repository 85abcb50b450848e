// SPDX-License-Identifier: Apache-2.0
// A frame that was parsed but violates the format.
#pragma once

#include <veskar-host/InputError.h>

#include "recording/Recording.h"

#include <utility>

namespace Workbench {

/// Thrown instead of a plain InputError when the frame's values could be parsed: the search for
/// systematic faults, repeated in every line, needs them.
class RefusedFrame : public InputError {
public:
    /// The kinds of faults.
    enum class Cause {
        Time,  ///< out of order, or received before its measurement
        Box    ///< a box whose top is below its bottom
    };

    RefusedFrame(const InputError& fault, Cause refusedFor, SensorFrame refused)
        : InputError(fault), cause(refusedFor), frame(std::move(refused)) {}

    Cause cause;
    SensorFrame frame;
};

}  // namespace Workbench
