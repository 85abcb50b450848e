// SPDX-License-Identifier: Apache-2.0
// Writes the truth lines of a recording.
#pragma once

#include "recording/Recording.h"

#include <string>

namespace Workbench {

/// @param frame the truth at one time
/// @return its line, with line end; numbers are rounded as in sensor frames
std::string toJsonLine(const TruthFrame& frame);

}  // namespace Workbench
