// SPDX-License-Identifier: Apache-2.0
// What a recording makes of a sensor frame.
#pragma once

#include <veskar-host/ExportHost.h>
#include <veskar-host/SensorFrame.h>

namespace Veskar::Host::Internal {

/// Makes a frame what is read back from its line in a recording: its numbers rounded, and what the
/// line leaves out as it is by default. Writing the line and reading it take ten times as long.
///
/// @param frame stays as it is, or is partly rounded, when this returns false
/// @return whether that was possible; false for a frame that is unusual or wrong: its line then
///         shows what is read back, or why it is refused
VESKAR_HOST_EXPORT bool roundAsRecorded(SensorFrame& frame);

}  // namespace Veskar::Host::Internal
