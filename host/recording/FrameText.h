// SPDX-License-Identifier: Apache-2.0
// Writes a sensor frame as a line of a recording.
#pragma once

#include <veskar-host/ExportHost.h>
#include <veskar-host/SensorFrame.h>

#include "host/json/LineText.h"

namespace Veskar::Host::Internal {

/// Appends the line of a frame, with line end. Numbers are rounded far below any sensor's
/// resolution (times and image positions to 1e-6, metres to 1e-3 or finer), so that the bytes do
/// not depend on rounding differences between mathematics libraries.
///
/// @param text receives the line
/// @param frame a frame
VESKAR_HOST_EXPORT void append(LineText& text, const SensorFrame& frame);

}  // namespace Veskar::Host::Internal
