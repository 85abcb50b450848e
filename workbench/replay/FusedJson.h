// SPDX-License-Identifier: Apache-2.0
// Fused tracks as JSON Lines.
#pragma once

#include "io/LineText.h"
#include "recording/Recording.h"
#include "replay/FusedTrack.h"

#include <string>

namespace Workbench {

/// Version of the fused-track format.
constexpr int fusedVersion = 1;

/// @param header the recording's header, with the camera that was used
/// @param configuration the configuration that was used, JSON text
/// @return the first line, with line end
std::string fusedHeaderLine(const RecordingHeader& header, const std::string& configuration);

/// Appends the line of a frame, with line end. Numbers are rounded as in recordings, what is not
/// finite is null.
///
/// @param text receives the line
/// @param frame the tracks after a frame
void appendFusedLine(LineText& text, const FusedFrame& frame);

}  // namespace Workbench
