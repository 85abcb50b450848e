// SPDX-License-Identifier: Apache-2.0
// Lines of a recording that no sensor has written.
#pragma once

#include "recording/Recording.h"

#include <string>

namespace Workbench {

/// @param frame the truth at one time
/// @return its line, with line end; numbers are rounded as those of sensor frames
std::string toJsonLine(const TruthFrame& frame);

}  // namespace Workbench
