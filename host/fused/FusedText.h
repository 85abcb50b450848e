// SPDX-License-Identifier: Apache-2.0
// Fused frames as lines of JSON Lines.
#pragma once

#include <veskar-host/ExportHost.h>
#include <veskar-host/FusedFrame.h>

#include "host/json/LineText.h"

namespace Veskar::Host::Internal {

/// Appends the line of a frame, with line end; see toJsonLine.
///
/// @param text receives the line
/// @param frame the tracks after a frame
VESKAR_HOST_EXPORT void append(LineText& text, const FusedFrame& frame);

}  // namespace Veskar::Host::Internal
