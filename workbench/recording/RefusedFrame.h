// SPDX-License-Identifier: Apache-2.0
// A frame whose values were read but contradict the format.
#pragma once

#include <veskar-host/InputError.h>

#include "recording/Recording.h"

#include <string>
#include <utility>

namespace Workbench {

/// Thrown instead of a mere InputError where the frame itself could be read: whoever looks for the
/// reason of a mistake that is made in every line needs the values.
class RefusedFrame : public InputError {
public:
    /// What is wrong with it.
    enum class Reason {
        Time,  ///< out of order, or received before it was measured
        Box    ///< a box whose top is below its bottom
    };

    RefusedFrame(const std::string& what, Reason cause, SensorFrame refused)
        : InputError(what), reason(cause), frame(std::move(refused)) {}

    Reason reason;
    SensorFrame frame;
};

}  // namespace Workbench
