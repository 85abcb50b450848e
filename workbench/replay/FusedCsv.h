// SPDX-License-Identifier: Apache-2.0
// Fused tracks as comma-separated values (RFC 4180).
#pragma once

#include "replay/FusedTrack.h"

#include <string>

namespace Workbench {

/// @return the row of column names, with line end
std::string csvHeader();

/// @param frame the tracks after a frame
/// @return one row per track, each with line end; what is not known is empty
std::string csvRows(const FusedFrame& frame);

}  // namespace Workbench
